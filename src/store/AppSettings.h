// SPDX-License-Identifier: MIT
#pragma once

#include "Clock.h"

#include <QString>
#include <QUuid>

#include <optional>

/// Settings as a record. The store file has its table so that files stay compatible; no record is
/// ever made, the settings themselves are preferences.
struct AppSettings {
    QUuid id;
    bool showInDock = false;
    bool launchAtLogin = false;
    bool checkForUpdates = false;
    bool emailDigestEnabled = false;
    std::optional<QString> emailAddress;
    std::optional<Instant> emailSendTime;
    int autoPruneDays = 0;
};
