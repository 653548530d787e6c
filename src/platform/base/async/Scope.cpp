// SPDX-License-Identifier: MIT
#include "async/Scope.h"

#include "DebugLog.h"
#include "Utf8.h"
#include "async/Semaphore.h"

#include <QString>

#include <memory>

struct Scope::Root {
    struct promise_type {
        Scope *scope;
        Running::iterator place;

        promise_type(Scope *owner, Task<void> &)
            : scope(owner)
        {
        }

        struct Leave {
            bool await_ready() noexcept { return false; }
            void await_suspend(std::coroutine_handle<promise_type> finished) noexcept
            {
                promise_type &promise = finished.promise();
                promise.scope->m_running.erase(promise.place);
                finished.destroy();
            }
            void await_resume() noexcept {}
        };
        Root get_return_object()
        {
            return {std::coroutine_handle<promise_type>::from_promise(*this)};
        }
        std::suspend_always initial_suspend() noexcept { return {}; }
        Leave final_suspend() noexcept { return {}; }
        void return_void() {}
        void unhandled_exception()
        {
            try {
                throw;
            } catch (const std::exception &error) {
                debugLog(u"Unexpected error in a task: " + readUtf8(error.what()));
            } catch (...) {
                debugLog(QStringLiteral("Unexpected error in a task: of unknown type"));
            }
        }
    };
    std::coroutine_handle<promise_type> handle;
};

Scope::~Scope()
{
    while (!m_running.empty()) {
        const std::coroutine_handle<> task = m_running.front();
        m_running.pop_front();
        task.destroy();
    }
}

void Scope::start(Task<void> task)
{
    const Root root = run(this, std::move(task));
    root.handle.promise().place = m_running.insert(m_running.end(), root.handle);
    root.handle.resume();
}

namespace
{

Task<void> holding(std::shared_ptr<Semaphore> running, Task<void> task)
{
    const Permit untilDone(*running);
    co_await task;
}

} // namespace

Task<void> Scope::startAndWait(Task<void> task)
{
    const auto running = std::make_shared<Semaphore>(); // outlives either
    start(holding(running, std::move(task)));
    Permit afterwards(*running);
    co_await afterwards;
}

Scope::Root Scope::run(Scope *, Task<void> task)
{
    co_await task;
}
