// SPDX-License-Identifier: MIT
#include "X11SelectionOwner.h"

#include "X11Connection.h"

#include <algorithm>
#include <array>

namespace
{

constexpr qsizetype maxTransfers = 16;
constexpr qsizetype requestHeader = 64; // more than any takes

template <typename T>
void write(const X11Connection &connection, xcb_window_t window, xcb_atom_t property,
           xcb_atom_t type, const T &values)
{
    constexpr int unit = sizeof(typename T::value_type);
    xcb_change_property(connection.xcb(), XCB_PROP_MODE_REPLACE, window, property, type, unit * 8,
                        quint32(values.size()), values.data());
}

void watchProperties(const X11Connection &connection, xcb_window_t window, uint32_t events)
{
    xcb_change_window_attributes(connection.xcb(), window, XCB_CW_EVENT_MASK, &events);
}

} // namespace

X11SelectionOwner::X11SelectionOwner(const X11Connection &connection)
    : m_connection(connection)
    , m_window(connection.makeWindow())
    , m_maxIncrement(connection.maxRequestBytes() - requestHeader)
{
}

void X11SelectionOwner::claim(const QString &text, xcb_timestamp_t time)
{
    m_text = text;
    m_time = time;
    xcb_set_selection_owner(m_connection.xcb(), m_window, m_connection.atoms().clipboard, time);
    xcb_flush(m_connection.xcb());
}

void X11SelectionOwner::offerToManager(xcb_timestamp_t time) const
{
    const X11Atoms &atoms = m_connection.atoms();
    write(m_connection, m_window, atoms.saved, XCB_ATOM_ATOM,
          std::array{atoms.utf8String, atoms.plainUtf8, atoms.string});
    xcb_convert_selection(m_connection.xcb(), m_window, atoms.clipboardManager, atoms.saveTargets,
                          atoms.saved, time);
    xcb_flush(m_connection.xcb());
}

void X11SelectionOwner::answer(const xcb_selection_request_event_t &request)
{
    // Programs of old name no property: the target's name then serves for it.
    const xcb_atom_t property = request.property ? request.property : request.target;
    const bool isOurs = m_time != 0 && request.selection == m_connection.atoms().clipboard
        && (request.time == XCB_CURRENT_TIME || request.time >= m_time);
    xcb_selection_notify_event_t answer = {};
    answer.response_type = XCB_SELECTION_NOTIFY;
    answer.time = request.time;
    answer.requestor = request.requestor;
    answer.selection = request.selection;
    answer.target = request.target;
    answer.property = isOurs && give(request, property) ? property : xcb_atom_t(XCB_NONE);
    xcb_send_event(m_connection.xcb(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char *>(&answer));
    xcb_flush(m_connection.xcb());
}

bool X11SelectionOwner::isText(xcb_atom_t target) const
{
    const X11Atoms &atoms = m_connection.atoms();
    return target == atoms.utf8String || target == atoms.plainUtf8 || target == atoms.plainUtf8Upper
        || target == atoms.plain || target == atoms.text;
}

bool X11SelectionOwner::give(const xcb_selection_request_event_t &request, xcb_atom_t property)
{
    const X11Atoms &atoms = m_connection.atoms();
    const xcb_window_t window = request.requestor;
    const xcb_atom_t target = request.target;
    if (target == atoms.targets) {
        write(m_connection, window, property, XCB_ATOM_ATOM,
              std::array{atoms.targets, atoms.timestamp, atoms.utf8String, atoms.plainUtf8,
                         atoms.plainUtf8Upper, atoms.plain, atoms.string, atoms.text});
    } else if (target == atoms.timestamp) {
        write(m_connection, window, property, XCB_ATOM_INTEGER, std::array{m_time});
    } else if (target == atoms.string) {
        giveText(window, property, target, m_text.toLatin1());
    } else if (isText(target)) {
        const bool namesNoEncoding = target == atoms.text;
        giveText(window, property, namesNoEncoding ? atoms.utf8String : target, m_text.toUtf8());
    } else {
        return false;
    }
    return true;
}

void X11SelectionOwner::giveText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                                 const QByteArray &data)
{
    if (data.size() <= m_maxIncrement)
        return write(m_connection, window, property, type, data);
    if (m_transfers.size() == maxTransfers)
        endTransfer(0);
    m_transfers.append({window, property, type, data});
    watchProperties(m_connection, window, XCB_EVENT_MASK_PROPERTY_CHANGE);
    write(m_connection, window, property, m_connection.atoms().incr,
          std::array{quint32(data.size())});
}

void X11SelectionOwner::propertyChanged(const xcb_property_notify_event_t &event)
{
    if (event.state != XCB_PROPERTY_DELETE)
        return;
    const auto found = std::find_if(m_transfers.begin(), m_transfers.end(), [&](const auto &t) {
        return t.window == event.window && t.property == event.atom;
    });
    if (found == m_transfers.end())
        return;
    const bool isLast = found->remaining.isEmpty(); // told by an empty increment
    giveIncrement(*found);
    if (isLast)
        endTransfer(found - m_transfers.begin());
    xcb_flush(m_connection.xcb());
}

void X11SelectionOwner::giveIncrement(Transfer &transfer) const
{
    const QByteArray increment = transfer.remaining.left(m_maxIncrement);
    write(m_connection, transfer.window, transfer.property, transfer.type, increment);
    transfer.remaining.remove(0, increment.size());
}

void X11SelectionOwner::endTransfer(qsizetype index)
{
    const xcb_window_t window = m_transfers.takeAt(index).window;
    const bool isStillServed = std::any_of(m_transfers.cbegin(), m_transfers.cend(),
                                           [&](const auto &t) { return t.window == window; });
    if (!isStillServed) // else each change of a foreign window would wake us for ever
        watchProperties(m_connection, window, XCB_EVENT_MASK_NO_EVENT);
}
