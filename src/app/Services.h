// SPDX-License-Identifier: MIT
#pragma once

#include "AppInfo.h"
#include "ClipboardSource.h"
#include "DateText.h"
#include "EmailScheduler.h"
#include "EmailService.h"
#include "ExportService.h"
#include "FileSaveDialog.h"
#include "LazyHttpClient.h"
#include "LocalMLService.h"
#include "LoginItem.h"
#include "ManualSend.h"
#include "Preferences.h"
#include "ResendKeyService.h"
#include "SecretServiceStore.h"
#include "SummaryService.h"
#include "UpdateController.h"
#include "UpdaterManager.h"
#include "UrlOpener.h"
#include "WebContentExtractor.h"

#include <QThreadPool>

#include <memory>

/// Everything that lives as long as the process, in building order; torn down in reverse. One
/// instance each, because the program makes one of these.
struct Services {
    /// Both outlive the services.
    Services(ModelContext &modelContext, Clock &clock);

    ModelContext &modelContext;
    Clock &clock;
    Preferences preferences{Preferences::defaultPath()};
    AppInfo info{AppInfo::defaultPath()};
    QThreadPool pages; ///< one thread, for reading pages
    LazyHttpClient http{pages};
    QThreadPool storeChecks;
    std::unique_ptr<ClipboardSource> clipboard; ///< null until capturing starts
    DesktopUrlOpener urlOpener;
    LocalMLService mlService{info, clock};
    WebContentExtractor extractor{http, pages, clock};
    SummaryService summaries{modelContext, mlService, extractor, clock};
    SecretServiceStore secrets{ResendKeyService::serviceName};
    ResendKeyService keys{secrets};
    EmailService email{{http, keys, summaries, modelContext, clock, pages, info}};
    ManualSend manualSend{{email, modelContext, preferences}};
    EmailScheduler scheduler{{email, keys, preferences, clock}};
    FileSaveDialog saveDialog;
    ExportService exports{
        {modelContext, saveDialog,
         [this](QList<LinkId> ids) { return summaries.summarizeAll(std::move(ids)); }, clock,
         systemLocale()}};
    std::unique_ptr<UpdateController> updateController;
    UpdaterManager updates{preferences};
    LoginItem loginItem;
};
