// SPDX-License-Identifier: MIT
#pragma once

#include <exception>
#include <utility>
#include <variant>
#ifndef Q_MOC_RUN // its parser stumbles over this header
#include <coroutine>
#endif

template <typename T>
class Task;

namespace detail
{

struct TaskPromiseBase {
    std::coroutine_handle<> waiter = std::noop_coroutine();

    struct ResumeWaiter {
        bool await_ready() noexcept { return false; }
        template <typename Promise>
        std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> finished) noexcept
        {
            return finished.promise().waiter;
        }
        void await_resume() noexcept {}
    };
    std::suspend_always initial_suspend() noexcept { return {}; }
    ResumeWaiter final_suspend() noexcept { return {}; }
};

template <typename T>
struct TaskPromise : TaskPromiseBase {
    std::variant<std::monostate, T, std::exception_ptr> outcome;

    Task<T> get_return_object();
    template <typename U>
    void return_value(U &&value)
    {
        outcome.template emplace<1>(std::forward<U>(value));
    }
    void unhandled_exception() { outcome.template emplace<2>(std::current_exception()); }
    T take()
    {
        if (outcome.index() == 2)
            std::rethrow_exception(std::get<2>(outcome));
        return std::move(std::get<1>(outcome));
    }
};

template <>
struct TaskPromise<void> : TaskPromiseBase {
    std::exception_ptr failure;

    Task<void> get_return_object();
    void return_void() {}
    void unhandled_exception() { failure = std::current_exception(); }
    void take()
    {
        if (failure)
            std::rethrow_exception(failure);
    }
};

} // namespace detail

/// A coroutine that starts when it is awaited and owns its frame: destroying the task destroys the
/// frame and with it whatever the coroutine was waiting for. Main thread only.
template <typename T = void>
class [[nodiscard]] Task
{
public:
    using promise_type = detail::TaskPromise<T>;
    using Handle = std::coroutine_handle<promise_type>;

    explicit Task(Handle handle)
        : m_handle(handle)
    {
    }
    Task(Task &&other) noexcept
        : m_handle(std::exchange(other.m_handle, {}))
    {
    }
    Task &operator=(Task &&) = delete;
    ~Task()
    {
        if (m_handle)
            m_handle.destroy();
    }

    bool await_ready() const noexcept { return false; }
    std::coroutine_handle<> await_suspend(std::coroutine_handle<> waiter) noexcept
    {
        m_handle.promise().waiter = waiter;
        return m_handle;
    }
    T await_resume() { return m_handle.promise().take(); }

private:
    Handle m_handle;
};

template <typename T>
Task<T> detail::TaskPromise<T>::get_return_object()
{
    return Task<T>(Task<T>::Handle::from_promise(*this));
}

inline Task<void> detail::TaskPromise<void>::get_return_object()
{
    return Task<void>(Task<void>::Handle::from_promise(*this));
}
