// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QObject>

#ifndef Q_MOC_RUN // its parser stumbles over this header
#include <coroutine>
#endif
#include <cstddef>
#include <list>

class Turn;

/// A queue of coroutines that do something one at a time, or a few at a time and fewer of one kind,
/// in the order in which they came. Outlives its turns. Main thread only.
class TurnQueue
{
public:
    explicit TurnQueue(std::size_t atOnce = 1)
        : TurnQueue(atOnce, atOnce)
    {
    }
    TurnQueue(std::size_t atOnce, std::size_t ofOneKind)
        : m_atOnce(atOnce)
        , m_ofOneKind(ofOneKind)
    {
    }
    TurnQueue(const TurnQueue &) = delete;
    TurnQueue &operator=(const TurnQueue &) = delete;

private:
    friend class Turn;

    template <typename Wanted>
    Turn *firstOn(Wanted isWanted) const;
    bool isOn(const Turn *turn) const;
    void wakeWaiting();
    void wakeLater();

    std::size_t m_atOnce;
    std::size_t m_ofOneKind;
    std::list<Turn *> m_turns; ///< in their order, those that are on among them
    QObject m_context;
};

/// A place in a queue from its construction on: `co_await turn;` on a local `Turn turn(queue);`
/// waits until enough of those who came before are done. It is done when it is destroyed.
class Turn
{
public:
    explicit Turn(TurnQueue &queue, QByteArray kind = {});
    Turn(const Turn &) = delete;
    Turn &operator=(const Turn &) = delete;
    ~Turn();

    bool await_ready() const { return m_queue.isOn(this); }
    void await_suspend(std::coroutine_handle<> waiter) noexcept { m_waiter = waiter; }
    void await_resume() const noexcept {}

private:
    friend class TurnQueue;

    TurnQueue &m_queue;
    QByteArray m_kind;
    std::coroutine_handle<> m_waiter;
};
