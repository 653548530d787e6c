// SPDX-License-Identifier: MIT
#include "PdfWriter.h"

#include "ExportFile.h"
#include "ExportSamples.h"
#include "Heartbeat.h"
#include "Rows.h"

#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

/// Where a text begins: `y` is its baseline, from the top of its page.
struct Placement {
    int page;
    double size;
    double x;
    double y;
};

QByteArray pdfOf(const ExportDocument &document)
{
    QByteArray bytes;
    const auto written = writePdf(document, [&bytes](QByteArrayView part) {
        bytes.append(part);
        return true;
    });
    return written ? bytes : QByteArray();
}

QString lines(int count)
{
    return QString(u"Line\n"_s).repeated(count).chopped(1);
}

/// A link that takes 73 points, and more where a text has more than one line.
CapturedLink linkOf(int titleLines, int urlLines, const QString &summary = {})
{
    return makeLink(lines(urlLines), lines(titleLines), summary);
}

QList<CapturedLink> manyLanguages()
{
    const QList<CapturedLink> links{
        makeLink(u"https://example.org/office/affluent?a=1&b=2"_s, u"Efficient offices"_s,
                 u"How typesetters join letters, told at some length, so that this text flows "
                 "from the first line to a second one and nothing of it is lost."_s),
        makeLink(u"https://例え.jp/天気?q=東京"_s, u"東京の天気"_s,
                 u"今日の東京は晴れ、最高気温は二十五度です。"_s),
        makeLink(u"https://ar.example/%D9%85"_s, u"مرحبا بالعالم"_s, u"ملخص قصير"_s),
        makeLink(u"https://he.example/"_s, u"שלום עולם"_s, u"תקציר קצר"_s),
        makeLink(u"https://hi.example/लेख"_s, u"नमस्ते"_s, u"यह एक सारांश"_s),
        makeLink(u"https://ru.example/статья"_s, u"Русский заголовок"_s, u"Краткое"_s),
        makeLink(u"https://ko.example"_s, u"한국어 제목"_s, u"짧은 요약입니다"_s),
        makeLink(u"https://el.example"_s, u"Ελληνικός τίτλος"_s, u"Σύντομη περίληψη"_s),
        makeLink(u"https://emoji.example"_s, u"Well done 🎉 twice 🎉"_s,
                 u"By 👩‍🔬 of 🇨🇭 today"_s),
        makeLink(u"https://vi.example"_s, u"Tiêu đề tiếng Việt"_s, u"Tóm tắt ngắn"_s),
    };
    return links;
}

/// What is left of a text on a page: no line ends and no marks of direction.
QString bare(QString text)
{
    static const QRegularExpression space(u"[\\s\u200e\u200f\u202a-\u202e]+"_s);
    return text.remove(space).normalized(QString::NormalizationForm_KC);
}

} // namespace

class PdfWriterTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

    QByteArray outputOf(const QString &program, QStringList arguments, const QByteArray &pdf);
    QList<Placement> placements(const QByteArray &pdf);

private Q_SLOTS:
    void putsTheHeaderAndTheFirstLinkInTheirPlaces()
    {
        const QByteArray pdf = pdfOf(makeDocument({makeLink(u"https://a.example"_s, u"Title"_s)}));
        const auto placed = placements(pdf);
        QVERIFY(placed.size() >= 4);
        const double baselines[] = {75.656, 100.828, 144.966, 164.759};
        for (int i = 0; i < 4; ++i) {
            QCOMPARE(placed[i].x, 50.0);
            QVERIFY2(qAbs(placed[i].y - baselines[i]) < 0.002,
                     qPrintable(QString::number(placed[i].y)));
        }
        const QByteArray plain = outputOf(u"qpdf"_s, {u"--qdf"_s, u"IN"_s, u"-"_s}, pdf);
        QVERIFY(plain.contains(" 50 115 m 562 115 l S"));

        const QByteArray empty = pdfOf(makeDocument({}));
        QVERIFY(outputOf(u"pdftotext"_s, {u"IN"_s, u"-"_s}, empty)
                    .contains("Exported on November 21, 2025 • 0 links"));
        ExportDocument hebrew = makeDocument({});
        hebrew.locale = u"he_IL"_s;
        QVERIFY(outputOf(u"pdftotext"_s, {u"IN"_s, u"-"_s}, pdfOf(hebrew)).contains(" • 0 links"));
    }

    void ordersTheBlocksOfALink()
    {
        const Rows<ExportLayout, QList<int>> rows{
            {"window", ExportLayout::window, QList<int>{24, 12, 14, 10, 11, 10, 14}},
            {"compact", ExportLayout::compact, QList<int>{24, 12, 14, 11, 10, 10, 14}},
        };
        for (const auto &[layout, sizes] : rows) {
            const QString url = u"https://a.example"_s;
            const auto placed = placements(pdfOf(
                makeDocument({makeLink(url, u"Title"_s, u"Summary"_s), makeLink(url)}, layout)));
            QList<int> found;
            for (const Placement &placement : placed.first(sizes.size()))
                found.append(int(placement.size));
            QCOMPARE(found, sizes);
            const int summary = layout == ExportLayout::window ? 3 : 5;
            QCOMPARE(placed[summary].x, 60.0);
        }
    }

    void breaksPages()
    {
        const auto before = [](int tallTitles, int tallUrls) {
            QList<CapturedLink> links;
            for (int i = 0; i < 6; ++i)
                links.append(linkOf(i < tallTitles ? 2 : 1, i < tallUrls ? 2 : 1));
            return links;
        };
        constexpr double titleBaseline = 14.965;
        constexpr double summaryBaseline = 10.690;
        const Rows<QList<CapturedLink>, double, int, double> rows{
            {"a block that reaches 742 stays", before(0, 0) + QList{linkOf(2, 2, lines(6))}, 10.0,
             1, 660 + summaryBaseline},
            {"a block one point longer moves", before(0, 0) + QList{linkOf(5, 1, lines(3))}, 10.0,
             2, 50 + summaryBaseline},
            {"a link with 80 points left stays", before(1, 5) + QList{linkOf(1, 1, u"S"_s)}, 14.0,
             1, 662 + titleBaseline},
            {"a link with 79 points left moves", before(5, 0) + QList{linkOf(1, 1, u"S"_s)}, 14.0,
             2, 50 + titleBaseline},
            {"a block taller than a page begins one",
             QList{linkOf(1, 1, lines(100)), linkOf(1, 1, u"S"_s)}, 14.0, 3, 50 + titleBaseline},
        };
        for (const auto &[links, size, page, y] : rows) {
            const auto placed = placements(pdfOf(makeDocument(links, ExportLayout::compact)));
            const auto last =
                std::find_if(placed.rbegin(), placed.rend(),
                             [size](const Placement &each) { return each.size == size; });
            QVERIFY(last != placed.rend());
            QCOMPARE(last->page, page);
            QVERIFY2(qAbs(last->y - y) < 0.01, qPrintable(QString::number(last->y)));
        }
    }

    void isAWholeDocumentWithItsFonts()
    {
        const QByteArray pdf = pdfOf(makeDocument(manyLanguages()));
        QVERIFY(outputOf(u"qpdf"_s, {u"--check"_s, u"IN"_s}, pdf).contains("No syntax"));
        const QByteArray facts = outputOf(u"pdfinfo"_s, {u"IN"_s}, pdf);
        for (const char *const fact :
             {"Pages:           2\n", "612 x 792 pts (letter)", "Producer:        cairo",
              "CreationDate:    Fri Nov 21 08:05:00 2025"})
            QVERIFY2(facts.contains(fact), fact);
        for (const char *const auxiliary : {"Title:", "Author:", "Creator:"})
            QVERIFY2(!facts.contains(auxiliary), auxiliary);

        auto fonts = outputOf(u"pdffonts"_s, {u"IN"_s}, pdf).split('\n').sliced(2);
        fonts.removeAll(QByteArray());
        QVERIFY(fonts.size() > 5);
        for (const QByteArray &font : fonts)
            QVERIFY2(font.contains(" yes yes "), font); // embedded, subset
    }

    void holdsEveryTextInOrder()
    {
        const QByteArray pdf = pdfOf(makeDocument(manyLanguages()));
        const QString text =
            bare(QString::fromUtf8(outputOf(u"pdftotext"_s, {u"IN"_s, u"-"_s}, pdf)));
        qsizetype place = 0;
        for (const CapturedLink &link : manyLanguages()) {
            for (const QString &expected : {*link.title, *link.summary, link.url}) {
                place = text.indexOf(bare(expected), place);
                QVERIFY2(place >= 0, qPrintable(expected));
                place += bare(expected).size();
            }
        }
    }

    void slantsNothingByForce()
    {
        const QString plain = QString::fromLatin1(outputOf(u"qpdf"_s, {u"--qdf"_s, u"IN"_s, u"-"_s},
                                                           pdfOf(makeDocument(manyLanguages()))));
        static const QRegularExpression matrix(u"^\\S+ (\\S+) (\\S+) \\S+ \\S+ \\S+ Tm$"_s,
                                               QRegularExpression::MultilineOption);
        auto matrices = matrix.globalMatch(plain);
        QVERIFY(matrices.hasNext());
        while (matrices.hasNext()) {
            const auto match = matrices.next();
            QVERIFY2(match.captured(1).toDouble() == 0 && match.captured(2).toDouble() == 0,
                     qPrintable(match.captured()));
        }
    }

    void drawsEmojiOnceAndSharp()
    {
        const QString plain = QString::fromLatin1(
            outputOf(u"qpdf"_s, {u"--qdf"_s, u"IN"_s, u"-"_s},
                     pdfOf(makeDocument({makeLink(u"https://a.example"_s, u"🎉 🎉"_s)}))));
        QCOMPARE(plain.count(u"/Subtype /Image"), 2); // its colours and how opaque they are
        static const QRegularExpression width(u"/Width (\\d+)"_s);
        QVERIFY(width.match(plain).captured(1).toInt() >= 14 * 300 / 72);
    }

    void keepsTheDirectionOfALongText()
    {
        const QString text =
            u"بداية "_s + QString(u"all these words are English ones "_s).repeated(150);
        const auto boxes =
            QString::fromUtf8(outputOf(u"pdftotext"_s, {u"-bbox-layout"_s, u"IN"_s, u"-"_s},
                                       pdfOf(makeDocument({makeLink(u"u"_s, u"t"_s, text)}))));
        static const QRegularExpression line(u"<line xMin=\"6\\S+ yMin=\\S+ xMax=\"([\\d.]+)"_s);
        QStringList ends;
        for (auto found = line.globalMatch(boxes); found.hasNext();)
            ends.append(found.next().captured(1));
        QVERIFY(ends.size() > 40);
        for (const QString &end : ends)
            QVERIFY2(end.toDouble() > 560, qPrintable(end));
    }

    void givesTheSameBytesForTheSameDocument()
    {
        const ExportDocument document = makeDocument(manyLanguages());
        QCOMPARE(pdfOf(document), pdfOf(document));
    }

    void drawsWhateverComes()
    {
        const Rows<QString, QString> rows{
            {"controls", u"a\0b\ab\x1b[1mc\u0085d\te"_s, u"abb[1mcd e"_s},
            {"line ends", u"a\r\nb\rc"_s, u"a\nb\nc"_s},
            {"lone surrogates", u"a%1b%2"_s.arg(QChar(0xD83C)).arg(QChar(0xDC00)),
             u"a\uFFFDb\uFFFD"_s},
            {"nothing", u""_s, QString()},
            {"a megabyte without a space", QString(1 << 20, u'x'), u"xxxxxxxxxxxx"_s},
            {"words of 4,000 characters", QString(u"w"_s.repeated(4000) + u' ').repeated(5),
             u"wwwwwwww"_s},
            {"a megabyte of line ends", QString(1 << 20, u'\n'), QString()},
            {"a megabyte of nothing visible", QString(1 << 20, QChar(0x200B)), QString()},
            {"a megabyte of accents", u'e' + QString(1 << 20, QChar(0x0301)), QString()},
            {"many directions", QString(u"a\u202Eא\u2067b\u202A1"_s).repeated(5000), QString()},
            {"no characters", u"a\uFFFF\uFDD0\U0001FFFEb"_s, u"a\uFFFD\uFFFD\uFFFDb"_s},
        };
        for (const auto &[text, expected] : rows) {
            const auto begin = countedTime();
            const QByteArray pdf = pdfOf(makeDocument({makeLink(text, text, text)}));
            QVERIFY(countedTime() - begin < 5s);
            QVERIFY(outputOf(u"qpdf"_s, {u"--check"_s, u"IN"_s}, pdf).contains("No syntax"));
            const auto printed =
                QString::fromUtf8(outputOf(u"pdftotext"_s, {u"IN"_s, u"-"_s}, pdf));
            QVERIFY2(printed.contains(expected), qPrintable(printed.left(200)));
        }
    }

    void leavesNothingOfWhatWasStopped()
    {
        const QString path = m_folder.filePath(u"stopped.pdf"_s);
        std::stop_source stop;
        stop.request_stop();
        const ExportDocument document = makeDocument(manyLanguages());
        const auto result = exportToFile(document, ExportFormat::pdf, path, stop.get_token());
        QVERIFY(!result);
        QCOMPARE(result.error().kind, ExportError::Kind::stopped);
        QVERIFY(QDir(m_folder.path())
                    .entryList({u".strandloom*"_s, u"stopped*"_s}, QDir::AllEntries | QDir::Hidden)
                    .isEmpty());
    }
};

/// What `program` prints about `pdf`; empty when it fails.
QByteArray PdfWriterTest::outputOf(const QString &program, QStringList arguments,
                                   const QByteArray &pdf)
{
    QFile file(m_folder.filePath(u"in.pdf"_s));
    if (!file.open(QIODevice::WriteOnly) || file.write(pdf) != pdf.size())
        return {};
    file.close();
    QProcess process;
    process.start(program, arguments.replaceInStrings(u"IN"_s, file.fileName()));
    const bool isDone = process.waitForFinished() && process.exitCode() == 0;
    return isDone ? process.readAllStandardOutput() : QByteArray();
}

QList<Placement> PdfWriterTest::placements(const QByteArray &pdf)
{
    const QByteArray plain =
        outputOf(u"qpdf"_s, {u"--qdf"_s, u"--object-streams=disable"_s, u"IN"_s, u"-"_s}, pdf);
    static const QRegularExpression event(
        u"^%% Contents for page (\\d+)|^(\\d+) 0 -?\\d+ -\\d+ (\\S+) (\\S+) Tm$"_s,
        QRegularExpression::MultilineOption);
    QList<Placement> found;
    int page = 0;
    auto events = event.globalMatch(QString::fromLatin1(plain));
    while (events.hasNext()) {
        const auto match = events.next();
        if (match.hasCaptured(1))
            page = match.captured(1).toInt();
        else
            found.append({page, match.captured(2).toDouble(), match.captured(3).toDouble(),
                          match.captured(4).toDouble()});
    }
    return found;
}

/// The fonts are what the tests are written for, whatever the machine prefers.
int main(int count, char **arguments)
{
    const QTemporaryDir folder;
    QFile config(folder.filePath(u"fonts.conf"_s));
    if (!config.open(QIODevice::WriteOnly))
        return 1;
    config.write("<?xml version='1.0'?><!DOCTYPE fontconfig SYSTEM 'fonts.dtd'><fontconfig>"
                 "<dir>/usr/share/fonts/truetype/noto</dir>"
                 "<dir>/usr/share/fonts/opentype/noto</dir>"
                 "<include>/usr/share/fontconfig/conf.avail/10-scale-bitmap-fonts.conf</include>"
                 "<include>/usr/share/fontconfig/conf.avail/90-synthetic.conf</include>"
                 "<cachedir>/var/cache/fontconfig</cachedir></fontconfig>");
    config.close();
    qputenv("FONTCONFIG_FILE", QFile::encodeName(config.fileName()));
    QCoreApplication application(count, arguments);
    PdfWriterTest test;
    return QTest::qExec(&test, count, arguments);
}
#include "PdfWriterTest.moc"
