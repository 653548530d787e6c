// SPDX-License-Identifier: MIT
#include "settings/GeneralTabContent.h"

#include "Caption.h"
#include "FormWidgets.h"
#include "Preferences.h"
#include "UpdaterManager.h"
#include "settings/PreferenceControls.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QPushButton>

GeneralTabContent::GeneralTabContent(Preferences &preferences, UpdaterManager &updates,
                                     const std::function<void(bool)> &setLaunchAtLogin,
                                     QWidget *parent)
    : QWidget(parent)
{
    auto *const automatic = new QCheckBox(tr("Automatically install updates"));
    automatic->setChecked(updates.autoInstallUpdates());
    connect(automatic, &QCheckBox::toggled, &updates, &UpdaterManager::setAutoInstallUpdates);
    connect(&updates, &UpdaterManager::autoInstallUpdatesChanged, automatic,
            [automatic, &updates] { automatic->setChecked(updates.autoInstallUpdates()); });
    auto *const check = new QPushButton(tr("Check for Updates Now"));
    connect(check, &QPushButton::clicked, &updates, &UpdaterManager::checkForUpdates);

    auto *const column = new QVBoxLayout(this);
    column->setSpacing(10);
    column->addWidget(preferenceToggle(preferences, preferenceKeys::launchAtLogin, false,
                                       tr("Launch at Login"), setLaunchAtLogin));
    column->addWidget(divider());
    column->addWidget(heading(tr("Updates")));
    column->addWidget(automatic);
    column->addWidget(check, 0, Qt::AlignLeft);
    column->addWidget(divider());
    column->addWidget(
        new Caption(tr("Strandloom runs in your menu bar and captures URLs you copy.")));
    column->addStretch();
}
