// SPDX-License-Identifier: MIT
#include "UrlGate.h"

#include "WebAddress.h"

#include <algorithm>

namespace
{

bool isWithin(const QString &host, const QString &domain)
{
    return host == domain || host.endsWith(u'.' + domain);
}

} // namespace

bool isExcluded(const QString &url, const QStringList &domains)
{
    const auto address = domains.isEmpty() ? std::nullopt : WebAddress::parse(url);
    if (!address || address->host().isEmpty())
        return false;
    const QString written = address->host().toLower();
    const QString asked = address->askedHost();
    return std::any_of(domains.begin(), domains.end(), [&](const QString &entry) {
        const QString domain = entry.toLower();
        const auto askedDomain = askedHost(domain);
        return isWithin(written, domain) || isWithin(asked, domain)
            || (askedDomain && isWithin(asked, *askedDomain));
    });
}
