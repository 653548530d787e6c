// SPDX-License-Identifier: MIT
#include "WaylandConnection.h"

#include "DebugLog.h"

#include <QAbstractEventDispatcher>

#include <cerrno>
#include <cstring>
#include <data-control-client-header.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

/// The older name for the same messages. The name goes over the wire only when it is bound.
const wl_interface zwlrManager = [] {
    wl_interface interface = ext_data_control_manager_v1_interface;
    interface.name = "zwlr_data_control_manager_v1";
    return interface;
}();

} // namespace

struct WaylandConnectionEvents {
    static WaylandConnection &to(void *data) { return *static_cast<WaylandConnection *>(data); }

    static constexpr wl_registry_listener registry = {
        [](void *data, wl_registry *, uint32_t name, const char *interface, uint32_t) {
            to(data).globalAnnounced(name, interface);
        },
        [](void *data, wl_registry *, uint32_t name) { to(data).globalRemoved(name); },
    };
    static constexpr wl_callback_listener announced = {
        [](void *data, wl_callback *, uint32_t) { to(data).bindDataControl(); },
    };
};

std::unique_ptr<WaylandConnection> WaylandConnection::open(const QByteArray &display)
{
    WaylandPointer<wl_display> connected(
        wl_display_connect(display.isEmpty() ? nullptr : display.constData()));
    if (!connected)
        return {};
    return std::unique_ptr<WaylandConnection>(new WaylandConnection(std::move(connected)));
}

WaylandConnection::WaylandConnection(WaylandPointer<wl_display> display)
    : m_display(std::move(display))
    , m_registry(wl_display_get_registry(m_display.get()))
    , m_announced(synchronize())
    , m_readable(wl_display_get_fd(m_display.get()), QSocketNotifier::Read)
    , m_writable(wl_display_get_fd(m_display.get()), QSocketNotifier::Write)
{
    wl_registry_add_listener(m_registry.get(), &WaylandConnectionEvents::registry, this);
    wl_callback_add_listener(m_announced.get(), &WaylandConnectionEvents::announced, this);
    m_writable.setEnabled(false);
    connect(&m_readable, &QSocketNotifier::activated, this, &WaylandConnection::processEvents);
    connect(&m_writable, &QSocketNotifier::activated, this, &WaylandConnection::flush);
    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
            &WaylandConnection::flush);
}

WaylandPointer<wl_callback> WaylandConnection::synchronize() const
{
    return WaylandPointer<wl_callback>(wl_display_sync(m_display.get()));
}

void WaylandConnection::processEvents()
{
    if (!handleArrivedEvents())
        lose();
}

bool WaylandConnection::handleArrivedEvents()
{
    while (wl_display_prepare_read(m_display.get()) != 0) {
        if (wl_display_dispatch_pending(m_display.get()) < 0)
            return false;
    }
    return wl_display_read_events(m_display.get()) == 0
        && wl_display_dispatch_pending(m_display.get()) >= 0;
}

/// A broken connection is found out when it is read, after the last events that it holds.
void WaylandConnection::flush()
{
    if (m_isLost)
        return;
    const bool isFull = wl_display_flush(m_display.get()) < 0 && errno == EAGAIN;
    m_writable.setEnabled(isFull);
}

void WaylandConnection::lose()
{
    if (std::exchange(m_isLost, true))
        return;
    m_readable.setEnabled(false);
    m_writable.setEnabled(false);
    if (const int error = wl_display_get_error(m_display.get()))
        debugLog(u"The connection to the compositor broke: "_s
                 + QString::fromLocal8Bit(std::strerror(error)));
    Q_EMIT lost();
}

void WaylandConnection::globalAnnounced(quint32 name, const QByteArray &interface)
{
    if (interface == ext_data_control_manager_v1_interface.name) {
        m_extName = name;
    } else if (interface == zwlrManager.name) {
        m_zwlrName = name;
    } else if (interface == wl_seat_interface.name && !m_seat) {
        m_seatName = name;
        m_seat.reset(static_cast<wl_seat *>(
            wl_registry_bind(m_registry.get(), name, &wl_seat_interface, 1)));
        Q_EMIT seatFound();
    }
}

/// Another seat, if there is one, is found by connecting anew.
void WaylandConnection::globalRemoved(quint32 name)
{
    if (m_seat && name == m_seatName)
        lose();
}

void WaylandConnection::bindDataControl()
{
    if (m_extName != 0 || m_zwlrName != 0) {
        const auto *interface =
            m_extName != 0 ? &ext_data_control_manager_v1_interface : &zwlrManager;
        m_dataControl.reset(static_cast<ext_data_control_manager_v1 *>(wl_registry_bind(
            m_registry.get(), m_extName != 0 ? m_extName : m_zwlrName, interface, 1)));
    }
    Q_EMIT globalsKnown();
}
