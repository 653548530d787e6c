// SPDX-License-Identifier: MIT
#include "AddressRules.h"
#include "HttpSteps.h"
#include "ProxyRules.h"

#include <QScopeGuard>
#include <QTest>

#include <arpa/inet.h>
#include <netinet/in.h>

using namespace Qt::StringLiterals;
using Kind = HttpError::Kind;
using Variables = QList<std::pair<QByteArray, QByteArray>>;

namespace
{

/// In these tests the second loopback address plays the public internet.
bool isPublicHere(const sockaddr &address)
{
    const auto &ipv4 = reinterpret_cast<const sockaddr_in &>(address);
    return ipv4.sin_addr.s_addr == inet_addr("127.0.0.2");
}

QHostAddress at(bool isPublic)
{
    return QHostAddress(isPublic ? u"127.0.0.2"_s : u"127.0.0.1"_s);
}

} // namespace

class HttpRedirectsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void cleanup()
    {
        for (const char *const name :
             {"http_proxy", "https_proxy", "all_proxy", "ALL_PROXY", "no_proxy", "NO_PROXY"})
            qunsetenv(name);
    }

    void judgesAddresses_data()
    {
        QTest::addColumn<bool>("isPublic");
        for (const char *const address : {"127.0.0.1",
                                          "10.1.2.3",
                                          "172.31.0.1",
                                          "192.168.1.1",
                                          "169.254.1.1",
                                          "100.64.0.1",
                                          "0.0.0.0",
                                          "224.0.0.1",
                                          "255.255.255.255",
                                          "203.0.113.9",
                                          "::1",
                                          "::",
                                          "fe80::1",
                                          "fd00::1",
                                          "ff02::1",
                                          "::ffff:192.168.1.1",
                                          "::192.168.1.1",
                                          "64:ff9b::10.0.0.1",
                                          "64:ff9b:1::a00:1",
                                          "2002:c0a8:101::1",
                                          "2002:7f00:1::",
                                          "2001:0:4136:e378::1",
                                          "2001:db8::1"})
            QTest::newRow(address) << false;
        for (const char *const address :
             {"1.1.1.1", "172.32.0.1", "100.128.0.1", "2606:4700::1111", "::ffff:1.1.1.1",
              "64:ff9b::1.1.1.1", "2002:101:101::1", "2001:200::1"})
            QTest::newRow(address) << true;
    }
    void judgesAddresses()
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

    void followsTwentyRedirects_data()
    {
        QTest::addColumn<int>("redirects");
        QTest::addColumn<Failure>("failure");
        QTest::newRow("twenty") << 20 << Failure();
        QTest::newRow("one more") << 21 << Failure(Kind::tooManyRedirects);
    }
    void followsTwentyRedirects()
    {
        QFETCH(const int, redirects);
        LoopbackServer server;
        for (int left = redirects; left > 0; --left)
            server.on("/" + QByteArray::number(left), redirect("/" + QByteArray::number(left - 1)));
        server.on("/0", LoopbackServer::reply(200, "there"));
        CurlHttpClient client;
        QTEST(failureOf(exchange(client, get(server.url("/" + QByteArray::number(redirects))))),
              "failure");
    }

    void staysWithinTheUsersNetworkOnlyFromThere_data()
    {
        QTest::addColumn<bool>("fromPublic");
        QTest::addColumn<bool>("toPublic");
        QTest::addColumn<Failure>("failure");
        QTest::newRow("public to private") << true << false << Failure(Kind::refused);
        QTest::newRow("public to public") << true << true << Failure();
        QTest::newRow("private to private") << false << false << Failure();
        QTest::newRow("private to public") << false << true << Failure();
    }
    void staysWithinTheUsersNetworkOnlyFromThere()
    {
        QFETCH(const bool, fromPublic);
        QFETCH(const bool, toPublic);
        QFETCH(const Failure, failure);
        LoopbackServer first(LoopbackServer::Scheme::http, at(fromPublic));
        LoopbackServer second(LoopbackServer::Scheme::http, at(toPublic));
        first.on("/", redirect(second.url("/")));
        second.on("/", LoopbackServer::reply(200, "inside"));
        CurlHttpClient client(HttpNetwork{isPublicHere, {}});
        // A connection that is still open is judged as a new one is.
        QCOMPARE(failureOf(exchange(client, get(second.url("/")))), Failure());
        QCOMPARE(failureOf(exchange(client, get(first.url("/")))), failure);
        QCOMPARE(second.requests().size(), failure ? 1 : 2);
    }

    void remembersThatItWasOutside()
    {
        LoopbackServer inside;
        LoopbackServer outside(LoopbackServer::Scheme::http, at(true));
        inside.on("/start", redirect(outside.url("/")));
        outside.on("/", redirect(inside.url("/end")));
        CurlHttpClient client(HttpNetwork{isPublicHere, {}});
        QCOMPARE(failureOf(exchange(client, get(inside.url("/start")))), Failure(Kind::refused));
        QCOMPARE(inside.requests().size(), 1);
    }

    void judgesWhatGoesPastTheProxy()
    {
        LoopbackServer proxy;
        LoopbackServer inside;
        LoopbackServer outside(LoopbackServer::Scheme::http, at(true));
        outside.on("/in", redirect(inside.url("/")));
        outside.on("/proxied", redirect("http://b.example/"));
        proxy.on("http://a.example/in", redirect(inside.url("/")));
        proxy.on("http://a.example/proxied", redirect("http://b.example/"));
        for (LoopbackServer *const server : {&inside, &proxy})
            server->on(server == &proxy ? "http://b.example/" : "/",
                       LoopbackServer::reply(200, "page"));
        qputenv("http_proxy", proxy.url(""));
        qputenv("no_proxy", "127.0.0.0/8");
        CurlHttpClient client(HttpNetwork{isPublicHere, {}});
        QCOMPARE(failureOf(exchange(client, get(outside.url("/in")))), Failure(Kind::refused));
        QCOMPARE(failureOf(exchange(client, get("http://a.example/in"))), Failure(Kind::refused));
        QCOMPARE(inside.requests().size(), 0);
        QCOMPARE(failureOf(exchange(client, get("http://a.example/proxied"))), Failure());
        QCOMPARE(failureOf(exchange(client, get(outside.url("/proxied")))), Failure());
    }

    void knowsWhatGoesThroughAProxy_data()
    {
        QTest::addColumn<Variables>("variables"); // PROXY stands for its address
        QTest::addColumn<QByteArray>("host");
        QTest::addColumn<bool>("isProxied");
        const auto row = [](const char *noProxy, const QByteArray &host, bool isProxied) {
            QTest::addRow("%s, %s", noProxy, host.constData())
                << Variables{{"http_proxy", "PROXY"}, {"no_proxy", noProxy}} << host << isProxied;
        };
        for (const char *const name : {"http_proxy", "all_proxy", "ALL_PROXY"})
            QTest::newRow(name) << Variables{{"http_proxy", ""}, {name, "PROXY"}}
                                << QByteArray("localhost") << true;
        QTest::newRow("for https")
            << Variables{{"https_proxy", "PROXY"}} << QByteArray("localhost") << false;
        QTest::newRow("NO_PROXY") << Variables{{"http_proxy", "PROXY"}, {"NO_PROXY", "localhost"}}
                                  << QByteArray("localhost") << false;
        row("*", "localhost", false);
        row("*,x", "localhost", true);
        row("x, LOCALHOST", "localhost", false);
        row("x localhost", "localhost", false);
        row(".localhost.", "a.LocalHost", false);
        row("localhost", "alocalhost", true);
        row("localhost,", "localhost.", false);
        row("127.0.0.0/8", "127.0.0.1", false);
        row("127.0.0.0/32", "127.0.0.1", true);
        row("127.0.0.1/0", "127.0.0.1", false);
        row("127.0.0.1", "127.0.0.1", false);
        row("0.0.1", "127.0.0.1", true);
        row("::1", "[::1]", false);
        row("::2", "[::1]", true);
    }
    void knowsWhatGoesThroughAProxy()
    {
        QFETCH(const Variables, variables);
        QFETCH(const QByteArray, host);
        QFETCH(const bool, isProxied);
        LoopbackServer proxy;
        for (const auto &[name, value] : variables)
            qputenv(name, value == "PROXY" ? proxy.url("") : value);
        const QByteArray url = "http://" + host + ":1/";
        CurlHttpClient client;
        (void)exchange(client, get(url));
        QCOMPARE(proxy.requests().size(), isProxied ? 1 : 0);
        QCOMPARE(goesThroughProxy(url), isProxied);
    }

    void neverGoesFromSecureToPlain()
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

    void keepsCookiesForOneExchange()
    {
        LoopbackServer server;
        server.on("/", [](QTcpSocket &socket, const QByteArray &request) {
            const auto answer = request.contains("\r\nCookie: a=b\r\n")
                ? LoopbackServer::reply(200, "page")
                : LoopbackServer::reply(302, "", "Location: /\r\nSet-Cookie: a=b; Path=/\r\n");
            answer(socket, request);
        });
        CurlHttpClient client;
        for (int i = 0; i < 2; ++i)
            QCOMPARE(failureOf(exchange(client, get(server.url("/")))), Failure());
        QCOMPARE(server.requests().size(), 4);
        QVERIFY(!server.requests().at(2).contains("Cookie"));
    }

    void givesTheUserOnlyToTheServerThatAsks()
    {
        const auto asking = [](QTcpSocket &socket, const QByteArray &request) {
            const auto answer = request.contains("\r\nAuthorization: Basic dTpw\r\n")
                ? LoopbackServer::reply(200, "page")
                : LoopbackServer::reply(401, "", "WWW-Authenticate: Basic realm=\"x\"\r\n");
            answer(socket, request);
        };
        LoopbackServer server;
        LoopbackServer other(LoopbackServer::Scheme::http, at(true));
        server.on("/asking", asking);
        server.on("/elsewhere", redirect(other.url("/")));
        other.on("/", asking);
        CurlHttpClient client;
        const auto with = [&](const char *user, const char *path) {
            return get(QByteArray("http://").append(user) + server.url(path).sliced(7));
        };
        QCOMPARE(exchange(client, with("u:p@", "/asking"))->status, 200);
        QVERIFY(!server.requests().first().contains("Authorization"));
        QCOMPARE(exchange(client, with("u:q@", "/asking"))->status, 401);
        QCOMPARE(exchange(client, with("u:p@", "/elsewhere"))->status, 401);
        QVERIFY(!server.requests().last().contains("Authorization"));
    }
};

QTEST_GUILESS_MAIN(HttpRedirectsTest)
#include "HttpRedirectsTest.moc"
