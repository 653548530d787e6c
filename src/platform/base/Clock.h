// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#ifndef Q_MOC_RUN // its parser stumbles over this header
#include <coroutine>
#endif

/// A moment in time, independent of any time zone.
using Instant = std::chrono::sys_time<std::chrono::microseconds>;

/// A pending wake-up; destroying it cancels the wake-up.
class Alarm
{
public:
    virtual ~Alarm() = default;
};

/// Tells the time and wakes sleepers. Main thread only.
class Clock
{
public:
    virtual ~Clock() = default;
    /// The wall clock. It may jump both ways when somebody sets it.
    virtual Instant now() const = 0;
    /// Time since some fixed moment. Never jumps; stands still while the machine is suspended.
    virtual std::chrono::milliseconds elapsed() const = 0;
    /// Calls `wake` once from the main loop when `elapsed()` has grown by `delay`.
    virtual std::unique_ptr<Alarm> after(std::chrono::milliseconds delay,
                                         std::function<void()> wake) = 0;
};

/// Waits in a coroutine: `co_await sleep;` on a local `Sleep sleep(clock, 100ms);`.
class Sleep
{
public:
    Sleep(Clock &clock, std::chrono::milliseconds delay)
        : m_clock(clock)
        , m_delay(delay)
    {
    }
    Sleep(const Sleep &) = delete;
    Sleep &operator=(const Sleep &) = delete;

    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> sleeper)
    {
        m_alarm = m_clock.after(m_delay, [sleeper] { sleeper.resume(); });
    }
    void await_resume() const noexcept {}

private:
    Clock &m_clock;
    std::chrono::milliseconds m_delay;
    std::unique_ptr<Alarm> m_alarm;
};
