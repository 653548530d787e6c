// SPDX-License-Identifier: MIT
#include "UrlOpener.h"

#include "DebugLog.h"
#include "WebAddress.h"

#include <QProcess>

using namespace Qt::StringLiterals;

bool DesktopUrlOpener::open(const QString &url)
{
    const auto address = WebAddress::parse(url);
    if (!address)
        return false;
    const QByteArray encoded = address->encoded();
    if (!encoded.startsWith("http://") && !encoded.startsWith("https://"))
        return false; // the store may have been written by somebody else
    const bool isStarted = QProcess::startDetached(u"xdg-open"_s, {QString::fromLatin1(encoded)});
    if (!isStarted)
        debugLog(u"Failed to start xdg-open for " + url);
    return isStarted;
}
