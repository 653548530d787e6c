// SPDX-License-Identifier: MIT
#include "SystemClock.h"

#include <QTimer>

namespace
{

class TimerAlarm final : public Alarm
{
public:
    TimerAlarm(std::chrono::milliseconds delay, std::function<void()> wake)
        : m_timer(new QTimer)
    {
        m_timer->setSingleShot(true);
        m_timer->setTimerType(Qt::PreciseTimer);
        QObject::connect(m_timer, &QTimer::timeout, m_timer, std::move(wake));
        m_timer->start(delay);
    }
    TimerAlarm(const TimerAlarm &) = delete;
    TimerAlarm &operator=(const TimerAlarm &) = delete;
    ~TimerAlarm() override
    {
        m_timer->stop();
        m_timer->deleteLater(); // the wake-up itself may be what destroys the alarm
    }

private:
    QTimer *m_timer;
};

} // namespace

Instant SystemClock::now() const
{
    return std::chrono::time_point_cast<Instant::duration>(std::chrono::system_clock::now());
}

std::chrono::milliseconds SystemClock::elapsed() const
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now().time_since_epoch());
}

std::unique_ptr<Alarm> SystemClock::after(std::chrono::milliseconds delay,
                                          std::function<void()> wake)
{
    return std::make_unique<TimerAlarm>(delay, std::move(wake));
}
