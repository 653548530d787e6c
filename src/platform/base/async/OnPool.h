// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QThreadPool>

#include <exception>
#include <functional>
#include <memory>
#include <variant>
#ifndef Q_MOC_RUN // its parser stumbles over this header
#include <coroutine>
#endif

/// Runs a function on a thread of `pool` and resumes on the main thread with its result:
/// `auto result = co_await job;` on a local `OnPool<R> job(pool, function);`. A wait that is
/// abandoned lets the function finish and drops its result, so it captures values only.
template <typename R>
class OnPool
{
public:
    OnPool(QThreadPool &pool, std::function<R()> function)
        : m_pool(pool)
        , m_job(std::make_shared<Job>())
    {
        m_job->function = std::move(function);
    }
    OnPool(const OnPool &) = delete;
    OnPool &operator=(const OnPool &) = delete;
    ~OnPool() { m_job->waiter = {}; }

    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> waiter)
    {
        m_job->waiter = waiter;
        m_pool.start([job = m_job]() mutable {
            job->run();
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [job = std::move(job)] {
                    if (const auto next = std::exchange(job->waiter, {}))
                        next.resume();
                },
                Qt::QueuedConnection);
        });
    }
    R await_resume()
    {
        if (m_job->outcome.index() == 2)
            std::rethrow_exception(std::get<2>(m_job->outcome));
        return std::move(std::get<1>(m_job->outcome));
    }

private:
    struct Job {
        std::function<R()> function;
        std::variant<std::monostate, R, std::exception_ptr> outcome;
        std::coroutine_handle<> waiter; // touched on the main thread only

        void run()
        {
            try {
                outcome.template emplace<1>(function());
            } catch (...) {
                outcome.template emplace<2>(std::current_exception());
            }
            function = nullptr; // what it captured is released on the pool's thread
        }
    };

    QThreadPool &m_pool;
    std::shared_ptr<Job> m_job;
};
