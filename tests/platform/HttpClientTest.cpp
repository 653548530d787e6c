// SPDX-License-Identifier: MIT
#include "CurlHttpClient.h"
#include "FakeHttpClient.h"
#include "LoopbackServer.h"
#include "Waiting.h"

#include <QTcpSocket>
#include <QTest>
#include <QTimer>

#include <arpa/inet.h>
#include <array>
#include <netinet/in.h>
#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Kind = HttpError::Kind;
using Failure = std::optional<Kind>;

Q_DECLARE_METATYPE(LoopbackServer::Answer)
Q_DECLARE_METATYPE(Failure)

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

LoopbackServer::Answer redirect(const QByteArray &to)
{
    return LoopbackServer::reply(302, "elsewhere", "Location: " + to + "\r\n");
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

HttpRequest get(const QByteArray &url)
{
    HttpRequest request;
    request.url = url;
    request.headers = {{"User-Agent", "tester"}};
    request.inactivityLimit = 400ms;
    request.totalLimit = 1500ms;
    request.bodyLimit = mebibyte;
    request.wireLimit = 4 * mebibyte;
    return request;
}

HttpRequest post(const QByteArray &url)
{
    HttpRequest request = get(url);
    request.method = HttpRequest::Method::post;
    request.headers = {};
    request.body = "{}";
    return request;
}

HttpReply exchange(HttpClient &client, const HttpRequest &request)
{
    auto reply = waitFor(client.send(request));
    return reply ? *reply : Unexpected{HttpError{Kind::broken, u"the test waited in vain"_s}};
}

Failure failureOf(const HttpReply &reply)
{
    return reply ? Failure() : Failure(reply.error().kind);
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

/// In these tests the second loopback address plays the public internet.
bool isPublicHere(const sockaddr &address)
{
    const auto &ipv4 = reinterpret_cast<const sockaddr_in &>(address);
    return ipv4.sin_addr.s_addr == inet_addr("127.0.0.2");
}

} // namespace

class HttpClientTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void judgesAddresses_data();
    void judgesAddresses();
    void getsWithinItsLimits_data();
    void getsWithinItsLimits();
    void followsTwentyRedirects_data();
    void followsTwentyRedirects();
    void staysWithinTheUsersNetworkOnlyFromThere_data();
    void staysWithinTheUsersNetworkOnlyFromThere();
    void remembersThatItWasOutside();
    void trustsOnlyKnownCertificates();
    void waitsForAHandshakeWithinItsLimits();
    void neverGoesFromSecureToPlain();
    void postsOnce_data();
    void postsOnce();
    void sendsWhatItIsToldTo();
    void refusesHeadersThatBeginOthers();
    void runsFourGetsAtOnce();
    void countsNoTimeInTheQueue();
    void endsWithItsScopeAtEachStage();
    void endsFromWithinAnAnswer();
    void neverAnswersWithinTheCall();
};

void HttpClientTest::judgesAddresses_data()
{
    QTest::addColumn<bool>("isPublic");
    for (const char *const address :
         {"127.0.0.1", "10.1.2.3", "172.31.0.1", "192.168.1.1", "169.254.1.1", "100.64.0.1",
          "0.0.0.0", "224.0.0.1", "255.255.255.255", "::1", "::", "fe80::1", "fd00::1", "ff02::1",
          "::ffff:192.168.1.1", "64:ff9b::10.0.0.1"})
        QTest::newRow(address) << false;
    for (const char *const address :
         {"1.1.1.1", "172.32.0.1", "100.128.0.1", "2606:4700::1111", "::ffff:1.1.1.1"})
        QTest::newRow(address) << true;
}

void HttpClientTest::judgesAddresses()
{
    QFETCH(const bool, isPublic);
    sockaddr_in ipv4 = {};
    sockaddr_in6 ipv6 = {};
    ipv4.sin_family = AF_INET;
    ipv6.sin6_family = AF_INET6;
    const bool isIpv4 = inet_pton(AF_INET, QTest::currentDataTag(), &ipv4.sin_addr) == 1;
    if (!isIpv4)
        QCOMPARE(inet_pton(AF_INET6, QTest::currentDataTag(), &ipv6.sin6_addr), 1);
    QCOMPARE(isPublicAddress(isIpv4 ? reinterpret_cast<const sockaddr &>(ipv4)
                                    : reinterpret_cast<const sockaddr &>(ipv6)),
             isPublic);
}

void HttpClientTest::getsWithinItsLimits_data()
{
    QTest::addColumn<LoopbackServer::Answer>("answer");
    QTest::addColumn<Failure>("failure");
    QTest::addColumn<int>("status");
    QTest::addColumn<qint64>("size");
    QTest::addColumn<bool>("isTruncated");
    const auto answered = [](const char *name, const LoopbackServer::Answer &answer, int status,
                             qint64 size, bool isTruncated = false) {
        QTest::newRow(name) << answer << Failure() << status << size << isTruncated;
    };
    const auto fails = [](const char *name, const LoopbackServer::Answer &answer, Kind kind) {
        QTest::newRow(name) << answer << Failure(kind) << 0 << qint64(0) << false;
    };
    const QByteArray ok = "HTTP/1.1 200 OK\r\n";
    const QByteArray bomb = qCompress(QByteArray(64 * mebibyte, '\0')).mid(4);

    answered("page", LoopbackServer::reply(200, "hello"), 200, 5);
    answered("not found", LoopbackServer::reply(404, "no"), 404, 2);
    answered("compressed",
             LoopbackServer::reply(200, qCompress(QByteArray(9999, 'a')).mid(4),
                                   "Content-Encoding: deflate\r\n"),
             200, 9999);
    answered("compressed by gzip",
             LoopbackServer::reply(200,
                                   QByteArray::fromHex("1f8b08000000000002ffcb48cdc9c907008"
                                                       "6a6103605000000"),
                                   "Content-Encoding: gzip\r\n"),
             200, 5);
    answered("up to the limit", LoopbackServer::reply(200, QByteArray(mebibyte, 'x')), 200,
             mebibyte);
    answered("endless", endless(ok + "\r\n"), 200, mebibyte, true);
    answered("a gigabyte announced", endless(ok + "Content-Length: 1073741824\r\n\r\n"), 200,
             mebibyte, true);
    answered("compressed bomb", LoopbackServer::reply(200, bomb, "Content-Encoding: deflate\r\n"),
             200, mebibyte, true);
    fails(
        "silent", [](QTcpSocket &, const QByteArray &) {}, Kind::timedOut);
    fails("a byte at a time", drip, Kind::timedOut);
    fails("a redirect without end",
          endless(
              "HTTP/1.1 302 Found\r\nLocation: /elsewhere\r\nContent-Length: 99999999999\r\n\r\n"),
          Kind::broken);
    fails("long redirects",
          LoopbackServer::reply(302, QByteArray(mebibyte, 'x'), "Location: /page\r\n"),
          Kind::broken);
    fails("redirect to itself", redirect("/page"), Kind::tooManyRedirects);
    fails("redirect to a file", redirect("file:///etc/passwd"), Kind::refused);
    fails("broken chunks", raw(ok + "Transfer-Encoding: chunked\r\n\r\nZZZ\r\nx\r\n"),
          Kind::broken);
    fails("oversized head", raw(ok + "X: " + QByteArray(2 * mebibyte, 'x') + "\r\n\r\n"),
          Kind::broken);
    fails("other protocol", raw("220 mail.example ESMTP\r\n"), Kind::broken);
    fails("broken compression",
          LoopbackServer::reply(200, "not compressed", "Content-Encoding: gzip\r\n"), Kind::broken);
    fails("half a body", raw(ok + "Content-Length: 100\r\n\r\nhalf"), Kind::broken);
    fails("reset", reset, Kind::broken);
}

void HttpClientTest::getsWithinItsLimits()
{
    QFETCH(const LoopbackServer::Answer, answer);
    QFETCH(const Failure, failure);
    QFETCH(const int, status);
    QFETCH(const qint64, size);
    QFETCH(const bool, isTruncated);
    LoopbackServer server;
    server.on("/page", answer);
    CurlHttpClient client;
    const HttpReply reply = exchange(client, get(server.url("/page")));
    QCOMPARE(failureOf(reply), failure);
    if (!reply) {
        QVERIFY(!reply.error().message.isEmpty());
        return;
    }
    QCOMPARE(reply->status, status);
    QCOMPARE(reply->body.size(), size);
    QCOMPARE(reply->isTruncated, isTruncated);
}

void HttpClientTest::followsTwentyRedirects_data()
{
    QTest::addColumn<int>("redirects");
    QTest::addColumn<Failure>("failure");
    QTest::newRow("twenty") << 20 << Failure();
    QTest::newRow("one more") << 21 << Failure(Kind::tooManyRedirects);
}

void HttpClientTest::followsTwentyRedirects()
{
    QFETCH(const int, redirects);
    QFETCH(const Failure, failure);
    LoopbackServer server;
    for (int left = redirects; left > 0; --left)
        server.on("/" + QByteArray::number(left), redirect("/" + QByteArray::number(left - 1)));
    server.on("/0", LoopbackServer::reply(200, "there"));
    CurlHttpClient client;
    QCOMPARE(failureOf(exchange(client, get(server.url("/" + QByteArray::number(redirects))))),
             failure);
}

void HttpClientTest::staysWithinTheUsersNetworkOnlyFromThere_data()
{
    QTest::addColumn<bool>("fromPublic");
    QTest::addColumn<bool>("toPublic");
    QTest::addColumn<Failure>("failure");
    QTest::newRow("public to private") << true << false << Failure(Kind::refused);
    QTest::newRow("public to public") << true << true << Failure();
    QTest::newRow("private to private") << false << false << Failure();
    QTest::newRow("private to public") << false << true << Failure();
}

void HttpClientTest::staysWithinTheUsersNetworkOnlyFromThere()
{
    QFETCH(const bool, fromPublic);
    QFETCH(const bool, toPublic);
    QFETCH(const Failure, failure);
    const auto address = [](bool isPublic) {
        return QHostAddress(isPublic ? u"127.0.0.2"_s : u"127.0.0.1"_s);
    };
    LoopbackServer first(LoopbackServer::Scheme::http, address(fromPublic));
    LoopbackServer second(LoopbackServer::Scheme::http, address(toPublic));
    first.on("/", redirect(second.url("/")));
    second.on("/", LoopbackServer::reply(200, "inside"));
    CurlHttpClient client(HttpNetwork{isPublicHere, {}});
    // A connection that is still open is judged as a new one is.
    QCOMPARE(failureOf(exchange(client, get(second.url("/")))), Failure());
    QCOMPARE(failureOf(exchange(client, get(first.url("/")))), failure);
    QCOMPARE(second.requests().size(), failure ? 1 : 2);
}

void HttpClientTest::remembersThatItWasOutside()
{
    LoopbackServer inside;
    LoopbackServer outside(LoopbackServer::Scheme::http, QHostAddress(u"127.0.0.2"_s));
    inside.on("/start", redirect(outside.url("/")));
    outside.on("/", redirect(inside.url("/end")));
    CurlHttpClient client(HttpNetwork{isPublicHere, {}});
    QCOMPARE(failureOf(exchange(client, get(inside.url("/start")))), Failure(Kind::refused));
    QCOMPARE(inside.requests().size(), 1);
}

void HttpClientTest::trustsOnlyKnownCertificates()
{
    LoopbackServer server(LoopbackServer::Scheme::https);
    server.on("/", LoopbackServer::reply(200, "secret"));
    CurlHttpClient stranger;
    QCOMPARE(failureOf(exchange(stranger, get(server.url("/")))), Failure(Kind::tls));
    CurlHttpClient friendly(HttpNetwork{isPublicAddress, server.caFile()});
    QCOMPARE(failureOf(exchange(friendly, get(server.url("/")))), Failure());
}

void HttpClientTest::waitsForAHandshakeWithinItsLimits()
{
    QTcpServer server; // takes connections and says nothing
    QVERIFY(server.listen(QHostAddress::LocalHost));
    CurlHttpClient client;
    const QByteArray url = "https://127.0.0.1:" + QByteArray::number(server.serverPort());
    QCOMPARE(failureOf(exchange(client, get(url))), Failure(Kind::timedOut));
}

void HttpClientTest::neverGoesFromSecureToPlain()
{
    LoopbackServer secure(LoopbackServer::Scheme::https);
    LoopbackServer plain;
    plain.on("/up", redirect(secure.url("/down")));
    secure.on("/down", redirect(plain.url("/end")));
    CurlHttpClient client(HttpNetwork{isPublicAddress, secure.caFile()});
    QCOMPARE(failureOf(exchange(client, get(plain.url("/up")))), Failure(Kind::refused));
    QCOMPARE(secure.requests().size(), 1);
    QCOMPARE(plain.requests().size(), 1);
}

void HttpClientTest::postsOnce_data()
{
    QTest::addColumn<LoopbackServer::Answer>("answer");
    QTest::addColumn<Failure>("failure");
    QTest::addColumn<int>("status");
    QTest::newRow("accepted") << LoopbackServer::reply(200, "{}") << Failure() << 200;
    QTest::newRow("redirected") << redirect("/elsewhere") << Failure() << 302;
    QTest::newRow("reset") << LoopbackServer::Answer(reset) << Failure(Kind::broken) << 0;
    QTest::newRow("closed") << raw("") << Failure(Kind::broken) << 0;
    QTest::newRow("endless") << endless("HTTP/1.1 200 OK\r\n\r\n") << Failure() << 200;
}

void HttpClientTest::postsOnce()
{
    QFETCH(const LoopbackServer::Answer, answer);
    QFETCH(const Failure, failure);
    QFETCH(const int, status);
    LoopbackServer server;
    server.on("/emails", LoopbackServer::reply(200, "{}"));
    CurlHttpClient client;
    QVERIFY(exchange(client, post(server.url("/emails")))); // leaves no connection to be used again
    server.on("/emails", answer);
    const HttpReply reply = exchange(client, post(server.url("/emails")));
    QCOMPARE(failureOf(reply), failure);
    QCOMPARE(reply ? reply->status : 0, status);
    QCOMPARE(server.requests().size(), 2);
}

void HttpClientTest::sendsWhatItIsToldTo()
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

void HttpClientTest::refusesHeadersThatBeginOthers()
{
    LoopbackServer server;
    CurlHttpClient client;
    HttpRequest request = get(server.url("/"));
    request.headers = {{"Authorization", "Bearer x\r\nHost: evil.example"}};
    QCOMPARE(failureOf(exchange(client, request)), Failure(Kind::refused));
    QCOMPARE(server.requests().size(), 0);
}

void HttpClientTest::runsFourGetsAtOnce()
{
    LoopbackServer server;
    server.on("/", [](QTcpSocket &socket, const QByteArray &request) {
        QTimer::singleShot(20ms, &socket, [&socket, request] {
            LoopbackServer::reply(200, "x")(socket, request);
        });
    });
    CurlHttpClient client;
    std::array<std::optional<HttpReply>, 10> replies;
    Scope scope;
    for (auto &reply : replies)
        scope.start(keepReply(client, get(server.url("/")), &reply));
    QTRY_VERIFY(scope.isEmpty());
    for (const auto &reply : replies)
        QVERIFY(*reply);
    QCOMPARE(server.mostAtOnce(), 4);
}

void HttpClientTest::countsNoTimeInTheQueue()
{
    LoopbackServer server;
    server.on("/silent", [](QTcpSocket &, const QByteArray &) {});
    server.on("/", LoopbackServer::reply(200, "at once"));
    CurlHttpClient client;
    std::array<std::optional<HttpReply>, 4> silent;
    Scope scope;
    for (auto &reply : silent)
        scope.start(keepReply(client, get(server.url("/silent")), &reply));
    HttpRequest last = get(server.url("/"));
    last.inactivityLimit = last.totalLimit = 300ms; // less than the others keep it waiting
    QCOMPARE(failureOf(exchange(client, last)), Failure());
}

void HttpClientTest::endsWithItsScopeAtEachStage()
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

void HttpClientTest::endsFromWithinAnAnswer()
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

void HttpClientTest::neverAnswersWithinTheCall()
{
    CurlHttpClient real;
    FakeHttpClient fake;
    fake.answerWith([](const HttpRequest &) { return HttpResponse(); });
    for (HttpClient *const client :
         {static_cast<HttpClient *>(&real), static_cast<HttpClient *>(&fake)}) {
        for (const char *const url : {"nonsense:", "http://127.0.0.1:1/", "http://[::bad"}) {
            std::optional<HttpReply> reply;
            Scope scope;
            scope.start(keepReply(*client, get(url), &reply));
            QVERIFY(!reply);
            QTRY_VERIFY(reply.has_value());
        }
    }
}

QTEST_GUILESS_MAIN(HttpClientTest)
#include "HttpClientTest.moc"
