// SPDX-License-Identifier: MIT
#pragma once

#include "WaylandPointer.h"

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

/// A connection to a Wayland compositor, and what of it the clipboard needs. Never waits; a
/// compositor that hangs is merely silent.
///
/// Its signals come in the midst of its work: only a queued receiver may destroy it.
class WaylandConnection : public QObject
{
    Q_OBJECT
public:
    /// `display` as in the environment variable, which is used when it is empty. Null when no
    /// compositor listens.
    static std::unique_ptr<WaylandConnection> open(const QByteArray &display);

    /// Null before `globalsKnown`, and after it when the compositor does not offer it.
    ext_data_control_manager_v1 *dataControl() const { return m_dataControl.get(); }
    /// Null until there is one.
    wl_seat *seat() const { return m_seat.get(); }
    /// Its `done` comes after all events that the compositor sent before it was asked.
    WaylandPointer<wl_callback> synchronize() const;

Q_SIGNALS:
    void globalsKnown();
    void seatFound();
    /// The compositor ended, sent nonsense or took our seat away. Sent once.
    void lost();

private:
    friend struct WaylandConnectionEvents;

    explicit WaylandConnection(WaylandPointer<wl_display> display);
    void processEvents();
    bool handleArrivedEvents();
    void flush();
    void lose();

    void globalAnnounced(quint32 name, const QByteArray &interface);
    void globalRemoved(quint32 name);
    void bindDataControl();

    WaylandPointer<wl_display> m_display;
    WaylandPointer<wl_registry> m_registry;
    WaylandPointer<wl_callback> m_announced;
    WaylandPointer<ext_data_control_manager_v1> m_dataControl;
    WaylandPointer<wl_seat> m_seat;
    QSocketNotifier m_readable;
    QSocketNotifier m_writable;
    quint32 m_extName = 0; // numbers by which the registry knows them
    quint32 m_zwlrName = 0;
    quint32 m_seatName = 0;
    bool m_isLost = false;
};
