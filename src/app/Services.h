#pragma once

#include "AppInfo.h"
#include "Preferences.h"
#include "SystemClock.h"
#include "clipboard/ClipboardSource.h"
#include "desktop/UrlOpener.h"
#include "http/CurlHttpClient.h"

#include <QThreadPool>

#include <memory>

/// Everything that lives as long as the process, in building order; torn down in reverse. One
/// instance each, because `main` makes one of these.
struct Services {
    Services();

    SystemClock clock;
    Preferences preferences{Preferences::defaultPath()};
    AppInfo info{AppInfo::defaultPath()};
    CurlHttpClient http;
    QThreadPool pages; ///< one thread, for reading pages
    std::unique_ptr<ClipboardSource> clipboard;
    DesktopUrlOpener urlOpener;
};
