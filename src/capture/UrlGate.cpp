// SPDX-License-Identifier: MIT
#include "UrlGate.h"

#include "WebAddress.h"

#include <algorithm>

bool isExcluded(const QString &url, const QStringList &domains)
{
    const QString host = domains.isEmpty() ? QString() : hostOf(url).toLower();
    if (host.isEmpty())
        return false;
    return std::any_of(domains.begin(), domains.end(), [&host](const QString &entry) {
        const QString domain = entry.toLower();
        return host == domain || host.endsWith(u'.' + domain);
    });
}
