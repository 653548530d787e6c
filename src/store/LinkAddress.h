// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

/// How long an address, a title or a summary may be that comes from outside, in characters: about
/// as long as a text that is copied.
inline constexpr qsizetype longestText = 1 << 20;

/// The whole trimmed text, if it begins with "http://" or "https://" (lower case) and parses as an
/// address and is not too long; no address is looked for inside longer text.
std::optional<QString> webAddressIn(const QString &text);

/// The address as it is stored: without white space around it and without one trailing slash. So
/// "https://" becomes "https:/".
QString normalizedUrl(const QString &address);
