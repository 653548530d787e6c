// SPDX-License-Identifier: MIT
#pragma once

#include "UpdateController.h"

/// Where the system's packages bring the updates: there is nothing to look for.
class SystemPackages final : public UpdateController
{
public:
    void setAutomaticallyChecksForUpdates(bool) override {}
    void setAutomaticallyDownloadsUpdates(bool) override {}
    void checkForUpdatesInBackground() override {}
    void checkForUpdates() override
    {
        Q_EMIT statusChanged({UpdateStatus::Kind::fromSystemPackages});
    }
};
