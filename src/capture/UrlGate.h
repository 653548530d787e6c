// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

/// Whether the host of `url`, as written or as it is asked for, is one of `domains` or below one,
/// in whatever case. Without a host it is not; an entry with a scheme, a path or white space
/// matches nothing.
bool isExcluded(const QString &url, const QStringList &domains);
