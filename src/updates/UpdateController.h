// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QString>

/// What a check for updates has come to.
struct UpdateStatus {
    enum class Kind {
        checking,
        upToDate,
        newVersion,
        fromSystemPackages, ///< updates are not the program's own business
        failed,
    };
    Kind kind;
    QString version = {}; ///< with `newVersion`
    QString releasePage = {}; ///< with `newVersion`
    QString notes = {}; ///< with `newVersion`; plain text, the beginning; may be empty
    QString reason = {}; ///< with `failed`: a sentence
};

/// What looks for new versions of the program. One exists from the end of the launch on. Main
/// thread only.
class UpdateController : public QObject
{
    Q_OBJECT
public:
    virtual void setAutomaticallyChecksForUpdates(bool checks) = 0;
    virtual void setAutomaticallyDownloadsUpdates(bool downloads) = 0;
    /// Says something only when there is a new version.
    virtual void checkForUpdatesInBackground() = 0;
    /// The user asked: shows what comes of it, whatever that is.
    virtual void checkForUpdates() = 0;

Q_SIGNALS:
    /// Something the user is to see.
    void statusChanged(const UpdateStatus &status);
};
