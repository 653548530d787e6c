#include "PageEvidence.h"

#include "MainText.h"
#include "PageMaker.h"
#include "ReferencePacket.h"
#include "text/PageText.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

const QString address = u"https://www.Example.org:8080/a"_s;

EvidencePacket packetOf(const QString &html)
{
    return parsePacket(html.toStdString(), address, {});
}

QString repeated(const QString &text, int times)
{
    return text.repeated(times);
}

} // namespace

class PageEvidenceTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void findsTheEvidence_data()
    {
        QTest::addColumn<QString>("html");
        QTest::addColumn<QStringList>("found"); // title, og:title, type, lists, text
        const auto row = [](const char *name, const QString &html, const QStringList &found) {
            QTest::newRow(name) << html << found;
        };
        row("nothing", u""_s, {u"-"_s, u"-"_s, u"webpage"_s, u""_s, u""_s, u""_s, u""_s, u""_s});
        row("doubly escaped title", u"<title> &amp;quot; </title>"_s,
            {u"\""_s, u"-"_s, u"webpage"_s, u""_s, u""_s, u""_s, u""_s, u"\""_s});
        row("upper case, other quotes", u"<META PROPERTY='og:title' CONTENT='X'>"_s,
            {u"-"_s, u"X"_s, u"webpage"_s, u""_s, u""_s, u""_s, u""_s, u""_s});
        row("content first, > in it", u"<meta content=\"a > b\" property=\"og:title\">"_s,
            {u"-"_s, u"a > b"_s, u"webpage"_s, u""_s, u""_s, u""_s, u""_s,
             u"b\" property=\"og:title\">"_s});
        row("Twitter's title",
            u"<meta name=twitter:title><meta name='twitter:title' content='T'>"_s,
            {u"-"_s, u"T"_s, u"webpage"_s, u""_s, u""_s, u""_s, u""_s, u""_s});
        row("Twitter's title as a property", u"<meta property='twitter:title' content='T'>"_s,
            {u"-"_s, u"-"_s, u"webpage"_s, u""_s, u""_s, u""_s, u""_s, u""_s});
        row("type of the page's own", u"<meta property='og:type' content='video'>$1"_s,
            {u"-"_s, u"-"_s, u"video"_s, u""_s, u""_s, u""_s, u"$1"_s, u"$1"_s});
        row("five headings of six", repeated(u"<h2> </h2>"_s, 6),
            {u"-"_s, u"-"_s, u"article"_s, u"||||"_s, u""_s, u""_s, u""_s, u""_s});
        row("nested heading", u"<h1><span>A</span></h1>"_s,
            {u"-"_s, u"-"_s, u"webpage"_s, u""_s, u""_s, u""_s, u""_s, u"A"_s});
        row("labels of the first nav",
            u"<nav><a>1</a><a> </a><a>%1</a><a>%1b</a></nav><nav><a>2</a></nav>"_s.arg(
                repeated(u"é"_s, 29)),
            {u"-"_s, u"-"_s, u"webpage"_s, u""_s, u"1|"_s + repeated(u"é"_s, 29), u""_s, u""_s,
             u""_s});
        row("buttons",
            u"<button>Buy</button><button>%1</button><button> </button>"_s.arg(
                repeated(u"x"_s, 60)),
            {u"-"_s, u"-"_s, u"webpage"_s, u""_s, u""_s, u"Buy"_s, u""_s,
             u"Buy "_s + repeated(u"x"_s, 60)});
        row("prices", u"$1,299.00 £ 5 €12.5 $7"_s,
            {u"-"_s, u"-"_s, u"product"_s, u""_s, u""_s, u""_s, u"$1,299.00|£ 5|€12"_s,
             u"$1,299.00 £ 5 €12.5 $7"_s});
        row("prices of other scripts", u"€\u0085\u2003\u0663,\u0664.\u0967\u0968"_s,
            {u"-"_s, u"-"_s, u"product"_s, u""_s, u""_s, u""_s,
             u"€\u0085\u2003\u0663,\u0664.\u0967\u0968"_s, u"€ \u0663,\u0664.\u0967\u0968"_s});
        row("removed blocks",
            u"a<SCRIPT>x</script >y</script>b<!-->c-->d<style>e</\uFB06yle><nav>f"_s,
            {u"-"_s, u"-"_s, u"webpage"_s, u""_s, u""_s, u""_s, u""_s, u"a b d f"_s});
        row("cut at 1,500", repeated(u"e\u0301"_s, 1499) + u" \u2003 f"_s,
            {u"-"_s, u"-"_s, u"webpage"_s, u""_s, u""_s, u""_s, u""_s,
             repeated(u"e\u0301"_s, 1499)});
    }
    void findsTheEvidence()
    {
        QFETCH(QString, html);
        const EvidencePacket packet = packetOf(html);
        const QStringList found{packet.title.value_or(u"-"_s),    packet.ogTitle.value_or(u"-"_s),
                                packet.pageType.value_or(u"-"_s), packet.headings.join(u'|'),
                                packet.navLabels.join(u'|'),      packet.ctaButtons.join(u'|'),
                                packet.pricingText.join(u'|'),    packet.extractedText};
        QTEST(found, "found");
        QCOMPARE(packet.domain, u"www.Example.org"_s);
        QVERIFY(packet == referencePacket(html, address, {}));
    }

    void agreesWithIcu()
    {
        PageMaker maker(2);
        for (int round = 0; round < 4000; ++round) {
            const std::string html = maker.mutated(maker.page(500 + 25 * (round % 100)));
            const EvidencePacket packet = parsePacket(html, address, {});
            const EvidencePacket expected = referencePacket(toQString(html), address, {});
            if (packet != expected)
                qInfo("%s\n%s\n%s", html.c_str(), packet.toJson().data(), expected.toJson().data());
            QVERIFY(packet == expected);
        }
    }

    void readsNoMoreThanItNeeds()
    {
        PageMaker maker(3);
        for (int round = 0; round < 500; ++round) {
            const std::string html = maker.mutated(maker.page(3000 + 60 * (round % 100)));
            const std::string text = mainText(html);
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
