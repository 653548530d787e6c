// SPDX-License-Identifier: MIT
#include "Characters.h"
#include "PageText.h"
#include "Rows.h"
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
    void parsesWhatBrowsersOpen()
    {
        Rows<QString, QString, QString, QByteArray> rows{
            {"host as written", u"http://EXAMPLE.com:80/x"_s, u"EXAMPLE.com"_s, u"example.com"_s,
             "http://example.com:80/x"},
            {"other scripts", u"http://München.de/ä?q=ö#ü"_s, u"München.de"_s,
             u"xn--mnchen-3ya.de"_s, "http://xn--mnchen-3ya.de/%C3%A4?q=%C3%B6#%C3%BC"},
            {"as browsers leave it", u"http://a.org/|{}^`'100%%7e?{}|'`^#{}|'`^"_s, u"a.org"_s,
             u"a.org"_s, "http://a.org/|%7B%7D%5E%60'100%%7e?{}|%27`^#{}|'%60^"},
            {"query right behind the host", u"http://a.org?u=//b.org"_s, u"a.org"_s, u"a.org"_s,
             "http://a.org?u=//b.org"},
            {"IPv6", u"http://u@[0:0:0:FFFF::1]:8080/"_s, u"0:0:0:FFFF::1"_s, u"::ffff:0:0:0:1"_s,
             "http://u@[::ffff:0:0:0:1]:8080/"},
            {"no host", u"http:///path//x"_s, {}, {}, "http:///path//x"},
            {"nothing but the scheme", u"https://"_s, {}, {}, "https://"},
        };
        const std::pair<const char *, const char *> hosts[] = {
            {"-a.example", "-a.example"},
            {"foo-.EXAMPLE", "foo-.example"},
            {"a_b.example", "a_b.example"},
            {"r3---sn-5.example", "r3---sn-5.example"},
            {"a..b", "a..b"},
            {"a.example.", "a.example."},
            {"ex%61mple.%6frg", "example.org"},
            {"m%C3%BCnchen.de", "xn--mnchen-3ya.de"},
            {"Ｅxample。org", "example.org"},
            {"faß.de", "xn--fa-hia.de"},
            {"☕.example", "xn--53h.example"},
            {"a\xC2\xAD\xE2\x80\x8B"
             "b.example",
             "ab.example"},
            {"xn--mnchen-3ya.de", "xn--mnchen-3ya.de"},
            {"0x7F.1", "127.0.0.1"},
            {"017700000001", "127.0.0.1"},
            {"192.168.257", "192.168.1.1"},
            {"１２７.0.0.1", "127.0.0.1"},
            {"1.example", "1.example"}};
        for (const auto &[text, askedHost] : hosts) {
            const QString host = QString::fromUtf8(text);
            rows.add({text, u"http://"_s + host + u"/x"_s, host, QLatin1StringView(askedHost),
                      QByteArray("http://") + askedHost + "/x"});
        }
        const std::tuple<const char *, const char *, const char *> authorities[] = {
            {"u:p@A.org", "A.org", "u:p@a.org"},
            {"a.org@b.org@c.org", "c.org", "a.org%40b.org@c.org"},
            {"a.org:80@b.org:8080", "b.org", "a.org:80@b.org:8080"},
            {"u;=|[:p:%40@c.org", "c.org", "u%3B%3D%7C%5B:p%3A%40@c.org"},
            {"@c.org", "c.org", "@c.org"},
            {"a.org:65535", "a.org", "a.org:65535"},
            {"a.org:", "a.org", "a.org:"}};
        for (const auto &[written, name, encoded] : authorities) {
            const QString host = QString::fromLatin1(name);
            rows.add({written, u"http://"_s + QLatin1StringView(written) + u"/@"_s, host,
                      host.toLower(), QByteArray("http://") + encoded + "/@"});
        }
        for (const auto &[text, host, askedHost, encoded] : rows) {
            const auto address = WebAddress::parse(text);
            QVERIFY(address);
            QCOMPARE(address->host(), host);
            QCOMPARE(address->askedHost(), askedHost);
            QCOMPARE(address->encoded(), encoded);
            if (!askedHost.isEmpty())
                QCOMPARE(hostByCurl(address->encoded()), askedHost);
            const QByteArray name = host.toUtf8();
            const auto notPlain = QString::fromLatin1(name.toPercentEncoding({}, name));
            if (!name.contains(':') && !name.contains('%') && !name.isEmpty())
                QCOMPARE(::askedHost(notPlain), askedHost);
        }
    }

    void refusesWhatBrowsersDoNotOpen()
    {
        const QString texts = u"\ta.org\t://a.org\thttp://a b\thttp://a/b c\thttp://a/\u00A0\t"
                              "http://a/\n\thttp://a/\u0085\thttp://a/\u007F\thttp://a/\"\t"
                              "http://a/<b>\thttp://a.org\\@b.org/\thttp://a:65536/\thttp://a:b/\t"
                              "http://u@/x\thttp://:80/x\thttp://[::1\thttp://[::1]x/\t"
                              "http://[1.2.3.4]/\thttp://[]/\thttp://a]/\thttp://1.2.3.256/\t"
                              "http://1.2.3.4.5/\thttp://a.0x1g.09/\thttp://a%20b/\thttp://a%2Fb/\t"
                              "http://a%/\thttp://%ff/\thttp://a|b/\thttp://\u00AD/\t"
                              "http://xn--a/\thttp://a\uFFFDb/"_s;
        for (const QString &text : texts.split(u'\t'))
            QVERIFY2(!WebAddress::parse(text) && hostOf(text).isEmpty(), qPrintable(text));
    }

    void decodesPages()
    {
        const Rows<QByteArray, QByteArray, bool> rows{
            {"UTF-8", "caf\xC3\xA9", "caf\xC3\xA9", false},
            {"byte order mark", "\xEF\xBB\xBF\xEF\xBB\xBFx", "\xEF\xBB\xBFx", false},
            {"Latin-1", "caf\xE9 \x80\xFF", "caf\xC3\xA9 \xC2\x80\xC3\xBF", false},
            {"overlong is Latin-1", "\xC0\x80", "\xC3\x80\xC2\x80", false},
            {"surrogate is Latin-1", "\xED\xA0\x80", "\xC3\xAD\xC2\xA0\xC2\x80", false},
            {"ends in mid-character", "a\xE2\x82", "a\xC3\xA2\xC2\x82", false},
            {"cut after 1 of 2", "a\xC3", "a", true},
            {"cut after 2 of 3", "a\xE2\x82", "a", true},
            {"cut after 3 of 4", "a\xF0\x9F\x98", "a", true},
            {"cut between characters", "a\xE2\x82\xAC", "a\xE2\x82\xAC", true},
            {"cut, only continuations", "\x80\x80\x80\x80", "\xC2\x80\xC2\x80\xC2\x80\xC2\x80",
             true},
            {"nothing", "", "", true},
        };
        for (const auto &[body, text, isTruncated] : rows) {
            const auto end = isTruncated ? BodyEnd::truncated : BodyEnd::complete;
            QCOMPARE(QByteArray::fromStdString(decodePage(body, end)), text);
        }
    }

    void knowsUnicodeWhiteSpace()
    {
        const std::string spaces = "\u2028 \t\u00A0\u0085\u3000\r\n";
        QCOMPARE(trimmed(spaces + "a\u00A0b\u200B" + spaces), std::string_view("a\u00A0b\u200B"));
        QCOMPARE(trimmed(spaces), std::string_view());
        QCOMPARE(simplified(spaces + "a\u00A0 b\u1680é" + spaces), std::string("a b é"));
    }

    void cutsBetweenCharacters()
    {
        const Rows<QString, int, QString> rows{
            {"ASCII", u"abc"_s, 2, u"ab"_s},
            {"none", u"abc"_s, 0, u""_s},
            {"fewer", u"ab\u00E4"_s, 9, u"ab\u00E4"_s},
            {"mark behind the last", u"abe\u0301"_s, 3, u"abe\u0301"_s},
            {"CR LF is one", u"a\r\nb"_s, 2, u"a\r\n"_s},
            {"family", u"👨‍👩‍👧x"_s, 1, u"👨‍👩‍👧"_s},
            {"flags", u"🇨🇭🇩🇪"_s, 1, u"🇨🇭"_s},
        };
        for (const auto &[text, count, start] : rows) {
            QCOMPARE(firstCharacters(QStringView(text), count).toString(), start);
            QCOMPARE(firstCharacters(std::string_view(text.toStdString()), count),
                     start.toStdString());
            QCOMPARE(hasFewerCharacters(QStringView(text), count + 1), start == text);
        }
    }
};

QTEST_GUILESS_MAIN(TextTest)
#include "TextTest.moc"
