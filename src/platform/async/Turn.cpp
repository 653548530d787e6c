#include "async/Turn.h"

#include <utility>

void TurnQueue::wakeFirst()
{
    if (m_turns.empty())
        return;
    if (const auto waiter = std::exchange(m_turns.front()->m_waiter, {}))
        waiter.resume();
}

Turn::Turn(TurnQueue &queue)
    : m_queue(queue)
{
    m_queue.m_turns.push_back(this);
}

Turn::~Turn()
{
    const bool hadItsTurn = m_queue.m_turns.front() == this;
    m_queue.m_turns.remove(this);
    if (!hadItsTurn || m_queue.m_turns.empty())
        return;
    // Later: whoever destroys this turn may be about to destroy the next one.
    QMetaObject::invokeMethod(
        &m_queue.m_context, [&queue = m_queue] { queue.wakeFirst(); }, Qt::QueuedConnection);
}
