// SPDX-License-Identifier: MIT
#pragma once

#include <QTimer>

#ifndef Q_MOC_RUN // its parser stumbles over this header
#include <coroutine>
#endif

/// Lets the main loop handle what is waiting before a long work goes on: `co_await yield;` on a
/// local `YieldToLoop yield;`.
class YieldToLoop
{
public:
    YieldToLoop() = default;
    YieldToLoop(const YieldToLoop &) = delete;
    YieldToLoop &operator=(const YieldToLoop &) = delete;
    ~YieldToLoop()
    {
        m_timer->stop();
        m_timer->deleteLater(); // its own signal may be what ends the wait
    }

    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> waiter)
    {
        m_timer->callOnTimeout([waiter] { waiter.resume(); });
        m_timer->setSingleShot(true);
        m_timer->start(0);
    }
    void await_resume() const noexcept {}

private:
    QTimer *m_timer = new QTimer;
};
