// SPDX-License-Identifier: MIT
#include "LinkAddress.h"

#include "WebAddress.h"

std::optional<QString> webAddressIn(const QString &text)
{
    const QString trimmed = text.trimmed();
    const bool isWeb = trimmed.startsWith(u"http://") || trimmed.startsWith(u"https://");
    if (!isWeb || trimmed.size() > longestText || !isWebAddress(trimmed))
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
