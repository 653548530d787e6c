// SPDX-License-Identifier: MIT
#pragma once

#include "WaylandPointer.h"

#include <QByteArray>
#include <QList>

#include <optional>

/// What some program put into the Wayland clipboard, in the types that it can be had in.
class DataOffer
{
public:
    explicit DataOffer(ext_data_control_offer_v1 *offer);
    DataOffer(const DataOffer &) = delete;
    DataOffer &operator=(const DataOffer &) = delete;

    const ext_data_control_offer_v1 *offer() const { return m_offer.get(); }
    const QList<QByteArray> &types() const { return m_types; }
    /// A pipe, which the caller closes, into which the program is asked to write. Absent when
    /// there is none to be had.
    std::optional<int> receive(const QByteArray &type) const;

private:
    friend struct DataOfferEvents;

    WaylandPointer<ext_data_control_offer_v1> m_offer;
    QList<QByteArray> m_types;
};
