// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QObject>

#ifndef Q_MOC_RUN // its parser stumbles over this header
#include <coroutine>
#endif
#include <cstddef>
#include <list>

class Permit;

/// Lets coroutines do something one at a time, or a few at a time and fewer of one kind, in the
/// order in which they came. Outlives its permits. Main thread only.
class Semaphore
{
public:
    explicit Semaphore(std::size_t atOnce = 1)
        : Semaphore(atOnce, atOnce)
    {
    }
    Semaphore(std::size_t atOnce, std::size_t ofOneKind)
        : m_atOnce(atOnce)
        , m_ofOneKind(ofOneKind)
    {
    }
    Semaphore(const Semaphore &) = delete;
    Semaphore &operator=(const Semaphore &) = delete;

private:
    friend class Permit;

    template <typename Wanted>
    Permit *firstGranted(Wanted isWanted) const;
    bool isGranted(const Permit *permit) const;
    void wakeWaiting();
    void wakeLater();

    std::size_t m_atOnce;
    std::size_t m_ofOneKind;
    std::list<Permit *> m_permits; ///< in their order, the granted among them
    QObject m_context;
};

/// Asked for from its construction on: `co_await permit;` on a local `Permit permit(semaphore);`
/// waits until enough of those who came before are done. Given back when it is destroyed.
class Permit
{
public:
    explicit Permit(Semaphore &semaphore, QByteArray kind = {});
    Permit(const Permit &) = delete;
    Permit &operator=(const Permit &) = delete;
    ~Permit();

    bool await_ready() const { return m_semaphore.isGranted(this); }
    void await_suspend(std::coroutine_handle<> waiter) noexcept { m_waiter = waiter; }
    void await_resume() const noexcept {}

private:
    friend class Semaphore;

    Semaphore &m_semaphore;
    QByteArray m_kind;
    std::coroutine_handle<> m_waiter;
};
