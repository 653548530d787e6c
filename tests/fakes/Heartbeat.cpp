// SPDX-License-Identifier: MIT
#include "Heartbeat.h"

#include <QFile>

#include <algorithm>

using namespace std::chrono;

namespace
{

/// How long this thread was ready and had to wait for a processor: the second number of
/// proc(5)'s schedstat.
nanoseconds waitedForProcessor()
{
    QFile statistics(QStringLiteral("/proc/thread-self/schedstat"));
    if (!statistics.open(QIODevice::ReadOnly))
        return nanoseconds::zero();
    return nanoseconds(statistics.readAll().split(' ').value(1).toLongLong());
}

} // namespace

nanoseconds countedTime()
{
    return steady_clock::now().time_since_epoch() - waitedForProcessor();
}

Heartbeat::Heartbeat()
    : m_last(countedTime())
{
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.callOnTimeout([this] { beat(); });
    m_timer.start(period);
}

void Heartbeat::beat()
{
    const nanoseconds now = countedTime();
    m_longestHold = std::max(m_longestHold, duration_cast<milliseconds>(now - m_last - period));
    m_last = now;
}
