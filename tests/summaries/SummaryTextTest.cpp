// SPDX-License-Identifier: MIT
#include "SummaryText.h"

#include "EvidencePacket.h"
#include "Rows.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace Qt::StringLiterals;
using Text = std::optional<QString>;

class SummaryTextTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void summarizesDescriptions()
    {
        const QString tens = u"123456789 "_s;
        const QString title = u"Docs - a article on example.com."_s;
        const Rows<Text, Text, QString> rows{
            {"gets its full stop", u"Hello world"_s, u"OG"_s, u"Hello world."_s},
            {"has its full stop", u"Hello world."_s, {}, u"Hello world."_s},
            {"Open Graph's", {}, u"OG"_s, u"OG."_s},
            {"line feeds and outer space", u"\u00A0a\nb\r\n"_s, {}, u"a b."_s},
            {"spaces only", u" \n "_s, u"OG"_s, u"."_s},
            {"empty hides Open Graph's", u""_s, u"OG"_s, title},
            {"none", {}, {}, title},
            {"150 fit", QString(150, u'x'), {}, QString(150, u'x') + u'.'},
            {"ends at its last full stop", u"One. Two. "_s + tens.repeated(20), {}, u"One. Two."_s},
            {"the stop is the 150th", QString(149, u'x') + u".yz"_s, {}, QString(149, u'x') + u'.'},
            {"ends before its last space",
             tens.repeated(20),
             {},
             tens.repeated(15).chopped(1) + u"..."_s},
            {"has no space", QString(200, u'x'), {}, QString(150, u'x') + u"..."_s},
            {"characters of two units", u"😀"_s.repeated(150), {}, u"😀"_s.repeated(150) + u'.'},
            {"characters of two code points",
             u"e\u0301"_s.repeated(151),
             {},
             u"e\u0301"_s.repeated(150) + u"..."_s},
        };
        for (const auto &[meta, openGraph, summary] : rows) {
            EvidencePacket packet(u"https://example.com/x"_s, {});
            packet.metaDescription = meta;
            packet.ogDescription = openGraph;
            packet.title = u"Docs"_s;
            packet.pageType = u"article"_s;
            QCOMPARE(composeSummary(packet), summary);
        }
    }

    void summarizesTitles()
    {
        EvidencePacket packet(u"no address"_s, {});
        QCOMPARE(composeSummary(packet), u"A webpage from ."_s);
        packet.ogTitle = u"OG"_s;
        QCOMPARE(composeSummary(packet), u"OG - a page on ."_s);
        packet.title = u""_s;
        QCOMPARE(composeSummary(packet), u" - a page on ."_s);
    }

    void keepsPacketsAsJson()
    {
        EvidencePacket packet(u"http://a.org:80/"_s,
                              Instant(std::chrono::microseconds(1'700'000'000'123'456)));
        QCOMPARE(packet.toJson(),
                 R"({"url":"http://a.org:80/","domain":"a.org",)"
                 R"("fetchedAt":1700000000.123456,"headings":[],"navLabels":[],)"
                 R"("ctaButtons":[],"pricingText":[],"extractedText":""})"_ba);
        QVERIFY(EvidencePacket::fromJson(packet.toJson()) == packet);

        packet.title = u"\"T\"\n"_s;
        packet.siteName = u""_s;
        packet.headings = {u"a"_s, u""_s};
        packet.extractedText = u"\uFEFFx😀"_s;
        QVERIFY(EvidencePacket::fromJson(packet.toJson()) == packet);
        QVERIFY(packet.toJson().indexOf("siteName") > packet.toJson().indexOf("title"));
    }

    void refusesJsonThatIsNoPacket()
    {
        const QByteArray whole = EvidencePacket(u"http://a.org"_s, {}).toJson();
        const QJsonObject object = QJsonDocument::fromJson(whole).object();
        for (const QString &key : object.keys()) {
            for (const QJsonValue &wrong :
                 {QJsonValue(QJsonValue::Undefined), QJsonValue(true), QJsonValue(QJsonArray{1})}) {
                QJsonObject changed = object;
                changed[key] = wrong;
                QVERIFY2(!EvidencePacket::fromJson(QJsonDocument(changed).toJson()),
                         qPrintable(key));
            }
        }
        QVERIFY(!EvidencePacket::fromJson("[]"));
        QVERIFY(!EvidencePacket::fromJson(QByteArray(whole).replace(":0,", ":1e300,")));
        QVERIFY(
            EvidencePacket::fromJson(QByteArray(whole).replace("{", "{\"x\":1,\"title\":null,")));
    }
};

QTEST_GUILESS_MAIN(SummaryTextTest)
#include "SummaryTextTest.moc"
