// SPDX-License-Identifier: MIT
#include "Calendar.h"
#include "Desk.h"
#include "DiagnosticLines.h"
#include "ExportSamples.h"
#include "ExportViewModel.h"
#include "InlineExportViewModel.h"
#include "Rows.h"

#include <QDateTime>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

/// The desk, and a summary writer, for screens to export with.
struct ExportDesk : Desk {
    std::unique_ptr<ExportService> service;
    QList<QList<LinkId>> batches; ///< what was to be summarised
    std::function<void()> duringBatch = [] {};
    DiagnosticLines diagnostics;

    ExportDesk()
    {
        dialog.answer = path();
        service = std::make_unique<ExportService>(ExportService::Dependencies{
            context(), dialog, [this](QList<LinkId> ids) { return summarize(std::move(ids)); },
            clock, u"en_US"_s});
    }
    QString path() const { return temporary.filePath(u"out.txt"_s); }

    CapturedLink add(const QString &url, std::chrono::hours age = 0h,
                     const QString &summary = u"-"_s)
    {
        const CapturedLink link = makeLink(url, {}, summary, clock.now() - age);
        context().insert(link);
        return link;
    }
    Task<> summarize(QList<LinkId> ids)
    {
        batches.append(ids);
        YieldToLoop yield;
        co_await yield;
        duringBatch();
        context().setSummary(ids.first(), u"Made."_s);
    }
    /// The lines of the written file that are addresses.
    QStringList written() const
    {
        QFile file(path());
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(file.readAll()).split(u'\n').filter(u"://"_s);
    }
    bool isMarked(const CapturedLink &link)
    {
        const auto stored = context().link(link.id);
        return stored && !stored->isVisible && stored->isExported;
    }
};

template <typename Screen>
void exportWith(Screen &screen)
{
    screen.exportLinks();
    QTRY_VERIFY(!screen.isExporting());
}

} // namespace

class ExportScreenTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void asksForAFileByTheFormat()
    {
        ExportDesk desk;
        desk.dialog.answer = std::nullopt;
        const auto window = std::make_shared<ExportViewModel>(*desk.service);
        for (const ExportFormat format : exportFormats) {
            window->setSelectedFormat(format);
            exportWith(*window);
        }
        const auto compact = std::make_shared<InlineExportViewModel>(*desk.service);
        for (const InlineExportFormat format : inlineExportFormats) {
            compact->setExportFormat(format);
            exportWith(*compact);
        }
        QStringList names;
        QList<ContentType> types;
        for (const SaveRequest &request : std::as_const(desk.dialog.requests)) {
            names.append(request.suggestedName);
            types.append(request.contentType);
        }
        QCOMPARE(names,
                 (QStringList{u"links.txt"_s, u"links.md"_s, u"links.pdf"_s, u"links-export.txt"_s,
                              u"links-export.md"_s, u"links-export.pdf"_s}));
        using enum ContentType;
        QCOMPARE(types, (QList{plainText, plainText, pdf, plainText, text, pdf}));
    }

    void writesInTheOrderOfTheScreen()
    {
        ExportDesk desk;
        desk.add(u"https://first.example"_s, 3h);
        desk.add(u"https://second.example"_s, 1h);
        desk.add(u"https://third.example"_s, 2h);
        const auto window = std::make_shared<ExportViewModel>(*desk.service);
        QCOMPARE(window->countText(), u"3 links to export"_s);
        window->setSelectedFormat(ExportFormat::text);
        QSignalSpy windowDone(window.get(), &ExportViewModel::done);
        exportWith(*window);
        QCOMPARE(windowDone.size(), 1);
        QCOMPARE(desk.written(),
                 (QStringList{u"https://first.example"_s, u"https://second.example"_s,
                              u"https://third.example"_s}));
        QCOMPARE(desk.diagnostics.take(), QStringList());

        const auto compact = std::make_shared<InlineExportViewModel>(*desk.service);
        compact->setExportFormat(InlineExportFormat::text);
        compact->setSearchText(u"D.EXAMPLE"_s);
        exportWith(*compact);
        QCOMPARE(desk.written(),
                 (QStringList{u"https://second.example"_s, u"https://third.example"_s}));
        QCOMPARE(
            desk.diagnostics.take(),
            (QStringList{u"Export button clicked, links to export: 2"_s,
                         u"Save panel response: 1"_s, u"Export successful to: " + desk.path()}));
    }

    void clearsExactlyWhatWasWritten()
    {
        ExportDesk desk;
        const auto kept = desk.add(u"https://old.example"_s, 24h * 8);
        const auto written = desk.add(u"https://new.example"_s);
        const auto removed = desk.add(u"https://removed.example"_s);
        const auto screen = std::make_shared<InlineExportViewModel>(*desk.service);
        screen->setExportFormat(InlineExportFormat::text);
        screen->setClearAfterExport(true);
        std::optional<CapturedLink> late;
        desk.dialog.meanwhile = [&] {
            QVERIFY(bool(desk.context().remove({removed.id})));
            QTimer::singleShot(0, [&] { late = desk.add(u"https://late.example"_s); }); // too late
        };
        exportWith(*screen);
        QCOMPARE(desk.written(), QStringList{u"https://new.example"_s});
        QVERIFY(desk.isMarked(written));
        QVERIFY(!desk.isMarked(kept));
        QVERIFY(late && !desk.isMarked(*late));
        QTRY_COMPARE(screen->linkCount(), 1);
    }

    void staysOpenWhenNothingWasWritten()
    {
        const Rows<std::optional<QString>, QStringList> rows{
            {"cancelled", std::optional<QString>(), QStringList{u"Save panel response: 0"_s}},
            {"not writable", std::optional(u"/nowhere/out.txt"_s),
             QStringList{u"Save panel response: 1"_s,
                         u"Export failed: /nowhere/out.txt: No such file or directory"_s}},
        };
        for (const auto &[answer, lines] : rows) {
            ExportDesk desk;
            desk.dialog.answer = answer;
            const auto link = desk.add(u"https://a.example"_s);
            const auto screen = std::make_shared<InlineExportViewModel>(*desk.service);
            screen->setClearAfterExport(true);
            QSignalSpy done(screen.get(), &InlineExportViewModel::done);
            exportWith(*screen);
            QCOMPARE(done.size(), 0);
            QVERIFY(desk.context().link(link.id)->isVisible);
            QCOMPARE(desk.diagnostics.take(),
                     QStringList{u"Export button clicked, links to export: 1"_s} + lines);
        }
    }

    void fillsInMissingSummaries()
    {
        ExportDesk desk;
        const auto without = desk.add(u"https://a.example"_s, 0h, {});
        const auto failing = desk.add(u"https://b.example"_s, 0h, {});
        desk.add(u"https://c.example"_s, 0h, u""_s); // present, though empty
        const auto screen = std::make_shared<ExportViewModel>(*desk.service);
        bool wasSummarizing = false;
        desk.duringBatch = [&] { wasSummarizing = screen->isSummarizing(); };
        desk.dialog.meanwhile = [&] { QVERIFY(!screen->isSummarizing()); };
        exportWith(*screen);
        QVERIFY(wasSummarizing);
        QCOMPARE(desk.batches, (QList<QList<LinkId>>{{without.id, failing.id}}));
        QCOMPARE(desk.diagnostics.take(), QStringList{u"Generating summaries for 2 links..."_s});
        QFile file(desk.path());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll().count("\n> "), 2); // made, and empty
    }

    void runsOneExportAtATime()
    {
        ExportDesk desk;
        const auto screen = std::make_shared<ExportViewModel>(*desk.service);
        desk.dialog.meanwhile = [&] { screen->exportLinks(); };
        screen->exportLinks();
        exportWith(*screen);
        QCOMPARE(desk.dialog.requests.size(), 1);
    }

    void goesOnWhenTheScreenCloses()
    {
        ExportDesk desk;
        const auto link = desk.add(u"https://a.example"_s, 0h, {});
        auto screen = std::make_shared<InlineExportViewModel>(*desk.service);
        screen->setClearAfterExport(true);
        screen->exportLinks();
        screen->cancel();
        const std::weak_ptr<InlineExportViewModel> left = screen;
        screen.reset();
        QTRY_VERIFY(left.expired());
        QVERIFY(QFile::exists(desk.path()));
        QVERIFY(desk.isMarked(link));
    }

    void leavesNoFileWhenTheProgramEnds()
    {
        Rows<int> rows{};
        for (int turns = 0; turns < 6; ++turns)
            rows.add({qPrintable(QString::asprintf("after %d turns", turns)), turns});
        for (const auto &[turns] : rows) {
            ExportDesk desk;
            desk.add(u"https://a.example"_s, 0h, {});
            auto screen = std::make_shared<ExportViewModel>(*desk.service);
            screen->setSelectedFormat(ExportFormat::pdf);
            screen->exportLinks();
            for (int i = 0; i < turns; ++i)
                QCoreApplication::processEvents();
            const std::weak_ptr<ExportViewModel> left = screen;
            screen.reset();
            desk.service.reset();
            QVERIFY(left.expired());
            const QStringList files =
                QDir(desk.temporary.path()).entryList(QDir::Files | QDir::Hidden);
            QVERIFY(files.isEmpty() || files == QStringList{u"out.txt"_s});
            QVERIFY(files.isEmpty() || QFileInfo(desk.path()).size() > 1000);
        }
    }

    void countsWhatFollowsTheStore()
    {
        ExportDesk desk;
        const auto link = desk.add(u"https://a.example"_s);
        const auto screen = std::make_shared<InlineExportViewModel>(*desk.service);
        screen->setSearchText(u"news"_s);
        QCOMPARE(screen->linkCount(), 0);
        desk.context().setTitle(link.id, u"Good News"_s);
        QTRY_COMPARE(screen->linkCount(), 1);
        desk.add(u"https://news.example"_s);
        QTRY_COMPARE(screen->linkCount(), 2);
        QVERIFY(bool(desk.context().hide({link.id})));
        QTRY_COMPARE(screen->linkCount(), 1);
        QVERIFY(bool(desk.context().removeAll()));
        QTRY_COMPARE(screen->linkCount(), 0);
    }

    void largeStoresAreReadAndClearedInParts()
    {
        constexpr int many = 2100;
        ExportDesk desk;
        QList<CapturedLink> links;
        for (int i = 0; i < many; ++i)
            links.append(makeLink(u"https://a.example/%1"_s.arg(i), {}, u"-"_s, desk.clock.now()));
        QVERIFY(bool(desk.context().insertAll(links)));
        QCoreApplication::processEvents();
        const auto screen = std::make_shared<ExportViewModel>(*desk.service);
        screen->setSelectedFormat(ExportFormat::text);
        screen->setClearAfterExport(true);
        qsizetype hiddenAtOnce = 0;
        connect(&desk.context(), &ModelContext::changed, this, [&](const StoreChange &change) {
            hiddenAtOnce = std::max(hiddenAtOnce, change.updated.size());
        });
        const auto during = desk.add(u"https://late.example"_s); // while the pages are read
        desk.context().setTitle(during.id, u"Late"_s);
        QTRY_COMPARE(screen->linkCount(), many + 1);
        exportWith(*screen);
        QVERIFY(hiddenAtOnce <= many / 4);
        QTRY_COMPARE(screen->linkCount(), 0);
        QVERIFY(desk.isMarked(during));
        const QStringList written = desk.written();
        QCOMPARE(written.size(), many + 1);
        QCOMPARE(written.first(), u"https://a.example/0"_s);
        QCOMPARE(written.last(), u"https://late.example"_s);
    }

    void keepsTheTimeOfDayOfCustomBounds()
    {
        ExportDesk desk;
        const auto screen = std::make_shared<ExportViewModel>(*desk.service);
        screen->setSelectedRange(DateRangeOption::custom);
        const Instant created = desk.clock.now();
        desk.add(u"https://start.example"_s, 48h);
        desk.add(u"https://end.example"_s);
        QTRY_COMPARE(screen->linkCount(), 1); // the one of the very moment
        desk.clock.advance(1h);
        desk.add(u"https://late.example"_s);
        screen->setCustomStartDay(dateTimeOf(created).date().addDays(-2));
        QTRY_COMPARE(screen->linkCount(), 2);
        QCOMPARE(screen->customStartDate(), *addDays(created, -2));
        screen->setCustomEndDay(dateTimeOf(created).date().addDays(1));
        QTRY_COMPARE(screen->linkCount(), 3);
    }
};

QTEST_GUILESS_MAIN(ExportScreenTest)
#include "ExportScreenTest.moc"
