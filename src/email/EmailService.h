// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"
#include "Expected.h"
#include "HttpClient.h"
#include "async/Scope.h"

#include <QObject>
#include <QProperty>

#include <memory>

class AppInfo;
class Clock;
class ModelContext;
class QThreadPool;
class ResendKeyService;
class SummaryService;
struct DigestContext;

struct EmailError {
    enum class Kind { sendFailed, notConfigured, invalidEmail, noLinks, requestFailed, transport };
    Kind kind;
    QString detail = {}; ///< with `sendFailed` the provider's words, with `transport` the client's

    /// Whether the provider has refused the mail, so that it certainly did not go out.
    bool isAnswer() const { return kind == Kind::sendFailed || kind == Kind::requestFailed; }
};

/// The error as words for people.
QString description(const EmailError &error);

using SendResult = Expected<void, EmailError>;

/// Where mails are posted: the information file's `MailAPI` with `/emails`. Absent when it names
/// none, or one that is neither https nor, for trying things out, http to this machine.
std::optional<QByteArray> resendEndpoint(const AppInfo &info);

/// Mails digests through the provider's API. No queue and no retry: both are the caller's business.
/// Main thread only.
class EmailService : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isSending READ isSending NOTIFY isSendingChanged)
    Q_PROPERTY(QString lastError READ lastError NOTIFY lastErrorChanged)
public:
    /// What the service works with; all but `info` outlives it. Digests are composed on `pool`.
    struct Dependencies {
        HttpClient &http;
        ResendKeyService &keys;
        SummaryService &summaries;
        const ModelContext &modelContext;
        Clock &clock;
        QThreadPool &pool;
        const AppInfo &info;
    };

    explicit EmailService(const Dependencies &dependencies, QObject *parent = nullptr);

    bool isSending() const { return m_isSending; }
    /// What the provider said when it refused the last message; empty otherwise.
    QString lastError() const { return m_lastError; }

    /// Mails the digest of `links` to the address `to`, summarising first where a summary is
    /// missing. Goes on to its end even when this wait is abandoned. `occasion` names what the
    /// scheduler sends for: the provider takes the same digest for the same occasion only once.
    /// Without it the user sends, and may be asked to unlock the keyring.
    Task<SendResult> sendDigest(QList<CapturedLink> links, QString to,
                                std::optional<QByteArray> occasion = std::nullopt);

Q_SIGNALS:
    void isSendingChanged();
    void lastErrorChanged();

private:
    Task<> sendInto(std::shared_ptr<SendResult> result, QList<CapturedLink> links, QString to,
                    std::optional<QByteArray> occasion);
    Task<SendResult> send(QList<CapturedLink> links, QString to,
                          std::optional<QByteArray> occasion);
    Task<QList<CapturedLink>> withSummaries(QList<CapturedLink> links);
    SendResult outcomeOf(const HttpReply &reply);
    DigestContext digestContext() const;

    HttpClient &m_http;
    ResendKeyService &m_keys;
    SummaryService &m_summaries;
    const ModelContext &m_modelContext;
    Clock &m_clock;
    QThreadPool &m_pool;
    const std::optional<QByteArray> m_resendEndpoint;
    const QString m_productSite;
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(EmailService, bool, m_isSending, false,
                                         &EmailService::isSendingChanged)
    Q_OBJECT_BINDABLE_PROPERTY(EmailService, QString, m_lastError, &EmailService::lastErrorChanged)
    Scope m_tasks;
};
