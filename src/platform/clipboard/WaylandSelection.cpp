#include "WaylandSelection.h"

#include "DataSource.h"
#include "WaylandConnection.h"

#include <algorithm>
#include <data-control-client-header.h>
#include <utility>

struct WaylandSelectionEvents {
    static WaylandSelection &to(void *data) { return *static_cast<WaylandSelection *>(data); }

    static constexpr ext_data_control_device_v1_listener device = {
        [](void *data, ext_data_control_device_v1 *, ext_data_control_offer_v1 *offer) {
            to(data).offerIntroduced(offer);
        },
        [](void *data, ext_data_control_device_v1 *, ext_data_control_offer_v1 *offer) {
            to(data).offerSelected(offer);
        },
        [](void *data, ext_data_control_device_v1 *) { Q_EMIT to(data).finished(); },
        // What was merely marked is no copy.
        [](void *data, ext_data_control_device_v1 *, ext_data_control_offer_v1 *) {
            to(data).m_introduced.reset();
        },
    };
    static constexpr wl_callback_listener oldTold = {
        [](void *data, wl_callback *, uint32_t) { to(data).m_isCounting = true; },
    };
    static constexpr wl_callback_listener unreadTold = {
        [](void *data, wl_callback *, uint32_t) {
            to(data).follow();
            to(data).m_isReading = true;
        },
    };
    static constexpr wl_callback_listener textTaken = {
        [](void *data, wl_callback *, uint32_t) { to(data).textTaken(); },
    };
};

WaylandSelection::WaylandSelection(WaylandConnection &connection, CopyLedger &ledger,
                                   const ClipboardLimits &limits)
    : m_connection(connection)
    , m_ledger(ledger)
    , m_limits(limits)
    , m_reader(limits)
{
    connect(&connection, &WaylandConnection::seatFound, this, &WaylandSelection::watchSeat);
    connect(&connection, &WaylandConnection::eventsHandled, this, &WaylandSelection::follow);
    connect(&m_reader, &OfferReader::finished, this, &WaylandSelection::settle);
    if (connection.seat())
        watchSeat();
}

WaylandSelection::~WaylandSelection() = default;

void WaylandSelection::watchSeat()
{
    m_device.reset(ext_data_control_manager_v1_get_data_device(m_connection.dataControl(),
                                                               m_connection.seat()));
    ext_data_control_device_v1_add_listener(m_device.get(), &WaylandSelectionEvents::device, this);
    m_oldTold = m_connection.synchronize();
    wl_callback_add_listener(m_oldTold.get(), &WaylandSelectionEvents::oldTold, this);
    Q_EMIT textSettable();
}

void WaylandSelection::startReading()
{
    m_unreadTold = m_connection.synchronize();
    wl_callback_add_listener(m_unreadTold.get(), &WaylandSelectionEvents::unreadTold, this);
}

void WaylandSelection::setText(const QString &text)
{
    const auto isCancelled = [](const auto &source) { return source->isCancelled(); };
    m_sources.erase(std::remove_if(m_sources.begin(), m_sources.end(), isCancelled),
                    m_sources.end());
    m_sources.push_back(
        std::make_unique<DataSource>(m_connection.dataControl(), text, m_limits, this));
    ext_data_control_device_v1_set_selection(m_device.get(), m_sources.back()->source());
    m_textTaken = m_connection.synchronize();
    wl_callback_add_listener(m_textTaken.get(), &WaylandSelectionEvents::textTaken, this);
}

void WaylandSelection::textTaken()
{
    m_textTaken.reset();
    Q_EMIT textSettable();
}

/// Its types follow, and then what it is for.
void WaylandSelection::offerIntroduced(ext_data_control_offer_v1 *offer)
{
    m_introduced = std::make_unique<DataOffer>(offer);
}

/// Only notes the change: of a burst the last alone is worth reading. When the owner has gone, what
/// it wrote may still be on its way to us.
void WaylandSelection::offerSelected(const ext_data_control_offer_v1 *offer)
{
    auto selected = std::exchange(m_introduced, nullptr);
    if (!m_isCounting)
        return;
    if (!selected || selected->offer() != offer)
        return m_ledger.ownerLost();
    if (!m_unfollowed)
        m_reader.readArrived(); // before it is given up for the new one
    m_ledger.ownerChanged(sourceOf(*selected) ? Announcer::us : Announcer::program);
    m_unfollowed = std::move(selected);
}

void WaylandSelection::follow()
{
    auto offer = std::exchange(m_unfollowed, nullptr);
    if (!offer)
        return;
    m_reader.abandon();
    if (!m_isReading)
        settle({{}, true});
    else if (const DataSource *ours = sourceOf(*offer))
        settle({ours->text()});
    else
        m_reader.read(std::move(offer));
}

void WaylandSelection::settle(const ClipboardContents &contents)
{
    if (const auto snapshot = m_ledger.settle(contents))
        Q_EMIT copied(*snapshot);
}

const DataSource *WaylandSelection::sourceOf(const DataOffer &offer) const
{
    const auto source =
        std::find_if(m_sources.cbegin(), m_sources.cend(), [&](const auto &candidate) {
            return offer.types().contains(candidate->marker());
        });
    return source == m_sources.cend() ? nullptr : source->get();
}
