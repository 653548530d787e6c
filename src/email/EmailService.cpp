// SPDX-License-Identifier: MIT
#include "EmailService.h"

#include "AppInfo.h"
#include "DateText.h"
#include "DebugLog.h"
#include "Digest.h"
#include "ModelContext.h"
#include "ResendKeyService.h"
#include "SummaryService.h"
#include "Utf8.h"
#include "async/OnPool.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QScopeGuard>
#include <QUrl>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Kind = EmailError::Kind;

namespace
{

constexpr int linksPerSlice = 1'000; // about ten milliseconds of the main thread

QByteArray messageBody(const QString &from, const QString &to, const QList<CapturedLink> &links,
                       const DigestContext &context)
{
    const QJsonObject message = {{u"from"_s, from},
                                 {u"to"_s, QJsonArray{to}},
                                 {u"subject"_s, digestSubject(context)},
                                 {u"html"_s, composeDigestHTML(links, context)}};
    return QJsonDocument(message).toJson(QJsonDocument::Compact);
}

QByteArray idempotencyKey(const QByteArray &body, const QByteArray &occasion)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(body);
    hash.addData(occasion);
    return "digest-" + hash.result().toHex();
}

HttpRequest digestRequest(const QByteArray &endpoint, const QString &apiKey)
{
    HttpRequest request;
    request.url = endpoint;
    request.method = HttpRequest::Method::post;
    request.headers = {{"Authorization", "Bearer " + apiKey.toUtf8()},
                       {"Content-Type", "application/json"}};
    request.inactivityLimit = 60s;
    request.totalLimit = 120s;
    request.bodyLimit = 64 << 10; // of an answer of one line
    return request;
}

/// The text under `name` in a JSON object.
std::optional<QString> member(const QByteArray &json, QLatin1StringView name)
{
    const QJsonValue value = readJson(json).object().value(name);
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

QList<LinkId> idsWithoutSummary(const QList<CapturedLink> &links)
{
    QList<LinkId> ids;
    for (const CapturedLink &link : links) {
        if (!link.summary)
            ids.append(link.id);
    }
    return ids;
}

} // namespace

QString description(const EmailError &error)
{
    switch (error.kind) {
    case Kind::sendFailed:
        return EmailService::tr("Failed to send email: ") + error.detail;
    case Kind::notConfigured:
        return EmailService::tr("Email service is not configured.");
    case Kind::invalidEmail:
        return EmailService::tr("Please enter a valid email address.");
    case Kind::noLinks:
        return EmailService::tr("No links to send.");
    case Kind::requestFailed:
        return EmailService::tr("Failed to connect to the email service.");
    case Kind::transport:
        return error.detail;
    }
    Q_UNREACHABLE();
}

std::optional<QByteArray> resendEndpoint(const AppInfo &info)
{
    auto url = info.endpoint(u"MailAPI"_s);
    if (!url)
        return std::nullopt;
    QString path = url->path();
    while (path.endsWith(u'/'))
        path.chop(1);
    url->setPath(path + u"/emails");
    return url->toEncoded();
}

EmailService::EmailService(const Dependencies &dependencies, QObject *parent)
    : QObject(parent)
    , m_http(dependencies.http)
    , m_keys(dependencies.keys)
    , m_summaries(dependencies.summaries)
    , m_modelContext(dependencies.modelContext)
    , m_clock(dependencies.clock)
    , m_pool(dependencies.pool)
    , m_resendEndpoint(::resendEndpoint(dependencies.info))
    , m_productSite(dependencies.info.value(u"ProductSite"_s).value_or(QString()))
{
}

Task<SendResult> EmailService::sendDigest(QList<CapturedLink> links, QString to,
                                          std::optional<QByteArray> occasion)
{
    const auto result = std::make_shared<SendResult>(Unexpected{EmailError{Kind::requestFailed}});
    Task<> sending = sendInto(result, links, to, occasion);
    co_await m_tasks.startAndWait(std::move(sending));
    co_return *result;
}

/// The result is shared, because a send may outlive the wait for it.
Task<> EmailService::sendInto(std::shared_ptr<SendResult> result, QList<CapturedLink> links,
                              QString to, std::optional<QByteArray> occasion)
{
    const SendResult sent = co_await send(links, to, occasion);
    *result = sent;
}

Task<SendResult> EmailService::send(QList<CapturedLink> links, QString to,
                                    std::optional<QByteArray> occasion)
{
    const UnlockPrompt prompt = occasion ? UnlockPrompt::never : UnlockPrompt::allowed;
    const auto apiKey = co_await m_keys.apiKey(prompt);
    if (!apiKey)
        co_return Unexpected{EmailError{Kind::notConfigured}};
    if (to.isEmpty())
        co_return Unexpected{EmailError{Kind::invalidEmail}};
    if (links.isEmpty())
        co_return Unexpected{EmailError{Kind::noLinks}};

    m_isSending = true;
    m_lastError = QString();
    const auto idle = qScopeGuard([this] { m_isSending = false; }); // on every way out below

    const QList<CapturedLink> complete = co_await withSummaries(links);
    const auto from = m_keys.configuredEmail();
    if (!from)
        co_return Unexpected{EmailError{Kind::notConfigured}};
    if (!m_resendEndpoint) {
        debugLog(u"The information file names no mail API"_s);
        co_return Unexpected{EmailError{Kind::requestFailed}};
    }

    HttpRequest request = digestRequest(*m_resendEndpoint, *apiKey);
    const DigestContext context = digestContext();
    OnPool<QByteArray> composing(m_pool, [from = *from, to, complete, context] {
        return messageBody(from, to, complete, context);
    });
    request.body = co_await composing;
    if (occasion)
        request.headers.append({"Idempotency-Key", idempotencyKey(request.body, *occasion)});
    const HttpReply reply = co_await m_http.send(request);
    co_return outcomeOf(reply);
}

/// The links with the summaries they have after a batch. One that was deleted meanwhile stays as it
/// was.
Task<QList<CapturedLink>> EmailService::withSummaries(QList<CapturedLink> links)
{
    const QList<LinkId> missing = idsWithoutSummary(links);
    if (missing.isEmpty())
        co_return links;
    debugLog(u"Generating summaries for %1 links before email..."_s.arg(missing.size()));
    co_await m_summaries.summarizeAll(missing);

    int read = 0;
    for (CapturedLink &link : links) {
        if (link.summary)
            continue;
        link = m_modelContext.link(link.id).value_or(link);
        if (++read % linksPerSlice == 0) {
            Sleep pause(m_clock, 0ms);
            co_await pause;
        }
    }
    co_return links;
}

SendResult EmailService::outcomeOf(const HttpReply &reply)
{
    if (!reply)
        return Unexpected{EmailError{Kind::transport, reply.error().message}};
    if (reply->status == 200 || reply->status == 201) {
        if (const auto id = member(reply->body, QLatin1StringView("id")))
            debugLog(u"Email sent successfully. Message ID: " + *id);
        return {};
    }
    const auto reason = member(reply->body, QLatin1StringView("message"));
    if (!reason)
        return Unexpected{EmailError{Kind::requestFailed}};
    m_lastError = *reason;
    return Unexpected{EmailError{Kind::sendFailed, *reason}};
}

DigestContext EmailService::digestContext() const
{
    return {m_clock.now(), systemLocale(), m_productSite};
}
