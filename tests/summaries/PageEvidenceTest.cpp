// SPDX-License-Identifier: MIT
#include "PageEvidence.h"

#include "MainText.h"
#include "PageComparison.h"
#include "PageMaker.h"
#include "ReferencePacket.h"
#include "Rows.h"
#include "Utf8.h"

#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

const QString address = u"https://www.Example.org:8080/a"_s;

} // namespace

class PageEvidenceTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void findsTheEvidence()
    {
        const QString e29 = u"é"_s.repeated(29);
        const QString marked = u"e\u0301"_s.repeated(1499);
        const Rows<QString, QString, QString> rows{
            {"no title", u"text"_s, u"title"_s},
            {"doubly escaped", u"<title> &amp;quot; </title>"_s, u"title"_s, u"\""_s},
            {"other quotes", u"<META PROPERTY='og:title' CONTENT='X'>"_s, u"ogTitle"_s, u"X"_s},
            {"content first, > in it", u"<meta content=\"a > b\" property=\"og:title\">"_s,
             u"ogTitle"_s, u"a > b"_s},
            {"Twitter's", u"<meta name='twitter:title' content='T'>"_s, u"ogTitle"_s, u"T"_s},
            {"property of Twitter's", u"<meta property='twitter:title' content='T'>"_s,
             u"ogTitle"_s},
            {"the page's own type", u"<meta property='og:type' content='v'>$1"_s, u"pageType"_s,
             u"v"_s},
            {"price makes a product", u"<h1>1</h1>$1"_s, u"pageType"_s, u"product"_s},
            {"headings make an article", u"<h2>1</h2>"_s.repeated(4), u"pageType"_s, u"article"_s},
            {"too few headings", u"<h2>1</h2>"_s.repeated(3), u"pageType"_s, u"webpage"_s},
            {"five headings of six", u"<h2> </h2>"_s.repeated(6), u"headings"_s, u"||||"_s},
            {"nested heading", u"<h1><span>A</span></h1>"_s, u"headings"_s, u""_s},
            {"labels of the first nav",
             u"<nav><a>1</a><a> </a><a>"_s + e29 + u"</a><a>x"_s + e29
                 + u"</a></nav><nav><a>2</a></nav>"_s,
             u"navLabels"_s, u"1|"_s + e29},
            {"buttons",
             u"<button>Buy</button><button> </button><button>%1</button>"_s.arg(
                 u"x"_s.repeated(50)),
             u"ctaButtons"_s, u"Buy"_s},
            {"prices", u"$1,299.00 £ 5 €12.5 $7"_s, u"pricingText"_s, u"$1,299.00|£ 5|€12"_s},
            {"prices of other scripts", u"€\u0085\u2003\u0663,\u0664.\u0967\u0968"_s,
             u"pricingText"_s, u"€\u0085\u2003\u0663,\u0664.\u0967\u0968"_s},
            {"removed blocks",
             u"a<SCRIPT>x</script >y</script>b<!-->c-->d<style>e</\uFB06yle><nav>f"_s,
             u"extractedText"_s, u"a b d f"_s},
            {"words far apart", u"a"_s + QString(7000, u' ') + u"&nbsp;b"_s, u"extractedText"_s,
             u"a b"_s},
            {"cut at 1,500", marked + u" \u2003 f"_s, u"extractedText"_s, marked},
            {"host as written", u""_s, u"domain"_s, u"www.Example.org"_s},
        };
        for (const auto &[html, field, wanted] : rows) {
            const EvidencePacket packet = parsePacket(html.toStdString(), address, {});
            const QVariant value = QJsonDocument::fromJson(packet.toJson())[field].toVariant();
            QCOMPARE(value.toStringList().join(u'|'), wanted);
            QVERIFY(packet == referencePacket(html, address, {}));
        }
    }

    void agreesWithIcu()
    {
        const auto difference = firstDifference(2, 1500);
        QVERIFY2(!difference, difference.value_or(std::string()).c_str());
    }

    void readsNoMoreThanItNeeds()
    {
        PageMaker maker(3);
        for (int round = 0; round < 150; ++round) {
            const std::string html = maker.mutated(maker.page(3000 + 450 * (round % 33)));
            const std::string text = mainText(html);
            QCOMPARE(readUtf8(text), referencePacket(readUtf8(html), address, {}).extractedText);
            for (const std::size_t part : {1, 700, 2000 + round})
                QCOMPARE(mainText(html, part), text);
        }
        std::string dense; // each part ends in the middle of something
        while (dense.size() < 15'000)
            dense += "e\u0301&amp;hellip;<i class='a b'>x</i><nav>y</nav>";
        const std::string text = mainText(dense);
        for (std::size_t part = 13'500; part < dense.size(); ++part)
            QCOMPARE(mainText(dense, part), text);
    }

    void survivesHostilePages()
    {
        for (const std::string tag :
             {"<title", "<meta ", "<meta>", "<meta content='", "<h1>", "<a>", "<nav>", "<button",
              "<script>", "<style ", "<!--", "<", "&amp", "$ ", "\u0301", "x"}) {
            std::string html;
            while (html.size() < (256u << 10))
                html += tag;
            QVERIFY(!parsePacket(html, address, {}).title);
        }
    }
};

QTEST_GUILESS_MAIN(PageEvidenceTest)
#include "PageEvidenceTest.moc"
