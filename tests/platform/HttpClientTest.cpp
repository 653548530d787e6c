// SPDX-License-Identifier: MIT
#include "FakeHttpClient.h"
#include "HttpSteps.h"
#include "Rows.h"

#include <QElapsedTimer>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>

#include <array>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Kind = HttpError::Kind;

namespace
{

constexpr qint64 mebibyte = 1 << 20;

LoopbackServer::Answer raw(const QByteArray &bytes)
{
    return [bytes](QTcpSocket &socket, const QByteArray &) {
        socket.write(bytes);
        socket.disconnectFromHost();
    };
}

LoopbackServer::Answer endless(const QByteArray &head)
{
    return [head](QTcpSocket &socket, const QByteArray &) {
        socket.write(head);
        const auto writeOn = [&socket] { socket.write(QByteArray(64 << 10, 'x')); };
        QObject::connect(&socket, &QTcpSocket::bytesWritten, &socket, [&socket, writeOn] {
            if (socket.bytesToWrite() < mebibyte)
                writeOn();
        });
        writeOn();
    };
}

void drip(QTcpSocket &socket, const QByteArray &)
{
    socket.write("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n");
    auto *const drops = new QTimer(&socket);
    QObject::connect(drops, &QTimer::timeout, &socket, [&socket] { socket.write("x"); });
    drops->start(20ms);
}

void reset(QTcpSocket &socket, const QByteArray &)
{
    socket.abort();
}

HttpRequest post(const QByteArray &url)
{
    HttpRequest request = get(url);
    request.method = HttpRequest::Method::post;
    request.headers = {};
    request.body = "{}";
    return request;
}

Task<> keepReply(HttpClient &client, HttpRequest request, std::optional<HttpReply> *reply)
{
    *reply = co_await client.send(request);
}

/// The first answer ends everybody else, and then the client itself.
Task<> endAll(std::unique_ptr<CurlHttpClient> *client, std::unique_ptr<Scope> *others,
              HttpRequest request, bool *isOver)
{
    const HttpReply reply = co_await (*client)->send(request);
    *isOver = bool(reply);
    others->reset();
    client->reset();
}

} // namespace

class HttpClientTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void getsWithinItsLimits()
    {
        const QByteArray ok = "HTTP/1.1 200 OK\r\n";
        const QByteArray bomb = qCompress(QByteArray(64 * mebibyte, '\0')).mid(4);
        const QByteArray inUnknown = "Content-Encoding: gzip, UTF-8\r\n";
        const Rows<LoopbackServer::Answer, Failure, int, qint64, bool, QString> rows{
            {"page", LoopbackServer::reply(200, "hello"), Failure(), 200, 5},
            {"not found", LoopbackServer::reply(404, "no"), Failure(), 404, 2},
            {"compressed",
             LoopbackServer::reply(200, qCompress(QByteArray(9999, 'a')).mid(4),
                                   "Content-Encoding: deflate\r\n"),
             Failure(), 200, 9999},
            {"unknown encoding", LoopbackServer::reply(200, "hello", inUnknown), Failure(), 200, 5},
            {"known encoding behind an unknown one",
             [inUnknown](QTcpSocket &socket, const QByteArray &request) {
                 const bool isFirst = !request.contains("\r\nCookie:");
                 const auto reply = isFirst
                     ? LoopbackServer::reply(302, "x",
                                             "Location: /page\r\nSet-Cookie: a=b\r\n" + inUnknown)
                     : LoopbackServer::reply(200, qCompress("hello").mid(4),
                                             "Content-Encoding: deflate\r\n");
                 reply(socket, request);
             },
             Failure(), 200, 5},
            {"up to the limit", LoopbackServer::reply(200, QByteArray(mebibyte, 'x')), Failure(),
             200, mebibyte},
            {"endless", endless(ok + "\r\n"), Failure(), 200, mebibyte, true},
            {"compressed bomb", LoopbackServer::reply(200, bomb, "Content-Encoding: deflate\r\n"),
             Failure(), 200, mebibyte, true},
            {"silent", [](QTcpSocket &, const QByteArray &) {}, Kind::timedOut},
            {"a byte at a time", drip, Kind::timedOut},
            {"a redirect without end",
             endless("HTTP/1.1 302 Found\r\nLocation: /elsewhere\r\nContent-Length: "
                     "99999999999\r\n\r\n"),
             Kind::broken},
            {"long redirects",
             LoopbackServer::reply(302, QByteArray(mebibyte, 'x'), "Location: /page\r\n"),
             Kind::broken},
            {"redirect to a file", redirect("file:///etc/passwd"), Kind::refused},
            {"broken chunks", raw(ok + "Transfer-Encoding: chunked\r\n\r\nZZZ\r\nx\r\n"),
             Kind::broken},
            {"oversized header", raw(ok + "X: " + QByteArray(2 * mebibyte, 'x') + "\r\n\r\n"),
             Kind::broken, 0, 0, false, u"The header of the answer is too large."_s},
            {"many headers", raw(ok + QByteArray("X: y\r\n").repeated(mebibyte) + "\r\n"),
             Kind::broken, 0, 0, false, u"Too large"_s},
            {"other protocol", raw("220 mail.example ESMTP\r\n"), Kind::broken},
            {"broken compression",
             LoopbackServer::reply(200, "not compressed", "Content-Encoding: gzip\r\n"),
             Kind::broken},
            {"half a body", raw(ok + "Content-Length: 100\r\n\r\nhalf"), Kind::broken},
            {"reset", reset, Kind::broken},
        };
        for (const auto &[answer, failure, status, size, isTruncated, part] : rows) {
            LoopbackServer server;
            server.on("/page", answer);
            CurlHttpClient client;
            const HttpRequest request = get(server.url("/page"));
            const bool waitsInVain = failure == Failure(Kind::timedOut);
            const HttpReply reply = exchange(client, waitsInVain ? impatient(request) : request);
            QCOMPARE(failureOf(reply), failure);
            QCOMPARE(reply ? reply->status : 0, status);
            QCOMPARE(reply ? reply->body.size() : 0, size);
            QCOMPARE(reply && reply->isTruncated, isTruncated);
            const QString message = reply ? QString() : reply.error().message;
            QCOMPARE(message.isEmpty(), bool(reply));
            QVERIFY2(message.contains(part), qPrintable(message));
        }
    }

    void trustsOnlyKnownCertificates()
    {
        LoopbackServer server(LoopbackServer::Scheme::https);
        server.on("/", LoopbackServer::reply(200, "secret"));
        CurlHttpClient stranger;
        QCOMPARE(failureOf(exchange(stranger, get(server.url("/")))), Failure(Kind::tls));
        CurlHttpClient friendly(HttpNetwork{isPublicAddress, server.caFile()});
        QCOMPARE(failureOf(exchange(friendly, get(server.url("/")))), Failure());
    }

    void waitsForAHandshakeWithinItsLimits()
    {
        QTcpServer server; // takes connections and says nothing
        QVERIFY(server.listen(QHostAddress::LocalHost));
        CurlHttpClient client;
        const QByteArray url = "https://127.0.0.1:" + QByteArray::number(server.serverPort());
        QCOMPARE(failureOf(exchange(client, impatient(get(url)))), Failure(Kind::timedOut));
    }

    void postsOnce()
    {
        const Rows<LoopbackServer::Answer, Failure, int> rows{
            {"accepted", LoopbackServer::reply(200, "{}"), Failure(), 200},
            {"redirected", redirect("/elsewhere"), Failure(), 302},
            {"reset", LoopbackServer::Answer(reset), Failure(Kind::broken), 0},
            {"closed", raw(""), Failure(Kind::broken), 0},
            {"endless", endless("HTTP/1.1 200 OK\r\n\r\n"), Failure(), 200},
        };
        for (const auto &[answer, failure, status] : rows) {
            LoopbackServer server;
            server.on("/emails", LoopbackServer::reply(200, "{}"));
            CurlHttpClient client;
            QVERIFY(exchange(client,
                             post(server.url("/emails")))); // leaves no connection to be used again
            QVERIFY(exchange(client, get(server.url("/emails")))); // leaves one
            server.on("/emails", answer);
            const HttpReply reply = exchange(client, post(server.url("/emails")));
            QCOMPARE(failureOf(reply), failure);
            QCOMPARE(reply ? reply->status : 0, status);
            QCOMPARE(server.requests().size(), 3);
            QCOMPARE(server.connections(), 3);
        }
    }

    void sendsWhatItIsToldTo()
    {
        LoopbackServer server;
        server.on("/", LoopbackServer::reply(200, "", "Set-Cookie: a=b; Path=/\r\n"));
        CurlHttpClient client;
        for (int i = 0; i < 2; ++i)
            QVERIFY(exchange(client, get(server.url("/"))));
        QVERIFY(exchange(client, post(server.url("/"))));
        const QByteArray second = server.requests().at(1);
        QVERIFY(second.contains("\r\nUser-Agent: tester\r\n"));
        for (const char *const unwanted : {"\r\nCookie:", "\r\nReferer:", "\r\nAccept-Language:"})
            QVERIFY2(!second.contains(unwanted), unwanted);
        const QByteArray posted = server.requests().at(2);
        QVERIFY(posted.startsWith("POST / HTTP/1.1\r\n"));
        QVERIFY(posted.contains("\r\nUser-Agent: strandloom/" STRANDLOOM_VERSION "\r\n"));
        QVERIFY(!posted.contains("Expect:"));
    }

    void refusesWhatWouldAskForMoreThanIsWritten()
    {
        LoopbackServer server;
        CurlHttpClient client;
        HttpRequest request = get(server.url("/"));
        request.headers = {{"Authorization", "Bearer x\r\nHost: evil.example"}};
        QCOMPARE(failureOf(exchange(client, request)), Failure(Kind::refused));
        const QByteArray withoutHost = server.url("/").replace("//", "///");
        QCOMPARE(failureOf(exchange(client, get(withoutHost))), Failure(Kind::badUrl));
        QCOMPARE(server.requests().size(), 0);
    }

    /// Everybody else gets an answer at once, however many slow hosts there are.
    void givesASlowHostFourPlaces()
    {
        std::vector<std::unique_ptr<LoopbackServer>> hosts;
        CurlHttpClient client;
        std::array<std::optional<HttpReply>, 32> replies;
        Scope scope;
        for (std::size_t i = 0; i < replies.size(); ++i) {
            if (i % 8 == 0) {
                const QHostAddress address(u"127.0.0.%1"_s.arg(2 + i / 8));
                hosts.push_back(
                    std::make_unique<LoopbackServer>(LoopbackServer::Scheme::http, address));
                hosts.back()->on("/", drip);
            }
            HttpRequest slow = get(hosts.back()->url("/"));
            slow.inactivityLimit = slow.totalLimit = 1min;
            scope.start(keepReply(client, slow, &replies[i]));
        }
        LoopbackServer good;
        good.on("/", LoopbackServer::reply(200, "x"));
        QCOMPARE(failureOf(exchange(client, get(good.url("/")))), Failure());
        for (const auto &host : hosts)
            QTRY_COMPARE(host->mostAtOnce(), 4);
        for (const auto &reply : replies)
            QVERIFY(!reply);
    }

    /// A long mail may take its time while the server takes it.
    void countsWhatIsSentAsActivity()
    {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        connect(&server, &QTcpServer::newConnection, &server, [&server] {
            QTcpSocket *const socket = server.nextPendingConnection();
            socket->setReadBufferSize(128 << 10);
            auto *const reading = new QTimer(socket);
            connect(reading, &QTimer::timeout, socket, [socket, left = 24 * mebibyte]() mutable {
                left -= socket->readAll().size();
                if (left <= 0)
                    socket->write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
            });
            reading->start(8ms);
        });
        HttpRequest request = post("http://127.0.0.1:" + QByteArray::number(server.serverPort()));
        request.body = QByteArray(24 * mebibyte, 'x');
        request.totalLimit = request.inactivityLimit = 1s; // a busy machine is no dead server
        CurlHttpClient client;
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(failureOf(exchange(client, request)), Failure());
        QVERIFY(std::chrono::milliseconds(timer.elapsed()) > request.inactivityLimit);
    }

    void countsNoTimeInTheQueue()
    {
        LoopbackServer server;
        server.on("/silent", [](QTcpSocket &, const QByteArray &) {});
        server.on("/", LoopbackServer::reply(200, "at once"));
        CurlHttpClient client;
        std::array<std::optional<HttpReply>, 4> silent;
        Scope scope;
        HttpRequest first = get(server.url("/silent"));
        first.totalLimit = 1s;
        for (auto &reply : silent)
            scope.start(keepReply(client, first, &reply));
        HttpRequest last = get(server.url("/"));
        last.inactivityLimit = last.totalLimit = 300ms; // less than the others keep it waiting
        QCOMPARE(failureOf(exchange(client, last)), Failure());
    }

    void endsWithItsScopeAtEachStage()
    {
        LoopbackServer server;
        server.on("/silent", [](QTcpSocket &, const QByteArray &) {});
        server.on("/drip", drip);
        server.on("/", LoopbackServer::reply(200, "still here"));
        CurlHttpClient client;
        for (const char *const path : {"/silent", "/drip"}) {
            for (int turns = 0; turns < 8; ++turns) {
                std::array<std::optional<HttpReply>, 6> replies; // four run, two wait
                Scope scope;
                for (auto &reply : replies)
                    scope.start(keepReply(client, get(server.url(path)), &reply));
                for (int turn = 0; turn < turns; ++turn)
                    QCoreApplication::processEvents();
            }
        }
        QVERIFY(exchange(client, get(server.url("/"))));
    }

    void endsFromWithinAnAnswer()
    {
        LoopbackServer server;
        server.on("/", LoopbackServer::reply(200, "x"));
        auto client = std::make_unique<CurlHttpClient>();
        auto others = std::make_unique<Scope>();
        std::array<std::optional<HttpReply>, 3> replies;
        bool isOver = false;
        Scope scope;
        scope.start(endAll(&client, &others, get(server.url("/")), &isOver));
        for (auto &reply : replies)
            others->start(keepReply(*client, get(server.url("/")), &reply));
        QTRY_VERIFY(isOver);
        QVERIFY(scope.isEmpty());
    }

    void neverAnswersWithinTheCall()
    {
        CurlHttpClient real;
        FakeHttpClient fake;
        fake.answerWith([](const HttpRequest &) { return HttpResponse(); });
        for (HttpClient *const client :
             {static_cast<HttpClient *>(&real), static_cast<HttpClient *>(&fake)}) {
            for (const char *const url :
                 {"nonsense:", "http://127.0.0.1:1/", "http://[::bad", "http:///127.0.0.1/x"}) {
                std::optional<HttpReply> reply;
                Scope scope;
                scope.start(keepReply(*client, get(url), &reply));
                QVERIFY(!reply);
                QTRY_VERIFY(reply.has_value());
            }
        }
    }
};

QTEST_GUILESS_MAIN(HttpClientTest)
#include "HttpClientTest.moc"
