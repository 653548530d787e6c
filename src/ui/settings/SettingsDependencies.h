// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

class AppInfo;
class Clock;
class EmailScheduler;
class ExportService;
class ManualSend;
class ModelContext;
class Preferences;
class ResendKeyService;
class UpdaterManager;
class UrlOpener;

/// What the settings screens work with; all of it outlives them.
struct SettingsDependencies {
    ModelContext &modelContext;
    Preferences &preferences;
    ResendKeyService &keys;
    ManualSend &manualSend;
    EmailScheduler &scheduler;
    ExportService &exports;
    UpdaterManager &updates;
    UrlOpener &urlOpener;
    const AppInfo &info;
    Clock &clock;
    /// Makes the program start with the session, or not.
    std::function<void(bool)> setLaunchAtLogin;
};
