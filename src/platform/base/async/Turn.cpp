// SPDX-License-Identifier: MIT
#include "async/Turn.h"

#include <algorithm>
#include <utility>

bool TurnQueue::isOn(const Turn *turn) const
{
    const auto end = std::next(m_turns.begin(), std::min(m_atOnce, m_turns.size()));
    return std::find(m_turns.begin(), end, turn) != end;
}

void TurnQueue::wakeWaiting()
{
    const auto isWaiting = [this](const Turn *turn) { return turn->m_waiter && isOn(turn); };
    const auto next = std::find_if(m_turns.begin(), m_turns.end(), isWaiting);
    if (next == m_turns.end())
        return;
    wakeLater(); // first: whoever is woken may destroy much
    std::exchange((*next)->m_waiter, {}).resume();
}

void TurnQueue::wakeLater()
{
    QMetaObject::invokeMethod(
        &m_context, [this] { wakeWaiting(); }, Qt::QueuedConnection);
}

Turn::Turn(TurnQueue &queue)
    : m_queue(queue)
{
    m_queue.m_turns.push_back(this);
}

Turn::~Turn()
{
    m_queue.m_turns.remove(this);
    m_queue.wakeLater(); // whoever destroys this turn may be about to destroy the next one
}
