// SPDX-License-Identifier: MIT
#pragma once

#include "async/Task.h"

#include <list>

/// Owns running tasks that nobody awaits. The last member of the service whose work they do:
/// destroying it ends them where they wait, before anything they use goes. Main thread only.
class Scope
{
public:
    Scope() = default;
    Scope(const Scope &) = delete;
    Scope &operator=(const Scope &) = delete;
    ~Scope();

    /// Runs `task` up to its first wait, then from the main loop. What it throws is logged.
    void start(Task<void> task);
    /// Runs `task` as `start` does and waits for its end. It goes on when that wait is given up.
    Task<void> startAndWait(Task<void> task);
    bool isEmpty() const { return m_running.empty(); }

private:
    using Running = std::list<std::coroutine_handle<>>;
    struct Root;

    static Root run(Scope *scope, Task<void> task);

    Running m_running;
};
