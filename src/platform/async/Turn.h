#pragma once

#include <QObject>

#ifndef Q_MOC_RUN // its parser stumbles over this header
#include <coroutine>
#endif
#include <list>

class Turn;

/// A queue of coroutines that do something one at a time, in the order in which they came. Outlives
/// its turns. Main thread only.
class TurnQueue
{
public:
    TurnQueue() = default;
    TurnQueue(const TurnQueue &) = delete;
    TurnQueue &operator=(const TurnQueue &) = delete;

private:
    friend class Turn;

    void wakeFirst();

    std::list<Turn *> m_turns; ///< the first one has its turn
    QObject m_context;
};

/// A place in a queue from its construction on: `co_await turn;` on a local `Turn turn(queue);`
/// waits until all who came before are done. It is done when it is destroyed.
class Turn
{
public:
    explicit Turn(TurnQueue &queue);
    Turn(const Turn &) = delete;
    Turn &operator=(const Turn &) = delete;
    ~Turn();

    bool await_ready() const noexcept { return m_queue.m_turns.front() == this; }
    void await_suspend(std::coroutine_handle<> waiter) noexcept { m_waiter = waiter; }
    void await_resume() const noexcept {}

private:
    friend class TurnQueue;

    TurnQueue &m_queue;
    std::coroutine_handle<> m_waiter;
};
