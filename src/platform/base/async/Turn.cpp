// SPDX-License-Identifier: MIT
#include "async/Turn.h"

#include <QHash>

#include <utility>

/// The first turn that is on and wanted; null when there is none. Who is on stays it until the end
/// of the turn, because nobody who comes later is counted before.
template <typename Wanted>
Turn *TurnQueue::firstOn(Wanted isWanted) const
{
    std::size_t on = 0;
    QHash<QByteArray, std::size_t> ofKind;
    for (auto turn = m_turns.begin(); turn != m_turns.end() && on < m_atOnce; ++turn) {
        std::size_t &ofThisKind = ofKind[(*turn)->m_kind];
        if (ofThisKind == m_ofOneKind)
            continue;
        if (isWanted(*turn))
            return *turn;
        ++ofThisKind;
        ++on;
    }
    return nullptr;
}

bool TurnQueue::isOn(const Turn *turn) const
{
    return firstOn([turn](const Turn *other) { return other == turn; }) != nullptr;
}

void TurnQueue::wakeWaiting()
{
    Turn *const next = firstOn([](const Turn *turn) { return bool(turn->m_waiter); });
    if (!next)
        return;
    wakeLater(); // first: whoever is woken may destroy much
    std::exchange(next->m_waiter, {}).resume();
}

void TurnQueue::wakeLater()
{
    QMetaObject::invokeMethod(
        &m_context, [this] { wakeWaiting(); }, Qt::QueuedConnection);
}

Turn::Turn(TurnQueue &queue, QByteArray kind)
    : m_queue(queue)
    , m_kind(std::move(kind))
{
    m_queue.m_turns.push_back(this);
}

Turn::~Turn()
{
    m_queue.m_turns.remove(this);
    m_queue.wakeLater(); // whoever destroys this turn may be about to destroy the next one
}
