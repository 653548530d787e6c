// SPDX-License-Identifier: MIT
#pragma once

#include "Clock.h"

/// The machine's own clocks, with precise timers on the main loop.
class SystemClock final : public Clock
{
public:
    Instant now() const override;
    std::chrono::milliseconds elapsed() const override;
    std::unique_ptr<Alarm> after(std::chrono::milliseconds delay,
                                 std::function<void()> wake) override;
};
