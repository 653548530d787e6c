// SPDX-License-Identifier: MIT
#pragma once

#include "Program.h"

#include <optional>

/// An X server without a screen, on a display number of its own.
class XvfbServer
{
public:
    /// Waits until it answers. Once started, it comes back under the same number.
    bool start();
    void stop() { m_server.reset(); }
    /// Lets it hang, as a stopped process does, with SIGSTOP, or go on.
    void signal(int number) const { m_server->signal(number); }

    /// Such as ":12"; empty before the first start.
    QByteArray display() const { return m_display; }

private:
    std::optional<Program> m_server;
    QByteArray m_display;
};
