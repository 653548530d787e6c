// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>
#include <QTemporaryDir>

/// A real Wayland compositor without a screen, in a folder of its own; ends with this object, or
/// with the test.
class SwayServer
{
public:
    SwayServer();
    ~SwayServer();

    /// Waits until programs can connect. Once started, it comes back under the same address.
    bool start();
    void stop();

    /// For `WAYLAND_DISPLAY`.
    QByteArray display() const;

private:
    QTemporaryDir m_folder; // sockets and configuration
    QProcess m_process;
};
