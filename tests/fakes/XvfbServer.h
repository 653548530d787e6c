// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>

/// An X server without a screen, on a display number of its own; ends with this object, or with
/// the test.
class XvfbServer
{
public:
    XvfbServer();
    ~XvfbServer();

    /// Waits until it answers. Once started, it comes back under the same number.
    bool start();
    void stop();
    /// Lets it hang, as a stopped process does, and go on.
    void freeze();
    void thaw();

    /// Such as ":12"; empty before the first start.
    QByteArray display() const { return m_display; }

private:
    QProcess m_process;
    QByteArray m_display;
};
