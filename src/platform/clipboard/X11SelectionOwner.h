// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <xcb/xcb.h>

class X11Connection;

/// Owns the X11 clipboard with a text of ours, and gives it to whoever asks; large texts in
/// increments.
class X11SelectionOwner
{
public:
    /// `connection` outlives the owner.
    explicit X11SelectionOwner(const X11Connection &connection);

    /// The window that owns the clipboard when we do.
    xcb_window_t window() const { return m_window; }
    QString text() const { return m_text; }
    /// `time` is the server's.
    void claim(const QString &text, xcb_timestamp_t time);
    /// Asks the clipboard manager to take the text over; its answer goes to our window.
    void offerToManager(xcb_timestamp_t time) const;

    void answer(const xcb_selection_request_event_t &request);
    void propertyChanged(const xcb_property_notify_event_t &event);

private:
    struct Transfer {
        xcb_window_t window;
        xcb_atom_t property;
        xcb_atom_t type;
        QByteArray remaining;
    };

    bool give(const xcb_selection_request_event_t &request, xcb_atom_t property);
    void giveText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                  const QByteArray &data);
    void giveIncrement(Transfer &transfer) const;
    void endTransfer(qsizetype index);
    bool isText(xcb_atom_t target) const;

    const X11Connection &m_connection;
    xcb_window_t m_window;
    QString m_text;
    xcb_timestamp_t m_time = 0;
    qsizetype m_maxIncrement; // bytes
    QList<Transfer> m_transfers;
};
