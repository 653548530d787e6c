// SPDX-License-Identifier: MIT
#pragma once

#include <QTimer>

#include <atomic>
#include <chrono>
#include <thread>

/// Tells how long the thread that made it was ever kept from its event loop. What a second thread
/// that only sleeps was late at the same time is the machine's fault and does not count.
class Heartbeat
{
public:
    Heartbeat();
    ~Heartbeat();

    std::chrono::milliseconds longestHold() const { return m_longestHold; }

private:
    using Clock = std::chrono::steady_clock;

    void beat();
    void watchMachine();
    Clock::duration takeMachineLate();

    static constexpr std::chrono::milliseconds period{5};
    QTimer m_timer;
    Clock::time_point m_last = Clock::now();
    std::chrono::milliseconds m_longestHold{0};
    std::atomic<Clock::duration> m_machineLate = Clock::duration::zero(); // since the last beat
    std::atomic<Clock::time_point> m_machineDue = Clock::now();
    std::atomic<bool> m_isEnding = false;
    std::thread m_machine;
};
