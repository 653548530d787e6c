// SPDX-License-Identifier: MIT
#include "Characters.h"
#include "PageText.h"
#include "WebAddress.h"
#include "WhiteSpace.h"

#include <QTest>

#include <curl/curl.h>
#include <memory>

using namespace Qt::StringLiterals;

namespace
{

/// The host that a request would go to, without the brackets of an IPv6 address.
QString hostByCurl(const QByteArray &url)
{
    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> parsed(curl_url(), curl_url_cleanup);
    char *text = nullptr;
    if (curl_url_set(parsed.get(), CURLUPART_URL, url, 0) != CURLUE_OK
        || curl_url_get(parsed.get(), CURLUPART_HOST, &text, 0) != CURLUE_OK)
        return {};
    const QString host = QString::fromUtf8(text);
    curl_free(text);
    return host.startsWith(u'[') ? host.sliced(1, host.size() - 2) : host;
}

} // namespace

class TextTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void parsesWhatBrowsersOpen_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("host");
        QTest::addColumn<QString>("askedHost");
        QTest::addColumn<QByteArray>("encoded");
        const auto row = [](const char *name, const QString &text, const QString &host,
                            const QString &askedHost, const QByteArray &encoded) {
            QTest::newRow(name) << text << host << askedHost << encoded;
        };
        row("host as written", u"http://EXAMPLE.com:80/x"_s, u"EXAMPLE.com"_s, u"example.com"_s,
            "http://example.com:80/x");
        row("other scripts", u"http://München.de/ä?q=ö#ü"_s, u"München.de"_s,
            u"xn--mnchen-3ya.de"_s, "http://xn--mnchen-3ya.de/%C3%A4?q=%C3%B6#%C3%BC");
        row("as browsers leave it", u"http://a.org/|{}^`'100%%7e?{}|'`^#{}|'`^"_s, u"a.org"_s,
            u"a.org"_s, "http://a.org/|%7B%7D%5E%60'100%%7e?{}|%27`^#{}|'%60^");
        row("query right behind the host", u"http://a.org?u=//b.org"_s, u"a.org"_s, u"a.org"_s,
            "http://a.org?u=//b.org");
        row("IPv6", u"http://u@[0:0:0:FFFF::1]:8080/"_s, u"0:0:0:FFFF::1"_s, u"::ffff:0:0:0:1"_s,
            "http://u@[::ffff:0:0:0:1]:8080/");
        row("no host", u"http:///path//x"_s, {}, {}, "http:///path//x");
        row("nothing but the scheme", u"https://"_s, {}, {}, "https://");

        const auto host = [row](const char *text, const char *askedHost) {
            const QString written = QString::fromUtf8(text);
            row(text, u"http://"_s + written + u"/x"_s, written, QLatin1StringView(askedHost),
                QByteArray("http://") + askedHost + "/x");
        };
        host("-a.example", "-a.example");
        host("foo-.example", "foo-.example");
        host("a_b.example", "a_b.example");
        host("r3---sn-5.example", "r3---sn-5.example");
        host("a..b", "a..b");
        host("a.example.", "a.example.");
        host("ex%61mple.%6frg", "example.org");
        host("m%C3%BCnchen.de", "xn--mnchen-3ya.de");
        host("Ｅxample。org", "example.org");
        host("faß.de", "xn--fa-hia.de");
        host("☕.example", "xn--53h.example");
        host("a\xC2\xAD\xE2\x80\x8B"
             "b.example",
             "ab.example");
        host("xn--mnchen-3ya.de", "xn--mnchen-3ya.de");
        host("0x7F.1", "127.0.0.1");
        host("017700000001", "127.0.0.1");
        host("192.168.257", "192.168.1.1");
        host("１２７.0.0.1", "127.0.0.1");
        host("1.example", "1.example");

        const auto authority = [row](const char *written, const char *name, const char *encoded) {
            row(written, u"http://"_s + QLatin1StringView(written) + u"/@"_s,
                QLatin1StringView(name), QString(QLatin1StringView(name)).toLower(),
                QByteArray("http://") + encoded + "/@");
        };
        authority("u:p@A.org", "A.org", "u:p@a.org");
        authority("a.org@b.org@c.org", "c.org", "a.org%40b.org@c.org");
        authority("a.org:80@b.org:8080", "b.org", "a.org:80@b.org:8080");
        authority("u;=|[:p:%40@c.org", "c.org", "u%3B%3D%7C%5B:p%3A%40@c.org");
        authority("@c.org", "c.org", "@c.org");
        authority("a.org:65535", "a.org", "a.org:65535");
        authority("a.org:", "a.org", "a.org:");
    }
    void parsesWhatBrowsersOpen()
    {
        QFETCH(QString, text);
        QFETCH(QString, askedHost);
        const auto address = WebAddress::parse(text);
        QVERIFY(address);
        QTEST(address->host(), "host");
        QCOMPARE(address->askedHost(), askedHost);
        QTEST(address->encoded(), "encoded");
        if (!askedHost.isEmpty())
            QCOMPARE(hostByCurl(address->encoded()), askedHost);
    }

    void refusesWhatBrowsersDoNotOpen()
    {
        for (const QString &text : {u""_s,
                                    u"a.org"_s,
                                    u"://a.org"_s,
                                    u"http://a b"_s,
                                    u"http://a/b c"_s,
                                    u"http://a/\u00A0"_s,
                                    u"http://a/\n"_s,
                                    u"http://a/\u0085"_s,
                                    u"http://a/\u007F"_s,
                                    u"http://a/\""_s,
                                    u"http://a/<b>"_s,
                                    u"http://a.org\\@b.org/"_s,
                                    u"http://a:65536/"_s,
                                    u"http://a:b/"_s,
                                    u"http://u@/x"_s,
                                    u"http://:80/x"_s,
                                    u"http://[::1"_s,
                                    u"http://[::1]x/"_s,
                                    u"http://[1.2.3.4]/"_s,
                                    u"http://[]/"_s,
                                    u"http://a]/"_s,
                                    u"http://1.2.3.256/"_s,
                                    u"http://1.2.3.4.5/"_s,
                                    u"http://a.0x1g.09/"_s,
                                    u"http://a%20b/"_s,
                                    u"http://a%2Fb/"_s,
                                    u"http://a%/"_s,
                                    u"http://%ff/"_s,
                                    u"http://a|b/"_s,
                                    u"http://\u00AD/"_s,
                                    u"http://xn--a/"_s,
                                    u"http://a\uFFFDb/"_s})
            QVERIFY2(!WebAddress::parse(text) && hostOf(text).isEmpty(), qPrintable(text));
    }

    void decodesPages_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<bool>("isTruncated");
        const auto row = [](const char *name, const QByteArray &body, const QByteArray &text,
                            bool isTruncated = false) {
            QTest::newRow(name) << body << text << isTruncated;
        };
        row("UTF-8", "caf\xC3\xA9", "caf\xC3\xA9");
        row("byte order mark", "\xEF\xBB\xBF\xEF\xBB\xBFx", "\xEF\xBB\xBFx");
        row("Latin-1", "caf\xE9 \x80\xFF", "caf\xC3\xA9 \xC2\x80\xC3\xBF");
        row("overlong is Latin-1", "\xC0\x80", "\xC3\x80\xC2\x80");
        row("surrogate is Latin-1", "\xED\xA0\x80", "\xC3\xAD\xC2\xA0\xC2\x80");
        row("ends in mid-character", "a\xE2\x82", "a\xC3\xA2\xC2\x82");
        row("cut after 1 of 2", "a\xC3", "a", true);
        row("cut after 2 of 3", "a\xE2\x82", "a", true);
        row("cut after 3 of 4", "a\xF0\x9F\x98", "a", true);
        row("cut between characters", "a\xE2\x82\xAC", "a\xE2\x82\xAC", true);
        row("cut, only continuations", "\x80\x80\x80\x80", "\xC2\x80\xC2\x80\xC2\x80\xC2\x80",
            true);
        row("nothing", "", "", true);
    }
    void decodesPages()
    {
        QFETCH(QByteArray, body);
        QFETCH(bool, isTruncated);
        const auto end = isTruncated ? BodyEnd::truncated : BodyEnd::complete;
        QTEST(QByteArray::fromStdString(decodePage(body, end)), "text");
    }

    void knowsUnicodeWhiteSpace()
    {
        const std::string spaces = "\u2028 \t\u00A0\u0085\u3000\r\n";
        QCOMPARE(trimmed(spaces + "a\u00A0b\u200B" + spaces), std::string_view("a\u00A0b\u200B"));
        QCOMPARE(trimmed(spaces), std::string_view());
        QCOMPARE(simplified(spaces + "a\u00A0 b\u1680é" + spaces), std::string("a b é"));
    }

    void cutsBetweenCharacters_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("start");
        QTest::newRow("ASCII") << u"abc"_s << 2 << u"ab"_s;
        QTest::newRow("none") << u"abc"_s << 0 << u""_s;
        QTest::newRow("fewer") << u"ab\u00E4"_s << 9 << u"ab\u00E4"_s;
        QTest::newRow("mark behind the last") << u"abe\u0301"_s << 3 << u"abe\u0301"_s;
        QTest::newRow("CR LF is one") << u"a\r\nb"_s << 2 << u"a\r\n"_s;
        QTest::newRow("family") << u"👨‍👩‍👧x"_s << 1 << u"👨‍👩‍👧"_s;
        QTest::newRow("flags") << u"🇨🇭🇩🇪"_s << 1 << u"🇨🇭"_s;
    }
    void cutsBetweenCharacters()
    {
        QFETCH(QString, text);
        QFETCH(int, count);
        QFETCH(QString, start);
        QCOMPARE(firstCharacters(QStringView(text), count).toString(), start);
        QCOMPARE(firstCharacters(std::string_view(text.toStdString()), count), start.toStdString());
        QCOMPARE(hasFewerCharacters(QStringView(text), count + 1), start == text);
    }
};

QTEST_GUILESS_MAIN(TextTest)
#include "TextTest.moc"
