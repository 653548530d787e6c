// SPDX-License-Identifier: MIT
#pragma once

#include "Program.h"

#include <QTemporaryDir>

#include <csignal>
#include <optional>

/// A D-Bus session of the test's own, in which a real keyring daemon can be started. The session
/// is this process's while it lives.
class KeyringSession
{
public:
    KeyringSession();
    ~KeyringSession();

    /// Without a secret service. Whether the bus answers.
    bool startBus();
    void stopBus();
    /// Waits until the daemon answers. Once unlocked, the keyring exists and can be locked.
    bool startUnlocked() { return startDaemon({QStringLiteral("--unlock")}, "password"); }
    bool startLocked() { return startDaemon({}, {}); }
    /// As the user does at another program's prompt.
    bool unlock();
    void killDaemon();
    /// Lets the daemon hang, as a stopped process does, and go on.
    void freezeDaemon() const { m_daemon->signal(SIGSTOP); }
    void thawDaemon() const { m_daemon->signal(SIGCONT); }

    QString address() const { return m_address; }
    /// Everything the daemon and its bus write.
    QString folder() const { return m_folder.path(); }

private:
    Program::Variables variables() const;
    bool startDaemon(const QStringList &options, const QByteArray &password);
    bool isDaemonThere() const;

    QTemporaryDir m_folder;
    QString m_address;
    std::optional<Program> m_bus;
    std::optional<Program> m_daemon;
};
