// SPDX-License-Identifier: MIT
#include "Heartbeat.h"

#include <algorithm>

using std::chrono::duration_cast;
using std::chrono::milliseconds;

Heartbeat::Heartbeat()
    : m_machine([this] { watchMachine(); })
{
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.callOnTimeout([this] { beat(); });
    m_timer.start(period);
}

Heartbeat::~Heartbeat()
{
    m_isEnding = true;
    m_machine.join();
}

void Heartbeat::beat()
{
    const auto now = Clock::now();
    const auto hold = now - m_last - period - takeMachineLate();
    m_longestHold = std::max(m_longestHold, duration_cast<milliseconds>(hold));
    m_last = now;
}

/// The other thread may be late right now, and not yet have said so.
Heartbeat::Clock::duration Heartbeat::takeMachineLate()
{
    const auto overdue = Clock::now() - m_machineDue.load();
    return m_machineLate.exchange({}) + std::max(overdue, Clock::duration::zero());
}

void Heartbeat::watchMachine()
{
    while (!m_isEnding) {
        const auto due = Clock::now() + period;
        m_machineDue = due;
        std::this_thread::sleep_until(due);
        m_machineLate = m_machineLate.load() + (Clock::now() - due);
    }
}
