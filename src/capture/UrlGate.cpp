// SPDX-License-Identifier: MIT
#include "UrlGate.h"

#include "text/WebAddress.h"

#include <algorithm>

std::optional<QString> webAddressIn(const QString &text)
{
    const QString trimmed = text.trimmed();
    const bool isWeb = trimmed.startsWith(u"http://") || trimmed.startsWith(u"https://");
    if (!isWeb || !WebAddress::parse(trimmed))
        return std::nullopt;
    return trimmed;
}

QString normalizedUrl(const QString &address)
{
    QString url = address.trimmed();
    if (url.size() >= 2 && url.endsWith(u'/'))
        url.chop(1);
    return url;
}

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
