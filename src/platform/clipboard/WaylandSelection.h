// SPDX-License-Identifier: MIT
#pragma once

#include "CopyLedger.h"
#include "DataOffer.h"
#include "OfferReader.h"

#include <deque>
#include <memory>
#include <vector>

class DataSource;
class WaylandConnection;

/// Watches and sets the Wayland clipboard over one connection, for as long as that lasts.
class WaylandSelection : public QObject
{
    Q_OBJECT
public:
    /// `connection`, which offers data control, `worker`, by which copies are told, and `ledger`
    /// outlive the selection.
    WaylandSelection(WaylandConnection &connection, ClipboardWorker &worker, CopyLedger &ledger,
                     const ClipboardLimits &limits);
    ~WaylandSelection() override;

    /// What was copied before this call is counted, but never read.
    void startReading();
    void stopReading();
    /// What is there now, whenever it was copied, is told once.
    void fetch();
    /// False while there is no seat yet, or the compositor has not yet taken the last text: too
    /// many requests at once would break the connection.
    bool canSetText() const { return m_device && !m_textTaken; }
    void setText(const QString &text);
    /// Counts the copies whose texts have not arrived yet.
    void abandonReading();

Q_SIGNALS:
    void textSettable();
    /// The compositor wants no more of us on this connection.
    void finished();

private:
    friend struct WaylandSelectionEvents;

    /// Of the clipboard's owner.
    struct Change {
        std::optional<Announcer> announcer = {}; // absent when the owner has gone
        ClipboardContents contents = {};
        std::unique_ptr<OfferReader> reader = {}; // tells the contents, if there is one

        bool isKnown() const { return !reader || reader->contents(); }
    };

    void watchSeat();
    void unreadTold();
    void textTaken();
    void offerIntroduced(ext_data_control_offer_v1 *offer);
    void offerSelected(const ext_data_control_offer_v1 *offer);
    void append();
    void tellFetched();
    void dropOldReader();
    void settleKnown();
    const DataSource *sourceOf(const DataOffer &offer) const;

    WaylandConnection &m_connection;
    ClipboardWorker &m_worker;
    CopyLedger &m_ledger;
    ClipboardLimits m_limits;
    WaylandPointer<ext_data_control_device_v1> m_device;
    WaylandPointer<wl_callback> m_oldTold; // copies that were there before the device
    WaylandPointer<wl_callback> m_unreadTold; // copies that were there before we were to read
    WaylandPointer<wl_callback> m_textTaken;
    QObject m_pipes; // owns those that outlive their readers
    std::deque<Change> m_changes; // not yet settled, oldest first
    std::vector<std::unique_ptr<DataSource>> m_sources;
    std::unique_ptr<DataOffer> m_introduced; // not yet selected
    std::shared_ptr<const DataOffer> m_selected; // what the clipboard holds
    std::unique_ptr<OfferReader> m_fetcher;
    bool m_isCounting = false;
    bool m_isReading = false;
};
