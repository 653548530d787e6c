// SPDX-License-Identifier: MIT
#pragma once

/// What looks for new versions of the program. One exists from the end of the launch on. Main
/// thread only.
class UpdateController
{
public:
    virtual ~UpdateController() = default;

    virtual void setAutomaticallyChecksForUpdates(bool checks) = 0;
    virtual void setAutomaticallyDownloadsUpdates(bool downloads) = 0;
    /// Says something only when there is a new version.
    virtual void checkForUpdatesInBackground() = 0;
    /// The user asked: shows what comes of it, whatever that is.
    virtual void checkForUpdates() = 0;
};
