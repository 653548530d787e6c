// SPDX-License-Identifier: MIT
#include "X11Selection.h"

#include <QDeadlineTimer>

#include <poll.h>
#include <utility>

using namespace std::chrono_literals;

namespace
{

/// A surge of owner changes must not keep this thread from all else.
constexpr int maxEventsAtOnce = 1000;
/// Between two questions, which a program that copies without pause has to answer one by one.
constexpr auto readingPause = 5ms;
constexpr auto longReadingPause = 200ms; // when there were too many changes to be copies
constexpr qint64 tooManyChanges = 100;

template <typename T>
const T &as(const xcb_generic_event_t &event)
{
    return reinterpret_cast<const T &>(event);
}

} // namespace

X11Selection::X11Selection(std::unique_ptr<X11Connection> connection, ClipboardWorker &worker,
                           CopyLedger &ledger, const ClipboardLimits &limits, xcb_window_t keeper)
    : m_connection(std::move(connection))
    , m_worker(worker)
    , m_ledger(ledger)
    , m_limits(limits)
    , m_keeper(keeper)
    , m_ownText(*m_connection)
    , m_reader(*m_connection, limits)
    , m_fetcher(*m_connection, limits)
    , m_readable(m_connection->fileDescriptor(), QSocketNotifier::Read)
{
    connect(&m_readable, &QSocketNotifier::activated, this, &X11Selection::processEvents);
    m_readingPause.setSingleShot(true);
    m_readingPause.setTimerType(Qt::PreciseTimer);
    connect(&m_readingPause, &QTimer::timeout, this, [this] {
        if (m_isReadingDue)
            read();
    });
    connect(&m_reader, &X11SelectionReader::finished, this, &X11Selection::contentsRead);
    connect(&m_fetcher, &X11SelectionReader::finished, this,
            [this](const ClipboardContents &contents) { Q_EMIT m_worker.fetched(contents.text); });
    const X11Atoms &atoms = m_connection->atoms();
    for (const xcb_atom_t selection : {atoms.clipboard, atoms.clipboardManager})
        m_connection->watchOwner(selection, m_ownText.window());
    m_manager = m_connection->selectionOwner(atoms.clipboardManager);
    // The connection may have broken already, or hold events that came while it was made.
    QMetaObject::invokeMethod(this, &X11Selection::processEvents, Qt::QueuedConnection);
}

void X11Selection::startReading()
{
    catchUp();
    m_isReading = true;
}

void X11Selection::stopReading()
{
    m_isReading = false;
}

void X11Selection::fetch()
{
    if (isOwner())
        Q_EMIT m_worker.fetched(m_ownText.text());
    else
        m_fetcher.read(serverTime());
}

void X11Selection::setText(const QString &text)
{
    m_ownText.claim(text, serverTime());
}

/// The event about a change of our own property bears the time.
xcb_timestamp_t X11Selection::serverTime()
{
    xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_REPLACE, m_ownText.window(),
                        m_connection->atoms().stamp, XCB_ATOM_STRING, 8, 0, nullptr);
    catchUp();
    return m_serverTime;
}

/// Handles what the server has told until now.
void X11Selection::catchUp()
{
    m_connection->synchronize();
    while (const auto event = m_connection->queuedEvent())
        handle(*event);
    follow();
}

/// Some at a time, since changes may come without end. While there are more, none is followed: each
/// question would only add to what waits.
void X11Selection::processEvents()
{
    int count = 0;
    for (; count < maxEventsAtOnce; ++count) {
        const auto event = m_connection->nextEvent();
        if (!event)
            break;
        handle(*event);
    }
    if (count < maxEventsAtOnce)
        follow();
    if (m_connection->isBroken()) {
        lose();
    } else if (count > 0) {
        // Waiting for a reply may queue events without making the socket readable again.
        QMetaObject::invokeMethod(this, &X11Selection::processEvents, Qt::QueuedConnection);
    }
}

void X11Selection::lose()
{
    if (std::exchange(m_isLost, true))
        return;
    m_readable.setEnabled(false);
    m_readingPause.stop();
    m_reader.abandon();
    m_fetcher.giveUp();
    Q_EMIT connectionLost();
}

/// Errors are passed over: they tell of requestors that ended before they had their answer.
void X11Selection::handle(const xcb_generic_event_t &event)
{
    const int type = event.response_type & 0x7f; // without the mark of events sent by programs
    if (type == XCB_SELECTION_NOTIFY)
        selectionAnswered(as<xcb_selection_notify_event_t>(event));
    else if (type == XCB_PROPERTY_NOTIFY)
        propertyChanged(as<xcb_property_notify_event_t>(event));
    else if (type == XCB_SELECTION_REQUEST)
        m_ownText.answer(as<xcb_selection_request_event_t>(event));
    else if (type == m_connection->ownerEvent())
        ownerChanged(as<xcb_xfixes_selection_notify_event_t>(event));
}

void X11Selection::selectionAnswered(const xcb_selection_notify_event_t &event)
{
    if (event.selection == m_connection->atoms().clipboardManager)
        m_isHandingOver = false;
    else
        for (X11SelectionReader *const reader : {&m_reader, &m_fetcher})
            reader->selectionAnswered(event);
}

void X11Selection::propertyChanged(const xcb_property_notify_event_t &event)
{
    if (event.window == m_ownText.window() && event.atom == m_connection->atoms().stamp)
        m_serverTime = event.time;
    for (X11SelectionReader *const reader : {&m_reader, &m_fetcher})
        reader->propertyChanged(event);
    m_ownText.propertyChanged(event);
}

/// Only notes the change: behind it may be the answer of the owner before, which is not to be taken
/// for this one's.
void X11Selection::ownerChanged(const xcb_xfixes_selection_notify_event_t &event)
{
    if (event.selection == m_connection->atoms().clipboardManager) {
        m_manager = event.owner;
        return;
    }
    m_owner = event.owner;
    m_ownedSince = event.timestamp;
    m_changes.add(m_owner != XCB_NONE);
}

/// Of a burst the last owner alone can still be read.
void X11Selection::follow()
{
    if (m_changes.isEmpty())
        return;
    m_reader.abandon();
    m_changesUnread += m_changes.count;
    m_ledger.ownerChanged(std::exchange(m_changes, {}));
    m_isReadingDue = false;
    if (!m_isReading)
        settle({{}, true}, Announcer::program);
    else if (isOwner())
        settle({m_ownText.text()}, Announcer::us);
    else if (m_owner == XCB_NONE)
        settle({}, Announcer::program); // copies whose owner has gone before it gave its text
    else if (m_readingPause.isActive())
        m_isReadingDue = true;
    else
        read();
}

void X11Selection::read()
{
    m_isReadingDue = false;
    m_readingPause.start(std::exchange(m_changesUnread, 0) < tooManyChanges ? readingPause
                                                                            : longReadingPause);
    m_readOwner = m_owner;
    m_reader.read(m_ownedSince);
}

void X11Selection::contentsRead(const ClipboardContents &contents)
{
    const quint32 client = m_connection->clientOf(m_readOwner);
    const auto isBy = [&](xcb_window_t window) {
        return window != XCB_NONE && m_connection->clientOf(window) == client;
    };
    const X11Atoms &atoms = m_connection->atoms();
    // As measured with mutter 43; what programs copy comes out in more, or in another order.
    const QList<xcb_atom_t> keepersTypes = {atoms.plainUtf8, atoms.utf8String, atoms.targets,
                                            atoms.timestamp};
    if (isBy(m_manager))
        settle(contents, Announcer::manager);
    else if (isBy(m_keeper) && m_reader.offered() == keepersTypes)
        settle(contents, Announcer::keeper);
    else
        settle(contents, Announcer::program);
}

void X11Selection::settle(const ClipboardContents &contents, Announcer announcer)
{
    if (const auto snapshot = m_ledger.settle(contents, announcer))
        Q_EMIT m_worker.copied(*snapshot);
}

void X11Selection::handOver()
{
    if (!isOwner() || m_manager == XCB_NONE)
        return;
    m_isHandingOver = true;
    m_ownText.offerToManager(serverTime());
    const QDeadlineTimer deadline(m_limits.handOver);
    while (m_isHandingOver && isOwner() && !m_isLost && !deadline.hasExpired()) {
        pollfd readable = {m_connection->fileDescriptor(), POLLIN, 0};
        poll(&readable, 1, int(deadline.remainingTime()));
        processEvents();
    }
}
