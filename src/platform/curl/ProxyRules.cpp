// SPDX-License-Identifier: MIT
#include "ProxyRules.h"

#include "AddressRules.h"
#include "CurlUrl.h"

#include <QByteArray>
#include <QList>

#include <algorithm>
#include <arpa/inet.h>
#include <initializer_list>
#include <netinet/in.h>

namespace
{

/// Empty is as good as not set.
QByteArray firstSet(std::initializer_list<const char *> names)
{
    for (const char *const name : names) {
        if (const QByteArray value = qgetenv(name); !value.isEmpty())
            return value;
    }
    return {};
}

QByteArray withoutDot(QByteArray name)
{
    if (name.endsWith('.'))
        name.chop(1);
    return name;
}

/// `block` is an address or, with "/length", the beginning of many.
bool isInBlock(int family, const QByteArray &address, const QByteArray &block)
{
    in6_addr asked; // has room for both families
    in6_addr first;
    const QList<QByteArray> parts = block.split('/');
    const int size = family == AF_INET ? 32 : 128;
    const int length = parts.size() > 1 ? parts[1].toInt() : size;
    return length >= 0 && length <= size && inet_pton(family, address, &asked) == 1
        && inet_pton(family, parts[0], &first) == 1
        && havePrefixInCommon(asked.s6_addr, first.s6_addr, length == 0 ? size : length);
}

bool isCovered(const QByteArray &host, QByteArray entry)
{
    in_addr ipv4;
    if (host.startsWith('['))
        return isInBlock(AF_INET6, host.sliced(1, host.size() - 2), entry);
    if (inet_pton(AF_INET, host, &ipv4) == 1)
        return isInBlock(AF_INET, host, entry);
    entry = withoutDot(entry);
    if (entry.startsWith('.'))
        entry = entry.sliced(1);
    const QByteArray name = withoutDot(host);
    return name == entry || name.endsWith(QByteArray('.' + entry));
}

bool goesDirect(const QByteArray &host)
{
    const QByteArray exceptions = firstSet({"no_proxy", "NO_PROXY"}).toLower();
    if (exceptions == "*")
        return true;
    const QList<QByteArray> entries =
        QByteArray(exceptions).replace('\t', ',').replace(' ', ',').split(',');
    return std::any_of(entries.begin(), entries.end(), [&host](const QByteArray &entry) {
        return !entry.isEmpty() && isCovered(host, entry);
    });
}

} // namespace

bool goesThroughProxy(const QByteArray &url)
{
    const CurlUrl parsed(url);
    const QByteArray proxy = parsed.scheme() == "https"
        ? firstSet({"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"})
        : firstSet({"http_proxy", "all_proxy", "ALL_PROXY"});
    return !proxy.isEmpty() && !goesDirect(parsed.host());
}
