// SPDX-License-Identifier: MIT
#include "CurlHttpClient.h"
#include "DiagnosticLines.h"
#include "MailApiDouble.h"
#include "MailDesk.h"
#include "Waiting.h"

#include <QDirIterator>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Manner = MailApiDouble::Manner;

namespace
{

/// The real client with less patience, so that silence need not be waited out for a minute.
class ImpatientClient final : public HttpClient
{
public:
    Task<HttpReply> send(HttpRequest request) override
    {
        request.inactivityLimit = 300ms;
        HttpReply reply = co_await m_client.send(request);
        co_return reply;
    }

private:
    CurlHttpClient m_client;
};

QByteArray response(const QByteArray &status, const QByteArray &body,
                    const QByteArray &header = "Content-Type: application/json")
{
    return "HTTP/1.1 " + status + "\r\n" + header
        + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

} // namespace

/// The real client against a provider that has every fault.
class EmailFaultsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void sendsOneRequestWhateverHappens_data()
    {
        QTest::addColumn<Manner>("manner");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("failure"); // empty: accepted, "*": the client's own words
        const auto row = [](const char *name, const QByteArray &bytes, const QString &failure,
                            Manner manner = Manner::answer) {
            QTest::newRow(name) << manner << bytes << failure;
        };
        const QString failed = u"Failed to connect to the email service."_s;
        const QString words = u"*"_s;
        row("200", response("200 OK", "{\"id\":\"1\"}"), {});
        row("200, no body", response("200 OK", {}), {});
        row("201, no body", response("201 Created", {}), {});
        row("204", "HTTP/1.1 204 No Content\r\n\r\n", failed);
        row("302", response("302 Found", {}, "Location: /elsewhere"), failed);
        row("307", response("307 Temporary Redirect", {}, "Location: /elsewhere"), failed);
        row("401", response("401 Unauthorized", "{\"message\":\"bad key\"}"),
            u"Failed to send email: bad key"_s);
        row("403, array", response("403 Forbidden", "[\"message\"]"), failed);
        row("422", response("422 Unprocessable", "{\"message\":\"no domain\"}"),
            u"Failed to send email: no domain"_s);
        row("422, no string", response("422 Unprocessable", "{\"message\":{}}"), failed);
        row("429", response("429 Too Many Requests", {}, "Retry-After: 1"), failed);
        row("500, HTML", response("500 Error", "<h1>Oops</h1>", "Content-Type: text/html"), failed);
        row("body cut off", "HTTP/1.1 422 No\r\nContent-Length: 99\r\n\r\n{\"mess", words);
        row("no HTTP", "220 mail.example ESMTP\r\n", words);
        row("closed without a word", {}, words);
        row("reset after the request", {}, words, Manner::reset);
        row("reset before the request", {}, words, Manner::resetUnread);
        row("silence", {}, words, Manner::silence);
        row("accepted with a gigabyte", "HTTP/1.1 200 OK\r\n\r\n", {}, Manner::flood);
        row("refused with a gigabyte", "HTTP/1.1 500 No\r\n\r\n", failed, Manner::flood);
    }
    void sendsOneRequestWhateverHappens()
    {
        QFETCH(Manner, manner);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, failure);
        MailApiDouble api(manner, bytes);
        ImpatientClient http;
        MailDesk desk(&http, api.address());
        const auto result = desk.send({desk.addLink(u"https://a.de"_s)}, u"you@b.de"_s);
        QVERIFY(result);
        QVERIFY(!desk.service->isSending());
        const QString words = *result ? QString() : description(result->error());
        if (failure == u"*")
            QVERIFY(result->error().kind == EmailError::Kind::transport && !words.isEmpty());
        else
            QCOMPARE(words, failure);
        QTest::qWait(20); // a second request would be on its way by now
        QCOMPARE(api.connections(), 1);
        QCOMPARE(api.requests().size(), manner == Manner::resetUnread ? 0 : 1);
        QVERIFY(api.flooded() < 64 << 20);
    }

    void saysNothingToAServerWithoutTls()
    {
        MailApiDouble api(Manner::answerUnread, response("200 OK", {}));
        CurlHttpClient http;
        MailDesk desk(&http, "https" + api.address().sliced(4));
        const auto result = desk.send({desk.addLink(u"https://a.de"_s)}, u"you@b.de"_s);
        QVERIFY(result && !*result);
        QVERIFY(result->error().kind == EmailError::Kind::transport);
        QCOMPARE(api.connections(), 1);
        QVERIFY(!api.requests().first().contains("re_canary"));
    }

    void leavesTheKeyNowhereButInTheRequest()
    {
        const DiagnosticLines diagnostics;
        MailApiDouble api(Manner::answer, response("401 No", "{\"message\":\"no\"}"));
        CurlHttpClient http;
        MailDesk desk(&http, api.address());
        (void)desk.send({desk.addLink(u"https://a.de"_s)}, u"you@b.de"_s);
        desk.secrets.fault = SecretFault::unavailable;
        QVERIFY(*waitFor(desk.keys.saveConfiguration(MailDesk::key, u"me@example.com"_s)));

        const QByteArray authorization = "Authorization: Bearer " + MailDesk::key.toUtf8();
        QVERIFY(api.requests().first().contains(authorization));
        QVERIFY(!diagnostics.lines().isEmpty());
        QVERIFY(!diagnostics.lines().join(u'\n').contains(MailDesk::key));
        int files = 0;
        for (QDirIterator it(desk.folder.path(), QDir::Files, QDirIterator::Subdirectories);
             it.hasNext(); ++files) {
            QFile file(it.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            QVERIFY2(!file.readAll().contains(MailDesk::key.toUtf8()), qPrintable(file.fileName()));
        }
        QVERIFY(files > 1);
    }
};

QTEST_GUILESS_MAIN(EmailFaultsTest)
#include "EmailFaultsTest.moc"
