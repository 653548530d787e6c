// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

/// The whole trimmed text, if it begins with "http://" or "https://" (lower case) and parses as an
/// address; no address is looked for inside longer text.
std::optional<QString> webAddressIn(const QString &text);

/// The address as it is stored: without white space around it and without one trailing slash. So
/// "https://" becomes "https:/".
QString normalizedUrl(const QString &address);
