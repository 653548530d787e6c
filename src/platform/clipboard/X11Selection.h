// SPDX-License-Identifier: MIT
#pragma once

#include "CopyLedger.h"
#include "X11Connection.h"
#include "X11SelectionOwner.h"
#include "X11SelectionReader.h"

#include <QSocketNotifier>
#include <QTimer>

#include <xcb/xfixes.h>

/// Watches the X11 clipboard over one connection, for as long as that lasts.
class X11Selection : public QObject
{
    Q_OBJECT
public:
    /// `worker`, by which copies are told, and `ledger` outlive the selection. `keeper` is a window
    /// of the compositor that keeps the texts of programs that end, if there is such a one.
    X11Selection(std::unique_ptr<X11Connection> connection, ClipboardWorker &worker,
                 CopyLedger &ledger, const ClipboardLimits &limits, xcb_window_t keeper);

    /// What was copied before this call is counted, but never read.
    void startReading();
    void stopReading();
    /// What is there now, whenever it was copied, is told once.
    void fetch();
    void setText(const QString &text);
    /// Leaves a text of ours to the clipboard manager, if one runs. Waits up to the limit.
    void handOver();

Q_SIGNALS:
    void connectionLost();

private:
    void catchUp();
    void processEvents();
    void lose();
    void handle(const xcb_generic_event_t &event);
    void selectionAnswered(const xcb_selection_notify_event_t &event);
    void propertyChanged(const xcb_property_notify_event_t &event);
    void ownerChanged(const xcb_xfixes_selection_notify_event_t &event);
    void follow();
    void read();
    void contentsRead(const ClipboardContents &contents);
    void settle(const ClipboardContents &contents, Announcer announcer);
    xcb_timestamp_t serverTime();
    bool isOwner() const { return m_owner == m_ownText.window(); }

    std::unique_ptr<X11Connection> m_connection;
    ClipboardWorker &m_worker;
    CopyLedger &m_ledger;
    ClipboardLimits m_limits;
    xcb_window_t m_keeper;
    X11SelectionOwner m_ownText;
    X11SelectionReader m_reader;
    X11SelectionReader m_fetcher;
    QSocketNotifier m_readable;
    QTimer m_readingPause;

    bool m_isReading = false;
    qint64 m_changesUnread = 0; // since the last question
    bool m_isReadingDue = false; // after the pause
    bool m_isLost = false;
    bool m_isHandingOver = false;
    xcb_timestamp_t m_serverTime = 0;
    xcb_window_t m_manager = XCB_NONE;
    xcb_window_t m_owner = XCB_NONE; // after the last change
    xcb_timestamp_t m_ownedSince = 0;
    OwnerChanges m_changes; // not yet followed
    xcb_window_t m_readOwner = XCB_NONE;
};
