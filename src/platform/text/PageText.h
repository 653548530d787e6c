// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArrayView>

#include <string>

/// Whether all of a page's body arrived.
enum class BodyEnd { complete, truncated };

/// The text of a page's body as UTF-8: what is valid UTF-8 stays, without a byte order mark, all
/// else is read as Latin-1. A character that truncation cut in two is dropped first.
std::string decodePage(QByteArrayView body, BodyEnd end);
