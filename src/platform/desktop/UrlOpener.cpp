// SPDX-License-Identifier: MIT
#include "desktop/UrlOpener.h"

#include "DebugLog.h"
#include "text/WebAddress.h"

#include <QProcess>

using namespace Qt::StringLiterals;

void DesktopUrlOpener::open(const QString &url)
{
    const auto address = WebAddress::parse(url);
    if (!address)
        return;
    const QByteArray encoded = address->encoded();
    if (!encoded.startsWith("http://") && !encoded.startsWith("https://"))
        return; // the store may have been written by somebody else
    if (!QProcess::startDetached(u"xdg-open"_s, {QString::fromLatin1(encoded)}))
        debugLog(u"Failed to start xdg-open for " + url);
}
