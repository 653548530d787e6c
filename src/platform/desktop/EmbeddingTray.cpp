// SPDX-License-Identifier: MIT
#include "EmbeddingTray.h"

#include "X11Connection.h"

#include <QSocketNotifier>

#include <array>
#include <cstring>
#include <xcb/xfixes.h>

namespace
{

/// A tray owns the selection that is named after its screen.
xcb_atom_t traySelection(const X11Connection &connection)
{
    return connection.atom("_NET_SYSTEM_TRAY_S" + QByteArray::number(connection.screen()));
}

} // namespace

EmbeddingTray::EmbeddingTray(QObject *parent)
    : QObject(parent)
    , m_connection(X11Connection::open({}))
{
    if (!m_connection)
        return;
    m_readable =
        std::make_unique<QSocketNotifier>(m_connection->fileDescriptor(), QSocketNotifier::Read);
    connect(m_readable.get(), &QSocketNotifier::activated, this, &EmbeddingTray::processEvents);

    const xcb_atom_t selection = traySelection(*m_connection);
    xcb_xfixes_select_selection_input(m_connection->xcb(), m_connection->rootWindow(), selection,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER
                                          | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY
                                          | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    m_owner = m_connection->selectionOwner(selection);
}

EmbeddingTray::~EmbeddingTray() = default;

std::optional<QColor> EmbeddingTray::foreground() const
{
    constexpr qsizetype roles = 4, channels = 3; // the first role is that of plain icons
    const X11Property colors = m_connection->property(
        m_owner, m_connection->atom("_NET_SYSTEM_TRAY_COLORS"), roles * channels * 4);
    std::array<quint32, channels> channel;
    if (colors.type != XCB_ATOM_CARDINAL || colors.data.size() < qsizetype(sizeof channel))
        return std::nullopt;
    std::memcpy(channel.data(), colors.data.constData(), sizeof channel);
    return QColor::fromRgba64(quint16(channel[0]), quint16(channel[1]), quint16(channel[2]));
}

void EmbeddingTray::processEvents()
{
    while (const auto event = m_connection->nextEvent()) {
        if ((event->response_type & 0x7f) != m_connection->ownerEvent())
            continue;
        m_owner = reinterpret_cast<const xcb_xfixes_selection_notify_event_t &>(*event).owner;
        Q_EMIT changed();
    }
    m_readable->setEnabled(!m_connection->isBroken());
}

bool hasEmbeddingTray()
{
    const auto connection = X11Connection::open({});
    return connection && connection->selectionOwner(traySelection(*connection)) != XCB_NONE;
}
