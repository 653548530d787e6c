// SPDX-License-Identifier: MIT
#include "EmailService.h"

#include "CurlHttpClient.h"
#include "DiagnosticLines.h"
#include "LoopbackServer.h"
#include "MailDesk.h"
#include "Rows.h"
#include "Waiting.h"

#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTcpSocket>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Kind = EmailError::Kind;

namespace
{

const QString you = u"you@example.com"_s;

HttpReply answer(int status, const QByteArray &body)
{
    return HttpResponse{status, body, false};
}

QJsonObject messageOf(const HttpRequest &request)
{
    return QJsonDocument::fromJson(request.body).object();
}

QByteArray header(const HttpRequest &request, const QByteArray &name)
{
    for (const HttpHeader &header : request.headers) {
        if (header.name == name)
            return header.value;
    }
    return {};
}

} // namespace

class EmailServiceTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void passesOnTheProvidersAnswer()
    {
        const QString refused = u"Failed to connect to the email service."_s;
        const auto reply = LoopbackServer::reply;
        const auto hangUp = [](QTcpSocket &socket, const QByteArray &) { socket.close(); };
        // The failure, which is empty for what is accepted, and the last error.
        const Rows<LoopbackServer::Answer, QString, QString> rows{
            {"accepted", reply(200, R"({"id":"1"})", {})},
            {"accepted, no id", reply(200, "[]", {})},
            {"created, no body", reply(201, {}, {})},
            {"no content", reply(204, {}, {}), refused},
            {"moved", reply(307, {}, "Location: /v1/emails\r\n"), refused},
            {"refused with a reason", reply(422, R"({"message":"no such domain"})", {}),
             u"Failed to send email: no such domain"_s, u"no such domain"_s},
            {"reason is empty", reply(429, R"({"message":""})", {}), u"Failed to send email: "_s},
            {"reason is no string", reply(422, R"({"message":7})", {}), refused},
            {"array", reply(403, R"(["message"])", {}), refused},
            {"HTML", reply(500, "<h1>Oops</h1>", {}), refused},
            {"half an object", reply(422, "{\"message\":\"no", {}), refused},
            {"no answer", hangUp, u"*"_s},
        };
        for (const auto &[answer, failure, lastError] : rows) {
            LoopbackServer api;
            api.on("/v1/emails", answer);
            CurlHttpClient http;
            MailDesk desk(&http, api.url("/v1/"));
            QSignalSpy busy(desk.service.get(), &EmailService::isSendingChanged);
            const auto result = desk.send({desk.addLink(u"https://a.de"_s)}, you);
            QVERIFY(result);
            const QString words = *result ? QString() : description(result->error());
            if (failure == u"*")
                QVERIFY(result->error().kind == Kind::transport && !words.isEmpty());
            else
                QCOMPARE(words, failure);
            QCOMPARE(desk.service->lastError(), lastError);
            QCOMPARE(busy.count(), 2); // on and off again, whatever the answer
            QCOMPARE(api.requests().size(), 1);
        }
    }

    void leavesTheKeyNowhereButInTheRequest()
    {
        const DiagnosticLines diagnostics;
        MailDesk desk;
        desk.web.answerWith([](const HttpRequest &) { return answer(401, {}); });
        QVERIFY(!*desk.send({desk.addLink(u"https://a.de"_s)}, you));
        desk.secrets.fault = SecretFault::unavailable;
        QVERIFY(*waitFor(desk.keys.saveConfiguration(MailDesk::key, u"me@example.com"_s)));

        QVERIFY(!diagnostics.lines().isEmpty());
        QVERIFY(!diagnostics.lines().join(u'\n').contains(MailDesk::key));
        int files = 0;
        for (QDirIterator it(desk.temporary.path(), QDir::Files, QDirIterator::Subdirectories);
             it.hasNext(); ++files) {
            QFile file(it.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            QVERIFY2(!file.readAll().contains(MailDesk::key.toUtf8()), qPrintable(file.fileName()));
        }
        QVERIFY(files > 1);
    }

    void postsTheDigest()
    {
        MailDesk desk;
        desk.web.answerWith([](const HttpRequest &) { return answer(200, R"({"id":"mail-1"})"); });
        const DiagnosticLines diagnostics;
        const CapturedLink link = desk.addLink(u"https://a.de"_s, u"\"So\" <\u00e4>\0\1"_s);
        QVERIFY(*desk.send({link}, you));

        const HttpRequest request = desk.web.requests().first();
        QCOMPARE(request.url, "https://mail.example/v1/emails");
        QVERIFY(request.method == HttpRequest::Method::post);
        QCOMPARE(header(request, "Authorization"), "Bearer " + MailDesk::key.toUtf8());
        QCOMPARE(header(request, "Content-Type"), "application/json");
        QCOMPARE(header(request, "Idempotency-Key"), QByteArray());
        QVERIFY(request.inactivityLimit == 60s);
        const QJsonObject message = messageOf(request);
        QCOMPARE(message.keys(), (QStringList{u"from"_s, u"html"_s, u"subject"_s, u"to"_s}));
        QCOMPARE(message[u"from"], u"me@example.com"_s);
        QCOMPARE(message[u"to"], QJsonArray{you});
        QCOMPARE(message[u"subject"], u"Your Strandloom Digest – November 14, 2023"_s);
        QVERIFY(message[u"html"].toString().contains(u"&quot;So&quot; &lt;\u00e4&gt;\0\1</div>"_s));
        QCOMPARE(diagnostics.lines(),
                 QStringList{u"Email sent successfully. Message ID: mail-1"_s});
    }

    void failsInItsOrder()
    {
        const Rows<bool, QString, int, bool, Kind> rows{
            {"no key comes first", false, u""_s, 0, false, Kind::notConfigured},
            {"then no recipient", true, u""_s, 0, false, Kind::invalidEmail},
            {"then no links", true, you, 0, false, Kind::noLinks},
            {"then no sender", true, you, 1, false, Kind::notConfigured},
            {"then no API", true, you, 1, true, Kind::requestFailed},
        };
        for (const auto &[hasKey, to, links, hasSender, kind] : rows) {
            MailDesk desk(nullptr, "http://mail.example");
            if (!hasKey)
                desk.secrets.contents.remove(ResendKeyService::apiKeyAccount);
            if (!hasSender)
                desk.secrets.contents.remove(ResendKeyService::emailAccount);
            desk.web.answerWith([](const HttpRequest &) { return answer(404, {}); });
            QSignalSpy busy(desk.service.get(), &EmailService::isSendingChanged);
            const QList<CapturedLink> all(links, desk.addLink(u"https://a.de"_s, std::nullopt));
            const auto result = desk.send(all, to);
            QVERIFY(result && !*result);
            QVERIFY(result->error().kind == kind);
            QCOMPARE(busy.count(), links == 0 ? 0 : 2);
            QCOMPARE(desk.web.requests().size(),
                     links); // the summary is asked for before the sender
        }
    }

    void summarisesWhatHasNoSummary()
    {
        MailDesk desk;
        const CapturedLink done = desk.addLink(u"https://done.de"_s, u""_s);
        const CapturedLink broken = desk.addLink(u"https://broken.de"_s, std::nullopt);
        const CapturedLink open = desk.addLink(u"https://open.de"_s, std::nullopt);
        desk.web.answerWith([](const HttpRequest &request) {
            if (request.url.contains("broken"))
                return answer(500, {});
            return answer(200, "<title>An open page</title>");
        });
        const DiagnosticLines diagnostics;
        QVERIFY(*desk.send({done, broken, open}, you));
        QVERIFY(
            diagnostics.lines().contains(u"Generating summaries for 2 links before email..."_s));
        QCOMPARE(desk.web.requests().size(), 3);
        const QString html = messageOf(desk.web.requests().last())[u"html"].toString();
        QCOMPARE(html.count(u"class=\"link-summary\""), 2); // the empty one and the new one
        QVERIFY(html.contains(desk.context().link(open.id)->summary->toHtmlEscaped()));
    }

    void namesADigestOfAnOccasionOnlyOnce()
    {
        MailDesk desk;
        desk.web.answerWith([](const HttpRequest &) { return answer(200, {}); });
        const CapturedLink link = desk.addLink(u"https://a.de"_s);
        QVERIFY(*desk.send({link}, you, "today"));
        QVERIFY(*desk.send({link}, you, "today"));
        QVERIFY(*desk.send({link}, you, "tomorrow"));
        QVERIFY(*desk.send({link, desk.addLink(u"https://b.de"_s)}, you, "today"));
        QList<QByteArray> names;
        for (const HttpRequest &request : desk.web.requests())
            names.append(header(request, "Idempotency-Key"));
        QCOMPARE(names[0].size(), 71); // "digest-" and a hash
        QCOMPARE(names[0], names[1]);
        QCOMPARE(QSet<QByteArray>(names.begin(), names.end()).size(), 3);
    }

    void asksToUnlockForTheUserOnly()
    {
        MailDesk desk;
        desk.web.answerWith([](const HttpRequest &) { return answer(200, {}); });
        desk.secrets.isLocked = true;
        const CapturedLink link = desk.addLink(u"https://a.de"_s);
        const auto scheduled = desk.send({link}, you, "today");
        QVERIFY(scheduled->error().kind == Kind::notConfigured);
        QCOMPARE(desk.secrets.prompts, 0);
        QVERIFY(*desk.send({link}, you));
        QCOMPARE(desk.secrets.prompts, 1);
    }

    void goesOnWithoutItsCallerButNotWithoutItself()
    {
        MailDesk desk;
        const QList<CapturedLink> links = {desk.addLink(u"https://a.de"_s)};
        {
            Scope screen;
            screen.start(drop(desk.service->sendDigest(links, you)));
            QTRY_COMPARE(desk.web.waiting(), 1);
        }
        QCOMPARE(desk.web.waiting(), 1);
        desk.web.answerNext(answer(200, {}));
        QVERIFY(!desk.service->isSending());

        Scope screen;
        screen.start(drop(desk.service->sendDigest(links, you)));
        QTRY_COMPARE(desk.web.waiting(), 1);
        desk.service.reset();
        QCOMPARE(desk.web.waiting(), 0);
    }

    void trustsOnlySafeApis()
    {
        const Rows<QByteArray, QByteArray> rows{
            {"folder and slash", "https://a.de/v1/", "https://a.de/v1/emails"},
            {"this machine", "http://127.0.0.1:8/", "http://127.0.0.1:8/emails"},
            {"this machine, IPv6", "http://[::1]:8", "http://[::1]:8/emails"},
            {"another machine in the clear", "http://a.de", {}},
            {"looks like this machine", "http://127.0.0.1.a.de", {}},
            {"another scheme", "ftp://127.0.0.1", {}},
            {"no host", "https:///v1", {}},
            {"none"},
        };
        for (const auto &[api, endpoint] : rows) {
            const MailDesk desk(nullptr, api);
            QCOMPARE(resendEndpoint(desk.info).value_or(QByteArray()), endpoint);
        }
    }

private:
    static Task<> drop(Task<SendResult> send) { (void)co_await send; }
};

QTEST_GUILESS_MAIN(EmailServiceTest)
#include "EmailServiceTest.moc"
