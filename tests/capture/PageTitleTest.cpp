// SPDX-License-Identifier: MIT
#include "PageTitle.h"

#include "ReferenceTitle.h"
#include "Rows.h"
#include "Utf8.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

QString titleOf(const std::string &html)
{
    return readUtf8(extractTitle(html).value_or(std::string()));
}

} // namespace

class PageTitleTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void followsTheRules()
    {
        const QString openGraph = u"<meta property=\"og:title\" content=\"OG\">"_s;
        const Rows<QString, QString> rows{
            {"upper case, entity, spaces", u"<TITLE>\n A &amp; B </TITLE>"_s, u"A & B"_s},
            {"title wins over Open Graph", openGraph + u"<title x=y>T</title>"_s, u"T"_s},
            {"empty title", u"<title></title>"_s + openGraph, u"OG"_s},
            {"title of white space", u"<title> \n\u2003\u00A0</title>"_s + openGraph, u"OG"_s},
            {"raw < in title", u"<title>a<b</title>"_s, QString()},
            {"content first", u"<meta content='it' property='og:title'>"_s, u"it"_s},
            {"decoded twice", u"<title>&amp;lt;b&amp;gt;</title>"_s, u"<b>"_s},
            {"space of an entity stays", u"<title>T&nbsp; </title>"_s, u"T "_s},
            {"unknown entities stay", u"<title>&eacute;&#8211;</title>"_s, u"&eacute;&#8211;"_s},
            {"line breaks stay", u"<title>a\r\n b</title>"_s, u"a\r\n b"_s},
            {"only the first title counts", u"<title> </title><title>B</title>"_s, QString()},
            {"first of the contents empty",
             u"<meta property='og:title' content=' '>"_s
             "<meta content='b' property='og:title'>",
             u"b"_s},
            {"nothing", u"text"_s, QString()},
        };
        for (const auto &[html, title] : rows) {
            QCOMPARE(titleOf(html.toStdString()), title);
            QCOMPARE(referenceTitle(html), titleOf(html.toStdString()));
        }
    }

    void survivesHostilePages()
    {
        for (const std::string tag :
             {"<title", "<title>", "<meta property='og:title'", "<meta content='"}) {
            std::string html;
            while (html.size() < (4u << 20))
                html += tag;
            QVERIFY(!extractTitle(html));
        }
    }
};

QTEST_GUILESS_MAIN(PageTitleTest)
#include "PageTitleTest.moc"
