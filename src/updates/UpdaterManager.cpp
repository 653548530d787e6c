// SPDX-License-Identifier: MIT
#include "UpdaterManager.h"

#include "DebugLog.h"
#include "Preferences.h"
#include "UpdateController.h"

using namespace Qt::StringLiterals;

UpdaterManager::UpdaterManager(Preferences &preferences, QObject *parent)
    : QObject(parent)
    , m_preferences(preferences)
    , m_autoInstallUpdates(preferences.boolean(preferenceKeys::autoInstallUpdates).value_or(false))
{
}

void UpdaterManager::setAutoInstallUpdates(bool automatic)
{
    m_autoInstallUpdates = automatic;
    m_preferences.set(preferenceKeys::autoInstallUpdates, automatic);
    applySwitches();
    debugLog(u"Auto-install updates set to: "_s + (automatic ? u"true"_s : u"false"_s));
    Q_EMIT autoInstallUpdatesChanged();
}

void UpdaterManager::start(UpdateController &controller)
{
    m_updaterController = &controller;
    applySwitches();
    if (m_autoInstallUpdates)
        controller.checkForUpdatesInBackground();
}

void UpdaterManager::checkForUpdates()
{
    if (m_updaterController)
        m_updaterController->checkForUpdates();
}

void UpdaterManager::applySwitches()
{
    if (!m_updaterController)
        return;
    m_updaterController->setAutomaticallyChecksForUpdates(m_autoInstallUpdates);
    m_updaterController->setAutomaticallyDownloadsUpdates(m_autoInstallUpdates);
}
