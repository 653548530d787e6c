// SPDX-License-Identifier: MIT
#pragma once

#include "async/Scope.h"

#include <QTest>

#include <optional>

namespace detail
{
template <typename T>
Task<void> keep(Task<T> task, std::optional<T> *result)
{
    *result = co_await task;
}
} // namespace detail

/// Runs `task` on the main loop and hands out its result; absent when it took over ten seconds.
template <typename T>
std::optional<T> waitFor(Task<T> task)
{
    std::optional<T> result;
    Scope scope;
    scope.start(detail::keep(std::move(task), &result));
    (void)QTest::qWaitFor([&result] { return result.has_value(); }, 10'000);
    return result;
}
