// SPDX-License-Identifier: MIT
#include "Demand.h"
#include "LinkAddress.h"
#include "UrlGate.h"
#include "WebAddress.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), size);
    const auto copied = webAddressIn(text);
    if (!copied)
        return 0;
    demand(text.contains(*copied));
    const QString url = normalizedUrl(*copied);
    const auto address = WebAddress::parse(url);
    demand(address && url.contains(address->host()));
    demand(address->host().isEmpty() == address->askedHost().isEmpty());
    for (const QString &host : {address->host(), address->askedHost()})
        demand(host.isEmpty() || isExcluded(url, {host}));
    const QByteArray encoded = address->encoded();
    demand(std::all_of(encoded.begin(), encoded.end(), [](char c) { return c > ' ' && c < 127; }));
    demand(encoded.indexOf('"') < 0 && encoded.indexOf('<') < 0 && encoded.indexOf('>') < 0);
    return 0;
}
