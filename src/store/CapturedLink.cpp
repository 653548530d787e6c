// SPDX-License-Identifier: MIT
#include "CapturedLink.h"

#include "WebAddress.h"

using namespace Qt::StringLiterals;

QString displayTitle(const CapturedLink &link)
{
    if (link.title)
        return *link.title;
    const QString host = hostOf(link.url);
    return host.isEmpty() ? u"Untitled"_s : host;
}

ListPosition positionOf(const CapturedLink &link)
{
    return {link.copiedAt, link.id};
}

bool comesBefore(const ListPosition &one, const ListPosition &other)
{
    if (one.copiedAt != other.copiedAt)
        return one.copiedAt > other.copiedAt;
    return one.id.toRfc4122() > other.id.toRfc4122(); // QUuid's own order is not that of its bytes
}
