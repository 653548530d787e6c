// SPDX-License-Identifier: MIT
#pragma once

#include <QTimer>

#include <chrono>

/// Time as it passes for this thread: what it was ready to run and other programs had the processor
/// does not count.
std::chrono::nanoseconds countedTime();

/// Tells how long the thread that made it was ever kept from its event loop, by work or by waiting,
/// in `countedTime`.
class Heartbeat
{
public:
    Heartbeat();

    std::chrono::milliseconds longestHold() const { return m_longestHold; }

private:
    void beat();

    static constexpr std::chrono::milliseconds period{5};
    QTimer m_timer;
    std::chrono::nanoseconds m_last; ///< in the time that counts
    std::chrono::milliseconds m_longestHold{0};
};
