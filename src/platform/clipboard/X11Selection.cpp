// SPDX-License-Identifier: MIT
#include "X11Selection.h"

#include <QDeadlineTimer>

#include <algorithm>
#include <poll.h>
#include <utility>

namespace
{

/// Fewer types than before, and no new one.
bool isLess(const QList<xcb_atom_t> &types, const QList<xcb_atom_t> &before)
{
    return types.size() < before.size()
        && std::all_of(types.cbegin(), types.cend(),
                       [&](xcb_atom_t type) { return before.contains(type); });
}

template <typename T>
const T &as(const xcb_generic_event_t &event)
{
    return reinterpret_cast<const T &>(event);
}

} // namespace

X11Selection::X11Selection(std::unique_ptr<X11Connection> connection, CopyLedger &ledger,
                           const ClipboardLimits &limits)
    : m_connection(std::move(connection))
    , m_ledger(ledger)
    , m_limits(limits)
    , m_ownText(*m_connection)
    , m_reader(*m_connection, limits)
    , m_readable(m_connection->fileDescriptor(), QSocketNotifier::Read)
{
    connect(&m_readable, &QSocketNotifier::activated, this, &X11Selection::processEvents);
    connect(&m_reader, &SelectionReader::finished, this, &X11Selection::contentsRead);
    xcb_xfixes_select_selection_input(m_connection->xcb(), m_ownText.window(),
                                      m_connection->atoms().clipboard,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER
                                          | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY
                                          | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    xcb_flush(m_connection->xcb());
    // The connection may have broken already, or hold events that came while it was made.
    QMetaObject::invokeMethod(this, &X11Selection::processEvents, Qt::QueuedConnection);
}

void X11Selection::startReading()
{
    m_connection->synchronize();
    processEvents();
    m_isReading = true;
}

void X11Selection::stopReading()
{
    m_isReading = false;
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
    m_connection->synchronize();
    processEvents();
    return m_serverTime;
}

/// Waiting for a reply queues events without making the socket readable again, so none may be left
/// when this returns.
void X11Selection::processEvents()
{
    while (handleQueuedEvents()) {
        if (const auto owners = std::exchange(m_unfollowed, {}); !owners.isEmpty())
            follow(owners);
    }
    if (m_connection->isBroken() && !std::exchange(m_isLost, true)) {
        m_readable.setEnabled(false);
        m_reader.abandon();
        Q_EMIT connectionLost();
    }
}

bool X11Selection::handleQueuedEvents()
{
    bool isAny = false;
    while (const auto event = m_connection->nextEvent()) {
        handle(*event);
        isAny = true;
    }
    return isAny;
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
        m_reader.selectionAnswered(event);
}

void X11Selection::propertyChanged(const xcb_property_notify_event_t &event)
{
    if (event.window == m_ownText.window() && event.atom == m_connection->atoms().stamp)
        m_serverTime = event.time;
    m_reader.propertyChanged(event);
    m_ownText.propertyChanged(event);
}

/// Only notes the change: behind it may be the answer of the owner before, which is not to be taken
/// for this one's.
void X11Selection::ownerChanged(const xcb_xfixes_selection_notify_event_t &event)
{
    m_owner = event.owner;
    m_unfollowed.append({event.owner, event.timestamp});
}

Announcer X11Selection::announcerOf(xcb_window_t owner) const
{
    if (owner == m_ownText.window())
        return Announcer::us;
    const xcb_window_t manager =
        m_connection->selectionOwner(m_connection->atoms().clipboardManager);
    const bool isManager =
        manager != XCB_NONE && m_connection->clientOf(manager) == m_connection->clientOf(owner);
    return isManager ? Announcer::restorer : Announcer::program;
}

/// Of a burst the last owner alone can still be read.
void X11Selection::follow(const QList<Owner> &owners)
{
    m_reader.abandon();
    for (const Owner &owner : owners) {
        if (owner.window == XCB_NONE)
            m_ledger.ownerLost();
        else
            m_ledger.ownerChanged(announcerOf(owner.window));
    }
    const Owner &owner = owners.last();
    if (!m_isReading)
        settle({{}, true});
    else if (isOwner())
        settle({m_ownText.text()});
    else if (owner.window == XCB_NONE)
        settle({}); // copies whose owner has gone before it gave its text
    else
        beginReading(owner);
}

void X11Selection::beginReading(const Owner &owner)
{
    const quint32 client = m_connection->clientOf(owner.window);
    m_isSameClient = client == m_readClient;
    m_readClient = client;
    m_readTypes = m_reader.offered();
    m_reader.read(owner.time);
}

/// A compositor that bridges to X11 owns the copies of all its programs, and announces a text again
/// with fewer types when its program ends.
void X11Selection::contentsRead(const ClipboardContents &contents)
{
    settle(contents, m_isSameClient && isLess(m_reader.offered(), m_readTypes));
}

void X11Selection::settle(const ClipboardContents &contents, bool offersLess)
{
    if (const auto snapshot = m_ledger.settle(contents, offersLess))
        Q_EMIT copied(*snapshot);
}

void X11Selection::handOver()
{
    if (!isOwner()
        || m_connection->selectionOwner(m_connection->atoms().clipboardManager) == XCB_NONE)
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
