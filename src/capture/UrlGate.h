// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// Which copied texts are captured, and under which address: the rules, in the order of their use.

/// The whole trimmed text, if it begins with "http://" or "https://" (lower case) and parses as an
/// address; no address is looked for inside longer text.
std::optional<QString> webAddressIn(const QString &text);

/// The address as it is stored: without white space around it and without one trailing slash. So
/// "https://" becomes "https:/".
QString normalizedUrl(const QString &address);

/// Whether the host of `url` is one of `domains` or below one, in whatever case. Without a host it
/// is not; an entry with a scheme, a path or white space matches nothing.
bool isExcluded(const QString &url, const QStringList &domains);
