// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArrayView>
#include <QString>

#include <string>
#include <string_view>

/// Whether all of a page's body arrived.
enum class BodyEnd { complete, truncated };

/// The text of a page's body as UTF-8: what is valid UTF-8 stays, without a byte order mark, all
/// else is read as Latin-1. A character that truncation cut in two is dropped first.
std::string decodePage(QByteArrayView body, BodyEnd end);

/// A piece of a page's text. Unlike QString::fromUtf8 it keeps a U+FEFF at the beginning.
QString toQString(std::string_view utf8);
