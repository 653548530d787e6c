// SPDX-License-Identifier: MIT
#include "Characters.h"
#include "PageText.h"
#include "WebAddress.h"
#include "WhiteSpace.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TextTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void parsesWhatBrowsersAccept_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("host");
        QTest::addColumn<QByteArray>("encoded");
        const auto row = [](const char *name, const QString &text, const QString &host,
                            const QByteArray &encoded) {
            QTest::newRow(name) << text << host << encoded;
        };
        row("host as written", u"http://EXAMPLE.com:80/x"_s, u"EXAMPLE.com"_s,
            "http://example.com:80/x");
        row("user, @ in the path", u"http://u:p@a.org/x@y:z"_s, u"a.org"_s,
            "http://u:p@a.org/x@y:z");
        row("IPv6", u"http://[::1]:8080/"_s, u"::1"_s, "http://[::1]:8080/");
        row("other scripts", u"http://München.de/ä?q=ö"_s, u"München.de"_s,
            "http://xn--mnchen-3ya.de/%C3%A4?q=%C3%B6");
        row("left raw by browsers", u"http://a.org/|{}^100%"_s, u"a.org"_s,
            "http://a.org/%7C%7B%7D%5E100%25");
        row("query right behind the host", u"http://a.org?u=//b.org"_s, u"a.org"_s,
            "http://a.org?u=//b.org");
        row("no host", u"http:///path//x"_s, QString(), "http:///path//x");
    }
    void parsesWhatBrowsersAccept()
    {
        QFETCH(QString, text);
        const auto address = WebAddress::parse(text);
        QVERIFY(address);
        QTEST(address->host(), "host");
        QTEST(address->encoded(), "encoded");
    }

    void refusesWhatIsNoAddress()
    {
        for (const QString &text : {u""_s, u"http://a b"_s, u"http://a/b c"_s, u"http://a/\u00A0"_s,
                                    u"http://a/\n"_s, u"http://a/\u0085"_s, u"http://a/\u007F"_s,
                                    u"http://a/\""_s, u"http://a/<b>"_s, u"http://a.org\\@b.org/"_s,
                                    u"http://a:99999/"_s, u"http://[::1"_s, u"http://a..b/"_s})
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
