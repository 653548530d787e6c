// SPDX-License-Identifier: MIT
#pragma once

#include "AppInfo.h"
#include "Desk.h"
#include "EmailService.h"
#include "LocalMLService.h"
#include "ResendKeyService.h"
#include "SummaryService.h"
#include "WebContentExtractor.h"

/// What it takes to send mail: real services on the desk.
struct MailDesk : Desk {
    /// Without `api` mail goes through `web`, as the fetching of pages does.
    explicit MailDesk(HttpClient *api = nullptr,
                      const QByteArray &address = "https://mail.example/v1/");

    /// A stored link, one second younger than the one before it.
    CapturedLink addLink(const QString &url, const std::optional<QString> &summary = QString());
    /// Sends and lets virtual time pass until the outcome is there; absent when there is none.
    std::optional<SendResult> send(const QList<CapturedLink> &links, const QString &to,
                                   const std::optional<QByteArray> &occasion = std::nullopt);

    static const QString key;
    AppInfo info;
    LocalMLService mlService{info, clock};
    WebContentExtractor extractor{web, pages, clock};
    SummaryService summaries{context(), mlService, extractor, clock};
    ResendKeyService keys;
    std::unique_ptr<EmailService> service;
};
