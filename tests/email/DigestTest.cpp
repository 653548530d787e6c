// SPDX-License-Identifier: MIT
#include "Digest.h"

#include "Rows.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr Instant now(std::chrono::sys_days(2026y / 11 / 21) + 7h);

DigestContext context(const QString &locale = u"en_US"_s)
{
    return {now, locale, u"https://strandloom.example"_s, QTimeZone("Europe/Berlin")};
}

CapturedLink link(const QString &url, std::optional<QString> title = {},
                  std::optional<QString> summary = {}, Instant copiedAt = now)
{
    return {QUuid::createUuid(), url, std::move(title), std::move(summary), copiedAt};
}

/// What lies between the subtitle and the footer.
QString cards(const QList<CapturedLink> &links)
{
    const QString html = composeDigestHTML(links, context());
    const qsizetype begin = html.indexOf(u"</p>") + 4;
    return html.mid(begin, html.indexOf(u"    <div class=\"footer\">") - begin);
}

} // namespace

class DigestTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void writesTheWholeDocument()
    {
        const QByteArray expected =
            "<!DOCTYPE html>\n"
            "<html>\n"
            "<head>\n"
            "    <meta charset=\"utf-8\">\n"
            "    <meta name=\"viewport\" content=\"width=device-width, initial-scale=1.0\">\n"
            "    <style>\n"
            "        body { font-family: -apple-system, BlinkMacSystemFont, 'Segoe UI', Roboto, "
            "sans-serif; line-height: 1.6; color: #333; max-width: 600px; margin: 0 auto; "
            "padding: 20px; }\n"
            "        h1 { color: #2563eb; font-size: 24px; margin-bottom: 8px; }\n"
            "        .subtitle { color: #666; font-size: 14px; margin-bottom: 24px; }\n"
            "        .link-card { background: #f8fafc; border-radius: 8px; padding: 16px; "
            "margin-bottom: 16px; border-left: 4px solid #2563eb; }\n"
            "        .link-title { font-weight: 600; font-size: 16px; color: #1e293b; "
            "margin-bottom: 4px; }\n"
            "        .link-summary { color: #475569; font-size: 14px; font-style: italic; "
            "margin: 8px 0; }\n"
            "        .link-url { color: #2563eb; font-size: 13px; word-break: break-all; "
            "text-decoration: none; }\n"
            "        .link-url:hover { text-decoration: underline; }\n"
            "        .link-meta { color: #94a3b8; font-size: 12px; margin-top: 8px; }\n"
            "        .footer { margin-top: 32px; padding-top: 16px; border-top: 1px solid #e2e8f0; "
            "font-size: 12px; color: #94a3b8; text-align: center; }\n"
            "    </style>\n"
            "</head>\n"
            "<body>\n"
            "    <h1>\xF0\x9F\x94\x97 Your Strandloom Digest</h1>\n"
            "    <p class=\"subtitle\">November 21, 2026 \xE2\x80\xA2 2 links</p>"
            "<div class=\"link-card\">\n"
            "    <div class=\"link-title\">Tom &amp; &quot;Jerry&quot;</div>"
            "<div class=\"link-summary\">It's &lt;b&gt;</div>"
            "    <a href=\"https://A.example/?a=1&b=2\" class=\"link-url\">"
            "https://A.example/?a=1&amp;b=2</a>\n"
            "    <div class=\"link-meta\">A.example \xE2\x80\xA2 "
            "Nov 21, 2026, 8:00\xE2\x80\xAF"
            "AM</div>\n"
            "</div>"
            "<div class=\"link-card\">\n"
            "    <div class=\"link-title\">b.example</div><div class=\"link-summary\"></div>"
            "    <a href=\"http://b.example\" class=\"link-url\">http://b.example</a>\n"
            "    <div class=\"link-meta\">b.example \xE2\x80\xA2 "
            "Nov 20, 2026, 8:00\xE2\x80\xAF"
            "AM</div>\n"
            "</div>"
            "    <div class=\"footer\">\n"
            "        <p>Sent by <a href=\"https://strandloom.example\">Strandloom</a></p>\n"
            "        <p>Capture every link. Never lose an idea.</p>\n"
            "    </div>\n"
            "</body>\n"
            "</html>";
        const QList<CapturedLink> oldestFirst = {
            link(u"http://b.example"_s, {}, u""_s, now - 24h),
            link(u"https://A.example/?a=1&b=2"_s, u"Tom & \"Jerry\""_s, u"It's <b>"_s)};
        QCOMPARE(composeDigestHTML(oldestFirst, context()).toUtf8(), expected);
    }

    void countsTheLinks()
    {
        const Rows<int, QString> rows{
            {"none", 0, u"21. November 2026 • 0 links</p>    <div class=\"footer\">"_s},
            {"one", 1, u"21. November 2026 • 1 link</p><div class=\"link-card\">"_s},
            {"two", 2, u"21. November 2026 • 2 links</p><div class=\"link-card\">"_s},
        };
        for (const auto &[count, subtitle] : rows) {
            const QList<CapturedLink> links(count, link(u"https://a.example"_s));
            const QString html = composeDigestHTML(links, context(u"de_DE"_s));
            QVERIFY(html.contains(u"<p class=\"subtitle\">" + subtitle));
        }
    }

    void namesEachLink()
    {
        const Rows<CapturedLink, QString, QString> rows{
            {"empty title stays empty", link(u"https://a.de/x"_s, u""_s), u""_s, u"a.de"_s},
            {"no title, port", link(u"https://a.de:81/x"_s), u"a.de"_s, u"a.de"_s},
            {"not a URL", link(u"https://a b"_s), u"Untitled"_s, u""_s},
            {"no host", link(u"https:///x"_s), u"Untitled"_s, u""_s},
            {"markup in the title", link(u"https://a.de"_s, u"</div><script>&amp;</script>"_s),
             u"&lt;/div&gt;&lt;script&gt;&amp;amp;&lt;/script&gt;"_s, u"a.de"_s},
        };
        for (const auto &[link, title, host] : rows) {
            const QString card = cards({link});
            QVERIFY2(card.contains(u"<div class=\"link-title\">" % title % u"</div>    <a"),
                     qPrintable(card));
            QVERIFY2(card.contains(u"<div class=\"link-meta\">" % host % u" • "), qPrintable(card));
        }
    }

    void datesTheSubject()
    {
        QCOMPARE(digestSubject(context()), u"Your Strandloom Digest – November 21, 2026"_s);
        QCOMPARE(digestSubject(context(u"ja_JP"_s)), u"Your Strandloom Digest – 2026年11月21日"_s);
    }
};

QTEST_GUILESS_MAIN(DigestTest)
#include "DigestTest.moc"
