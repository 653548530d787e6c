// SPDX-License-Identifier: MIT
#include "WaylandClipboard.h"

#include "DebugLog.h"
#include "WaylandConnection.h"
#include "WaylandSelection.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

WaylandClipboard::WaylandClipboard(const QByteArray &display, const ClipboardLimits &limits)
    : m_display(display)
    , m_limits(limits)
    , m_ledger(limits)
    , m_retry(this)
    , m_silence(this)
    , m_pause(limits.firstPause)
{
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &WaylandClipboard::start);
    m_silence.setSingleShot(true);
    connect(&m_silence, &QTimer::timeout, this,
            [this] { loseConnection(u"The compositor does not answer"_s); });
}

WaylandClipboard::~WaylandClipboard() = default;

/// What the connection tells is queued, since it may be destroyed for it.
void WaylandClipboard::start()
{
    m_connection = WaylandConnection::open(m_display);
    if (!m_connection)
        return tryAgainLater();
    connect(m_connection.get(), &WaylandConnection::globalsKnown, this, &WaylandClipboard::greeted,
            Qt::QueuedConnection);
    connect(
        m_connection.get(), &WaylandConnection::lost, this,
        [this] { loseConnection(u"The connection to the compositor is lost"_s); },
        Qt::QueuedConnection);
    m_silence.start(m_limits.greeting);
}

void WaylandClipboard::greeted()
{
    if (!m_connection)
        return;
    m_silence.stop();
    if (!m_connection->dataControl())
        return loseConnection(u"The compositor offers no data control"_s);
    m_selection = std::make_unique<WaylandSelection>(*m_connection, *this, m_ledger, m_limits);
    connect(m_selection.get(), &WaylandSelection::textSettable, this,
            &WaylandClipboard::claimTexts);
    connect(
        m_selection.get(), &WaylandSelection::finished, this,
        [this] { loseConnection(u"The compositor has finished with us"_s); }, Qt::QueuedConnection);
    m_pause = m_limits.firstPause;
    if (m_isReading)
        m_selection->startReading();
    claimTexts();
    Q_EMIT reachKnown(ClipboardReach::dataControl);
}

void WaylandClipboard::claimTexts()
{
    while (m_selection && m_selection->canSetText() && !m_unclaimed.isEmpty())
        m_selection->setText(m_unclaimed.takeFirst());
}

void WaylandClipboard::loseConnection(const QString &reason)
{
    if (!m_connection) // it finished and was lost
        return;
    debugLog(reason);
    m_silence.stop();
    if (m_selection)
        m_selection->abandonReading();
    m_selection.reset();
    m_connection.reset();
    tryAgainLater();
}

void WaylandClipboard::tryAgainLater()
{
    m_retry.start(m_pause);
    m_pause = std::min(m_pause * 2, m_limits.longestPause);
    Q_EMIT reachKnown(ClipboardReach::none);
}

void WaylandClipboard::startReading()
{
    m_isReading = true;
    if (m_selection)
        m_selection->startReading();
    else
        Q_EMIT readingStarted();
}

void WaylandClipboard::stopReading()
{
    m_isReading = false;
    if (m_selection)
        m_selection->stopReading();
}

void WaylandClipboard::fetch()
{
    if (m_selection)
        m_selection->fetch();
    else
        Q_EMIT fetched({});
}

void WaylandClipboard::setText(const QString &text)
{
    m_unclaimed.append(text);
    claimTexts();
}
