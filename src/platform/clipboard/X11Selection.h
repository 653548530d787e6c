// SPDX-License-Identifier: MIT
#pragma once

#include "CopyLedger.h"
#include "SelectionOwner.h"
#include "SelectionReader.h"
#include "X11Connection.h"

#include <QSocketNotifier>

#include <xcb/xfixes.h>

/// Watches the X11 clipboard over one connection, for as long as that lasts.
class X11Selection : public QObject
{
    Q_OBJECT
public:
    /// `ledger` outlives the selection.
    X11Selection(std::unique_ptr<X11Connection> connection, CopyLedger &ledger,
                 const ClipboardLimits &limits);

    /// What was copied before this call is counted, but never read.
    void startReading();
    void stopReading();
    void setText(const QString &text);
    /// Leaves a text of ours to the clipboard manager, if one runs. Waits up to the limit.
    void handOver();

Q_SIGNALS:
    void copied(const ClipboardSnapshot &snapshot);
    void connectionLost();

private:
    /// The clipboard's owner after its last change.
    struct Owner {
        xcb_window_t window;
        xcb_timestamp_t time;
    };

    void processEvents();
    bool handleQueuedEvents();
    void handle(const xcb_generic_event_t &event);
    void selectionAnswered(const xcb_selection_notify_event_t &event);
    void propertyChanged(const xcb_property_notify_event_t &event);
    void ownerChanged(const xcb_xfixes_selection_notify_event_t &event);
    void follow(const QList<Owner> &owners);
    void beginReading(const Owner &owner);
    void contentsRead(const ClipboardContents &contents);
    void settle(const ClipboardContents &contents, bool offersLess = false);
    Announcer announcerOf(xcb_window_t owner) const;
    xcb_timestamp_t serverTime();
    bool isOwner() const { return m_owner == m_ownText.window(); }

    std::unique_ptr<X11Connection> m_connection;
    CopyLedger &m_ledger;
    ClipboardLimits m_limits;
    SelectionOwner m_ownText;
    SelectionReader m_reader;
    QSocketNotifier m_readable;

    bool m_isReading = false;
    bool m_isLost = false;
    bool m_isHandingOver = false;
    xcb_timestamp_t m_serverTime = 0;
    xcb_window_t m_owner = XCB_NONE;
    QList<Owner> m_unfollowed;

    quint32 m_readClient = 0; // whose contents were read last, what it offered
    QList<xcb_atom_t> m_readTypes;
    bool m_isSameClient = false;
};
