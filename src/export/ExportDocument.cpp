// SPDX-License-Identifier: MIT
#include "ExportDocument.h"

#include "text/WebAddress.h"

using namespace Qt::StringLiterals;

QString displayTitle(const CapturedLink &link)
{
    if (link.title)
        return *link.title;
    const QString host = hostOf(link.url);
    return host.isEmpty() ? u"Untitled"_s : host;
}
