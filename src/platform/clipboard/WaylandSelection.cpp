// SPDX-License-Identifier: MIT
#include "WaylandSelection.h"

#include "DataSource.h"
#include "WaylandConnection.h"

#include <algorithm>
#include <data-control-client-header.h>
#include <utility>

namespace
{

constexpr qsizetype maxReaders = 16;

} // namespace

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
        [](void *data, wl_callback *, uint32_t) { to(data).unreadTold(); },
    };
    static constexpr wl_callback_listener textTaken = {
        [](void *data, wl_callback *, uint32_t) { to(data).textTaken(); },
    };
};

WaylandSelection::WaylandSelection(WaylandConnection &connection, ClipboardWorker &worker,
                                   CopyLedger &ledger, const ClipboardLimits &limits)
    : m_connection(connection)
    , m_worker(worker)
    , m_ledger(ledger)
    , m_limits(limits)
{
    connect(&connection, &WaylandConnection::seatFound, this, &WaylandSelection::watchSeat);
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

void WaylandSelection::unreadTold()
{
    m_isReading = true;
    Q_EMIT m_worker.readingStarted();
}

void WaylandSelection::stopReading()
{
    m_unreadTold.reset(); // or it would start the reading again
    m_isReading = false;
}

void WaylandSelection::fetch()
{
    const DataSource *const ours = m_selected ? sourceOf(*m_selected) : nullptr;
    if (!m_selected || ours)
        return Q_EMIT m_worker.fetched(ours ? std::optional(ours->text()) : std::nullopt);
    m_fetcher = std::make_unique<OfferReader>(m_selected, m_limits, &m_pipes);
    connect(m_fetcher.get(), &OfferReader::finished, this, &WaylandSelection::tellFetched,
            Qt::QueuedConnection);
    tellFetched();
}

/// The answer may have been there at once.
void WaylandSelection::tellFetched()
{
    if (!m_fetcher || !m_fetcher->contents())
        return;
    const auto text = m_fetcher->contents()->text;
    m_fetcher.reset();
    Q_EMIT m_worker.fetched(text);
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

void WaylandSelection::offerSelected(const ext_data_control_offer_v1 *offer)
{
    m_selected = std::exchange(m_introduced, nullptr);
    if (m_selected && m_selected->offer() != offer)
        m_selected.reset();
    if (!m_isCounting)
        return;
    if (m_selected)
        append();
    else
        m_changes.push_back({}); // what the owner wrote may still be on its way to us
    settleKnown();
}

/// What is overtaken is read on for a while: a program still gives what it was asked for before its
/// copy was replaced.
void WaylandSelection::append()
{
    for (const Change &change : m_changes) {
        if (change.reader)
            change.reader->hurry();
    }
    dropOldReader();
    const DataSource *const ours = sourceOf(*m_selected);
    Change change = {ours ? Announcer::us : Announcer::program};
    if (!m_isReading) {
        change.contents = {{}, true};
    } else if (ours) {
        change.contents = {ours->text()};
    } else {
        change.reader = std::make_unique<OfferReader>(m_selected, m_limits, &m_pipes);
        connect(change.reader.get(), &OfferReader::finished, this, &WaylandSelection::settleKnown,
                Qt::QueuedConnection);
    }
    m_changes.push_back(std::move(change));
}

void WaylandSelection::dropOldReader()
{
    const auto isRead = [](const Change &change) { return change.reader != nullptr; };
    if (std::count_if(m_changes.cbegin(), m_changes.cend(), isRead) == maxReaders)
        std::find_if(m_changes.begin(), m_changes.end(), isRead)->reader.reset();
}

void WaylandSelection::settleKnown()
{
    while (!m_changes.empty() && m_changes.front().isKnown()) {
        const Change change = std::move(m_changes.front());
        m_changes.pop_front();
        OwnerChanges owners;
        owners.add(change.announcer.has_value());
        m_ledger.ownerChanged(owners);
        if (!change.announcer)
            continue;
        const auto snapshot = m_ledger.settle(
            change.reader ? *change.reader->contents() : change.contents, *change.announcer);
        if (snapshot)
            Q_EMIT m_worker.copied(*snapshot);
    }
}

void WaylandSelection::abandonReading()
{
    if (std::exchange(m_fetcher, nullptr))
        Q_EMIT m_worker.fetched({});
    for (Change &change : m_changes)
        change.reader.reset();
    settleKnown();
}

const DataSource *WaylandSelection::sourceOf(const DataOffer &offer) const
{
    const auto source =
        std::find_if(m_sources.cbegin(), m_sources.cend(), [&](const auto &candidate) {
            return offer.types().contains(candidate->marker());
        });
    return source == m_sources.cend() ? nullptr : source->get();
}
