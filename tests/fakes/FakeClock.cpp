// SPDX-License-Identifier: MIT
#include "FakeClock.h"

#include <algorithm>

class FakeClock::FakeAlarm final : public Alarm
{
public:
    FakeAlarm(FakeClock &clock, std::shared_ptr<Pending> pending)
        : m_clock(clock)
        , m_pending(std::move(pending))
    {
    }
    ~FakeAlarm() override { m_clock.m_alarms.remove(m_pending); }

private:
    FakeClock &m_clock;
    std::shared_ptr<Pending> m_pending;
};

std::unique_ptr<Alarm> FakeClock::after(std::chrono::milliseconds delay, std::function<void()> wake)
{
    const auto pending = std::make_shared<Pending>(Pending{m_elapsed + delay, std::move(wake)});
    m_alarms.push_back(pending);
    return std::make_unique<FakeAlarm>(*this, pending);
}

void FakeClock::advance(std::chrono::milliseconds time)
{
    const auto target = m_elapsed + time;
    const auto goTo = [this](std::chrono::milliseconds moment) {
        m_now += moment - m_elapsed;
        m_elapsed = moment;
    };
    const auto earlier = [](const auto &one, const auto &other) { return one->due < other->due; };
    while (true) {
        const auto next = std::min_element(m_alarms.begin(), m_alarms.end(), earlier);
        if (next == m_alarms.end() || (*next)->due > target)
            break;
        const auto ringing = *next;
        m_alarms.erase(next);
        goTo(std::max(ringing->due, m_elapsed));
        ringing->wake();
    }
    goTo(target);
}
