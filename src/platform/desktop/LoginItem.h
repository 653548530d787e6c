// SPDX-License-Identifier: MIT
#pragma once

#include "AtomicFile.h"

#include <QString>

/// The desktop's list of programs to start with the session, as far as this program is concerned:
/// its file in the autostart folder, which is written and removed but never read. Main thread only.
class LoginItem
{
public:
    /// `program` is the absolute path of the program; `folder` need not exist yet.
    explicit LoginItem(QString program, const QString &folder = autostartFolder());
    /// `$XDG_CONFIG_HOME/autostart`
    static QString autostartFolder();

    /// For diagnosis alone.
    bool isRegistered() const;
    /// Starts the program with the session from now on, in the background, or no longer. A failure
    /// is logged.
    void setLaunchAtLogin(bool launches);

private:
    Expected<void, FileError> registerProgram();
    Expected<void, FileError> unregisterProgram();

    QString m_program;
    QString m_path;
};

/// `argument` as one argument of the `Exec` key of a desktop entry.
QString quotedForExec(const QString &argument);
