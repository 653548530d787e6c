// SPDX-License-Identifier: MIT
#pragma once

#include <QStringView>

#include <cstddef>
#include <string_view>

// Characters as people see them: grapheme clusters.

/// The first `count` characters of a text, all of it when it has no more.
std::string_view firstCharacters(std::string_view utf8, std::size_t count);
QStringView firstCharacters(QStringView text, std::size_t count);

/// Whether a text has fewer than `count` characters; `count` is at least 1.
template <typename View>
bool hasFewerCharacters(View text, std::size_t count)
{
    return firstCharacters(text, count - 1).size() == text.size();
}
