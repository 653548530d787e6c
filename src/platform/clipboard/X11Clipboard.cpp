// SPDX-License-Identifier: MIT
#include "X11Clipboard.h"

#include "DebugLog.h"
#include "X11Selection.h"

#include <algorithm>
#include <cstring>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

/// By which the window manager tells that it runs.
xcb_window_t windowOfManager(const X11Connection &connection)
{
    const X11Property check =
        connection.property(connection.rootWindow(), connection.atoms().wmCheck, 4);
    xcb_window_t window = XCB_NONE;
    if (check.data.size() == qsizetype(sizeof window))
        std::memcpy(&window, check.data.constData(), sizeof window);
    return window;
}

/// Below a Wayland compositor, only mutter tells X11 programs of what Wayland programs copy.
ClipboardReach reachOf(const X11Connection &connection, xcb_window_t windowManager)
{
    if (qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return ClipboardReach::x11;
    const QByteArray name = connection.property(windowManager, connection.atoms().wmName, 256).data;
    const bool isMutter = name == "GNOME Shell" || name == "Mutter";
    return isMutter ? ClipboardReach::sharedX11 : ClipboardReach::x11Programs;
}

} // namespace

X11Clipboard::X11Clipboard(const QByteArray &display, const ClipboardLimits &limits)
    : m_display(display)
    , m_limits(limits)
    , m_ledger(limits)
    , m_retry(this)
    , m_pause(limits.firstPause)
{
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &X11Clipboard::start);
}

X11Clipboard::~X11Clipboard()
{
    if (m_selection)
        m_selection->handOver();
}

void X11Clipboard::start()
{
    auto connection = X11Connection::open(m_display);
    if (!connection)
        return tryAgainLater();
    const xcb_window_t windowManager = windowOfManager(*connection);
    const ClipboardReach reach = reachOf(*connection, windowManager);
    const xcb_window_t keeper = reach == ClipboardReach::sharedX11 ? windowManager : XCB_NONE;
    m_selection =
        std::make_unique<X11Selection>(std::move(connection), *this, m_ledger, m_limits, keeper);
    // Queued, since the selection is in the middle of its work when it finds out.
    connect(m_selection.get(), &X11Selection::connectionLost, this, &X11Clipboard::loseConnection,
            Qt::QueuedConnection);
    m_pause = m_limits.firstPause;
    if (m_isReading)
        m_selection->startReading();
    for (const QString &text : std::exchange(m_unclaimed, {}))
        m_selection->setText(text);
    Q_EMIT reachKnown(reach);
}

void X11Clipboard::loseConnection()
{
    debugLog(u"The connection to the X server is lost"_s);
    m_selection.reset();
    if (const auto snapshot = m_ledger.settle({}, Announcer::program))
        Q_EMIT copied(*snapshot);
    tryAgainLater();
}

void X11Clipboard::tryAgainLater()
{
    Q_EMIT reachKnown(ClipboardReach::none);
    m_retry.start(m_pause);
    m_pause = std::min(m_pause * 2, m_limits.longestPause);
}

void X11Clipboard::startReading()
{
    m_isReading = true;
    if (m_selection)
        m_selection->startReading();
    Q_EMIT readingStarted();
}

void X11Clipboard::stopReading()
{
    m_isReading = false;
    if (m_selection)
        m_selection->stopReading();
}

void X11Clipboard::fetch()
{
    if (m_selection)
        m_selection->fetch();
    else
        Q_EMIT fetched({});
}

void X11Clipboard::setText(const QString &text)
{
    if (m_selection)
        m_selection->setText(text);
    else
        m_unclaimed.append(text);
}
