// SPDX-License-Identifier: MIT
#include "settings/GeneralSettingsTab.h"

#include "Preferences.h"
#include "settings/PreferenceControls.h"

#include <QCheckBox>
#include <QVBoxLayout>

GeneralSettingsTab::GeneralSettingsTab(Preferences &preferences,
                                       const std::function<void(bool)> &setLaunchAtLogin,
                                       QWidget *parent)
    : QWidget(parent)
{
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(16, 16, 16, 16);
    column->setSpacing(10);
    column->addWidget(
        preferenceToggle(preferences, preferenceKeys::showInDock, false, tr("Show in Dock")));
    column->addWidget(preferenceToggle(preferences, preferenceKeys::launchAtLogin, true,
                                       tr("Launch at Login"), setLaunchAtLogin));
    column->addWidget(preferenceToggle(preferences, preferenceKeys::checkForUpdates, true,
                                       tr("Check for Updates Automatically")));
    column->addStretch();
}
