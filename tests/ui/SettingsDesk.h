// SPDX-License-Identifier: MIT
#pragma once

#include "EmailScheduler.h"
#include "ExportService.h"
#include "MailDesk.h"
#include "ManualSend.h"
#include "UpdaterManager.h"
#include "settings/EmailTabContent.h"
#include "settings/SettingsDependencies.h"

#include <QFile>

/// Everything the settings work with, on a fresh installation.
struct SettingsDesk : MailDesk {
    ManualSend manualSend{{*service, context(), preferences}};
    EmailScheduler scheduler{{*service, keys, preferences, clock}};
    ExportService exports{{context(), dialog, [](QList<LinkId>) -> Task<> { co_return; }, clock,
                           QStringLiteral("en_US")}};
    UpdaterManager updates{preferences};
    AppInfo builtIn{QString()};
    QList<bool> logins;
    SettingsDependencies all{context(),
                             preferences,
                             keys,
                             manualSend,
                             scheduler,
                             exports,
                             updates,
                             browser,
                             builtIn,
                             clock,
                             [this](bool on) { logins.append(on); }};
    EmailTabContent::Dependencies email{context(),  preferences, keys,
                                        manualSend, scheduler,   {builtIn, browser}};

    QString written() const
    {
        QFile file(temporary.filePath(QStringLiteral("settings.ini")));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
};
