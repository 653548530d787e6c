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
    const auto late = duration_cast<milliseconds>(now - m_last) - period;
    m_longestHold = std::max(m_longestHold, late - milliseconds(m_machineLate.exchange(0)));
    m_last = now;
}

void Heartbeat::watchMachine()
{
    while (!m_isEnding) {
        const auto begin = Clock::now();
        std::this_thread::sleep_for(period);
        m_machineLate += int(duration_cast<milliseconds>(Clock::now() - begin - period).count());
    }
}
