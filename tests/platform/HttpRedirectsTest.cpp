// SPDX-License-Identifier: MIT
#include "AddressRules.h"
#include "HttpSteps.h"
#include "ProxyRules.h"
#include "Rows.h"

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

void clearVariables()
{
    for (const char *const name :
         {"http_proxy", "https_proxy", "all_proxy", "ALL_PROXY", "no_proxy", "NO_PROXY"})
        qunsetenv(name);
}

} // namespace

class HttpRedirectsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void judgesAddresses()
    {
        const QByteArray ours = "127.0.0.1 10.1.2.3 172.31.0.1 192.168.1.1 169.254.1.1 100.64.0.1 "
                                "0.0.0.0 224.0.0.1 255.255.255.255 203.0.113.9 ::1 :: fe80::1 "
                                "fd00::1 ff02::1 ::ffff:192.168.1.1 ::192.168.1.1 "
                                "64:ff9b::10.0.0.1 64:ff9b:1::a00:1 2002:c0a8:101::1 "
                                "2002:7f00:1:: 2001:0:4136:e378::1 2001:db8::1";
        const QByteArray everybodys = "1.1.1.1 172.32.0.1 100.128.0.1 2606:4700::1111 "
                                      "::ffff:1.1.1.1 64:ff9b::1.1.1.1 2002:101:101::1 "
                                      "2001:200::1";
        Rows<QByteArray, bool> rows{};
        for (const QByteArray &address : ours.split(' '))
            rows.add({address, address, false});
        for (const QByteArray &address : everybodys.split(' '))
            rows.add({address, address, true});
        for (const auto &[address, isPublic] : rows) {
            sockaddr_in ipv4 = {};
            sockaddr_in6 ipv6 = {};
            ipv4.sin_family = AF_INET;
            ipv6.sin6_family = AF_INET6;
            const bool isIpv4 = inet_pton(AF_INET, address, &ipv4.sin_addr) == 1;
            QVERIFY(isIpv4 || inet_pton(AF_INET6, address, &ipv6.sin6_addr) == 1);
            QCOMPARE(isPublicAddress(isIpv4 ? reinterpret_cast<const sockaddr &>(ipv4)
                                            : reinterpret_cast<const sockaddr &>(ipv6)),
                     isPublic);
        }
    }

    void followsTwentyRedirects()
    {
        const Rows<int, Failure> rows{{"twenty", 20, Failure()},
                                      {"one more", 21, Failure(Kind::tooManyRedirects)}};
        for (const auto &[redirects, failure] : rows) {
            LoopbackServer server;
            for (int left = redirects; left > 0; --left)
                server.on("/" + QByteArray::number(left),
                          redirect("/" + QByteArray::number(left - 1)));
            server.on("/0", LoopbackServer::reply(200, "there"));
            CurlHttpClient client;
            QCOMPARE(
                failureOf(exchange(client, get(server.url("/" + QByteArray::number(redirects))))),
                failure);
        }
    }

    void staysWithinTheUsersNetworkOnlyFromThere()
    {
        const Rows<bool, bool, Failure> rows{
            {"public to private", true, false, Failure(Kind::refused)},
            {"public to public", true, true, Failure()},
            {"private to private", false, false, Failure()},
            {"private to public", false, true, Failure()},
        };
        for (const auto &[fromPublic, toPublic, failure] : rows) {
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
        const auto restore = qScopeGuard(clearVariables);
        qputenv("http_proxy", proxy.url(""));
        qputenv("no_proxy", "127.0.0.0/8");
        CurlHttpClient client(HttpNetwork{isPublicHere, {}});
        QCOMPARE(failureOf(exchange(client, get(outside.url("/in")))), Failure(Kind::refused));
        QCOMPARE(failureOf(exchange(client, get("http://a.example/in"))), Failure(Kind::refused));
        QCOMPARE(inside.requests().size(), 0);
        QCOMPARE(failureOf(exchange(client, get("http://a.example/proxied"))), Failure());
        QCOMPARE(failureOf(exchange(client, get(outside.url("/proxied")))), Failure());
    }

    void knowsWhatGoesThroughAProxy()
    {
        Rows<Variables, QByteArray, bool> rows{
            // PROXY stands for its address
            {"for https", Variables{{"https_proxy", "PROXY"}}, "localhost", false},
            {"NO_PROXY", Variables{{"http_proxy", "PROXY"}, {"NO_PROXY", "localhost"}}, "localhost",
             false},
        };
        for (const char *const name : {"http_proxy", "all_proxy", "ALL_PROXY"})
            rows.add({name, Variables{{"http_proxy", ""}, {name, "PROXY"}}, "localhost", true});
        const std::tuple<const char *, const char *, bool> exceptions[] = {
            {"*", "localhost", false},
            {"*,x", "localhost", true},
            {"x, LOCALHOST", "localhost", false},
            {"x localhost", "localhost", false},
            {".localhost.", "a.LocalHost", false},
            {"localhost", "alocalhost", true},
            {"localhost,", "localhost.", false},
            {"127.0.0.0/8", "127.0.0.1", false},
            {"127.0.0.0/32", "127.0.0.1", true},
            {"127.0.0.1/0", "127.0.0.1", false},
            {"127.0.0.1", "127.0.0.1", false},
            {"0.0.1", "127.0.0.1", true},
            {"::1", "[::1]", false},
            {"::2", "[::1]", true}};
        for (const auto &[noProxy, host, isProxied] : exceptions)
            rows.add({QByteArray(noProxy) + ", " + host,
                      Variables{{"http_proxy", "PROXY"}, {"no_proxy", noProxy}}, host, isProxied});
        for (const auto &[variables, host, isProxied] : rows) {
            const auto restore = qScopeGuard(clearVariables);
            LoopbackServer proxy;
            for (const auto &[name, value] : variables)
                qputenv(name, value == "PROXY" ? proxy.url("") : value);
            const QByteArray url = "http://" + host + ":1/";
            CurlHttpClient client;
            (void)exchange(client, get(url));
            QCOMPARE(proxy.requests().size(), isProxied ? 1 : 0);
            QCOMPARE(goesThroughProxy(url), isProxied);
        }
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
