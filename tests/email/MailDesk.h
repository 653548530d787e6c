// SPDX-License-Identifier: MIT
#pragma once

#include "AppInfo.h"
#include "EmailService.h"
#include "FakeClock.h"
#include "FakeHttpClient.h"
#include "FakeSecretStore.h"
#include "LocalMLService.h"
#include "ModelContainer.h"
#include "ModelContext.h"
#include "ResendKeyService.h"
#include "SummaryService.h"
#include "WebContentExtractor.h"

#include <QTemporaryDir>
#include <QThreadPool>

/// What it takes to send mail: a real store and real services over a keyring, a web and a clock of
/// the test's own.
struct MailDesk {
    /// Without `api` mail goes through `web`, as the fetching of pages does.
    explicit MailDesk(HttpClient *api = nullptr,
                      const QByteArray &address = "https://mail.example/v1/");

    ModelContext &context() { return container->mainContext(); }
    /// A stored link, one second younger than the one before it.
    CapturedLink addLink(const QString &url, const std::optional<QString> &summary = QString());
    QList<CapturedLink> visible();
    /// Sends and lets virtual time pass until the outcome is there; absent when there is none.
    std::optional<SendResult> send(const QList<CapturedLink> &links, const QString &to,
                                   const std::optional<QByteArray> &occasion = std::nullopt);

    static const QString key;
    QTemporaryDir folder;
    FakeClock clock;
    QThreadPool pool;
    FakeHttpClient web;
    FakeSecretStore secrets;
    std::unique_ptr<ModelContainer> container;
    AppInfo info;
    LocalMLService model;
    WebContentExtractor extractor;
    std::unique_ptr<SummaryService> summaries;
    ResendKeyService keys;
    std::unique_ptr<EmailService> service;
};
