// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

/// The index of the first character of `text` (UTF-8) at or behind `begin` that is no Unicode white
/// space; the size where there is none.
std::size_t skipSpace(std::string_view text, std::size_t begin);
/// `text` (UTF-8) without the Unicode white space at both ends.
std::string_view trimmed(std::string_view text);
/// The pieces of `text` (UTF-8) between Unicode white space, joined by single spaces.
std::string simplified(std::string_view text);
