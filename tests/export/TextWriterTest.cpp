// SPDX-License-Identifier: MIT
#include "TextWriter.h"

#include "ExportFile.h"
#include "ExportSamples.h"
#include "MarkdownWriter.h"
#include "Rows.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

#define NARROW "\u202f" // before AM

const QByteArray textHeader = "Strandloom Export\nExported on Nov 21, 2025, 8:05" NARROW "AM\n"
                              "==================================================\n\n";
const QByteArray markdownHeader =
    "# Strandloom Export\n\n_Exported on Nov 21, 2025, 8:05" NARROW "AM_\n\n---\n\n";
const QByteArray captured = "Nov 21, 2025, 8:05" NARROW "AM\n";

} // namespace

class TextWriterTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void writesEveryByteAsItShould()
    {
        const QString url = u"https://Example.org/a?b"_s;
        const Rows<QList<CapturedLink>, QByteArray, QByteArray, QByteArray> rows{
            {"no links", QList<CapturedLink>(), QByteArray(), QByteArray(), QByteArray()},
            {"all there", QList{makeLink(url, u"*A* #title"_s, u"One.\nTwo."_s)},
             QByteArray("*A* #title\n  One.\nTwo.\nhttps://Example.org/a?b\nCaptured: " + captured
                        + "\n"),
             QByteArray("*A* #title\nhttps://Example.org/a?b\nCaptured: " + captured
                        + "Summary: One.\nTwo.\n\n"),
             QByteArray("## *A* #title\n\n> One.\nTwo.\n\n**URL:** https://Example.org/a?b\n\n"
                        "**Captured:** "
                        + captured + "\n---\n\n")},
            {"neither title nor summary", QList{makeLink(url)},
             QByteArray("Example.org\nhttps://Example.org/a?b\nCaptured: " + captured + "\n"),
             QByteArray("Example.org\nhttps://Example.org/a?b\nCaptured: " + captured + "\n"),
             QByteArray("## Example.org\n\n**URL:** https://Example.org/a?b\n\n**Captured:** "
                        + captured + "\n---\n\n")},
            {"empty ones, no host",
             QList{makeLink(u"https:/"_s, u""_s, u""_s), makeLink(u"https:/"_s)},
             QByteArray("\n  \nhttps:/\nCaptured: " + captured
                        + "\nUntitled\nhttps:/\nCaptured: " + captured + "\n"),
             QByteArray("\nhttps:/\nCaptured: " + captured
                        + "Summary: \n\nUntitled\nhttps:/\nCaptured: " + captured + "\n"),
             QByteArray("## \n\n> \n\n**URL:** https:/\n\n**Captured:** " + captured
                        + "\n---\n\n## Untitled\n\n**URL:** https:/\n\n**Captured:** " + captured
                        + "\n---\n\n")},
            {"a lone surrogate", QList{makeLink(url, QString(QChar(0xD83C)))},
             QByteArray("\uFFFD\nhttps://Example.org/a?b\nCaptured: " + captured + "\n"),
             QByteArray("\uFFFD\nhttps://Example.org/a?b\nCaptured: " + captured + "\n"),
             QByteArray("## \uFFFD\n\n**URL:** https://Example.org/a?b\n\n**Captured:** " + captured
                        + "\n---\n\n")},
        };
        for (const auto &[links, window, compact, markdown] : rows) {
            const auto written = [&links](ExportFormat format, ExportLayout layout) {
                QByteArray bytes;
                const auto result = writeDocument(makeDocument(links, layout), format,
                                                  [&bytes](QByteArrayView part) {
                                                      bytes.append(part);
                                                      return true;
                                                  });
                return result ? bytes : QByteArray();
            };
            QCOMPARE(written(ExportFormat::text, ExportLayout::window), textHeader + window);
            QCOMPARE(written(ExportFormat::text, ExportLayout::compact), textHeader + compact);
            for (const auto layout : {ExportLayout::window, ExportLayout::compact})
                QCOMPARE(written(ExportFormat::markdown, layout), markdownHeader + markdown);
        }
    }

    void handsOutLongTextsInParts()
    {
        const QList<CapturedLink> links(10'000, makeLink(u"https://a.example"_s));
        int parts = 0;
        qsizetype largest = 0;
        const ByteSink untilTheFifth = [&](QByteArrayView part) {
            largest = qMax(largest, part.size());
            return ++parts < 5;
        };
        writeText(makeDocument(links), untilTheFifth);
        QCOMPARE(parts, 5);
        QVERIFY(largest < 100'000);
    }
};

QTEST_GUILESS_MAIN(TextWriterTest)
#include "TextWriterTest.moc"
