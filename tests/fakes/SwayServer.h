// SPDX-License-Identifier: MIT
#pragma once

#include "Program.h"

#include <QTemporaryDir>

#include <optional>

/// A real Wayland compositor without a screen, in a folder of its own.
class SwayServer
{
public:
    /// Waits until programs can connect. Once started, it comes back under the same address.
    bool start();
    void stop() { m_server.reset(); }

    /// For `WAYLAND_DISPLAY`.
    QByteArray display() const;

private:
    QTemporaryDir m_folder; // sockets and configuration
    std::optional<Program> m_server;
};
