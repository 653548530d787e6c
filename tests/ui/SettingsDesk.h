// SPDX-License-Identifier: MIT
#pragma once

#include "EmailScheduler.h"
#include "ExportService.h"
#include "FakeSaveDialog.h"
#include "FakeUrlOpener.h"
#include "MailDesk.h"
#include "ManualSend.h"
#include "Preferences.h"
#include "UpdaterManager.h"
#include "settings/EmailTabContent.h"
#include "settings/SettingsDependencies.h"

#include <QFile>

/// Everything the settings work with, on a fresh installation.
struct SettingsDesk : MailDesk {
    Preferences preferences{folder.filePath(QStringLiteral("settings.ini"))};
    ManualSend manualSend{{*service, context(), preferences}};
    EmailScheduler scheduler{{*service, keys, preferences, clock}};
    FakeSaveDialog dialog;
    ExportService exports{{context(), dialog, [](QList<LinkId>) -> Task<> { co_return; }, clock,
                           QStringLiteral("en_US")}};
    UpdaterManager updates{preferences};
    FakeUrlOpener browser;
    AppInfo pages{QString()};
    QList<bool> logins;
    SettingsDependencies all{context(),
                             preferences,
                             keys,
                             manualSend,
                             scheduler,
                             exports,
                             updates,
                             browser,
                             pages,
                             clock,
                             [this](bool on) { logins.append(on); }};
    EmailTabContent::Dependencies email{context(),  preferences, keys,
                                        manualSend, scheduler,   {pages, browser}};

    QString written() const
    {
        QFile file(folder.filePath(QStringLiteral("settings.ini")));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
};
