// SPDX-License-Identifier: MIT
#pragma once

#include "ClipboardLimits.h"
#include "CopyLedger.h"

#include <QDeadlineTimer>
#include <QList>
#include <QTimer>

#include <xcb/xcb.h>

class X11Connection;

/// Asks the owner of the X11 clipboard for its text, one answer after the other: the offered types,
/// the password hint, then the best text type, in one piece or in increments.
class X11SelectionReader : public QObject
{
    Q_OBJECT
public:
    /// `connection` outlives the reader.
    X11SelectionReader(const X11Connection &connection, const ClipboardLimits &limits);

    /// Starts to read what was copied at `time`; gives up what was being read before.
    void read(xcb_timestamp_t time);
    void abandon();
    /// Ends the reading, if one is under way, as one in which there was no text.
    void giveUp();
    bool isReading() const { return m_stage != Stage::idle; }
    /// What the owner offered at the last reading.
    const QList<xcb_atom_t> &offered() const { return m_offered; }

    void selectionAnswered(const xcb_selection_notify_event_t &event);
    void propertyChanged(const xcb_property_notify_event_t &event);

Q_SIGNALS:
    /// Sent once for each `read` that is not given up, in time and within the limits.
    void finished(const ClipboardContents &contents);

private:
    enum class Stage { idle, types, hint, text };
    /// Of a question given up. What still comes in answer is thrown away until the deadline.
    struct Retired {
        xcb_window_t window;
        QDeadlineTimer deadline;
    };

    void ask(Stage stage, xcb_atom_t target);
    void askForText();
    void beginIncrements(const QByteArray &leastSize);
    void appendIncrement();
    void accept(xcb_atom_t type, const QByteArray &data);
    void acceptTypes(const QByteArray &data);
    void refused();
    void finish(const ClipboardContents &contents);
    void retireWindow();
    void discard(xcb_window_t window) const;
    void clearTransfer(xcb_window_t window) const;

    const X11Connection &m_connection;
    ClipboardLimits m_limits;
    xcb_window_t m_window;
    QList<Retired> m_retired;
    QTimer m_step;
    QTimer m_total;

    Stage m_stage = Stage::idle;
    bool m_isIncremental = false;
    xcb_timestamp_t m_time = 0;
    xcb_atom_t m_target = XCB_NONE;
    QList<xcb_atom_t> m_offered;
    QList<xcb_atom_t> m_textTypes; // still to be tried
    QByteArray m_increments;
};
