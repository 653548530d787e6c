// SPDX-License-Identifier: MIT
#pragma once

#include "Clock.h"

#include <list>

/// A clock that moves only when told to.
class FakeClock final : public Clock
{
public:
    explicit FakeClock(Instant start = Instant(std::chrono::seconds(1'700'000'000)))
        : m_now(start)
    {
    }

    /// Lets time pass: both clocks go on, and alarms on the way ring in their order.
    void advance(std::chrono::milliseconds time);
    /// Sets the wall clock, or lets the machine sleep: no time passes for alarms.
    void setWallClock(Instant now) { m_now = now; }
    /// How many wake-ups are pending.
    std::size_t alarmCount() const { return m_alarms.size(); }

    Instant now() const override { return m_now; }
    std::chrono::milliseconds elapsed() const override { return m_elapsed; }
    std::unique_ptr<Alarm> after(std::chrono::milliseconds delay,
                                 std::function<void()> wake) override;

private:
    struct Pending {
        std::chrono::milliseconds due;
        std::function<void()> wake;
    };
    class FakeAlarm;

    Instant m_now;
    std::chrono::milliseconds m_elapsed{0};
    std::list<std::shared_ptr<Pending>> m_alarms;
};
