// SPDX-License-Identifier: MIT
#include "SummaryService.h"

#include "AppInfo.h"
#include "Desk.h"
#include "DiagnosticLines.h"
#include "LocalMLService.h"
#include "Rows.h"
#include "WebContentExtractor.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

class BrokenModel final : public LocalMLService
{
public:
    using LocalMLService::LocalMLService;
    Task<ModelLoad> loadModel(std::function<void(double)>) override
    {
        const LocalMLError error{LocalMLError::Kind::modelLoadFailed, u"no room"_s};
        co_return Unexpected{error};
    }
};

HttpReply page(const QByteArray &title)
{
    return HttpResponse{200, "<title>" + title + "</title>", false};
}

Task<> keepSummary(SummaryService &service, LinkId id, std::optional<QString> *summary)
{
    *summary = co_await service.summarize(id);
}

} // namespace

class SummaryServiceTest : public QObject
{
    Q_OBJECT

    struct SummaryDesk : Desk {
        std::unique_ptr<LocalMLService> model =
            std::make_unique<LocalMLService>(AppInfo(QString()), clock);
        WebContentExtractor extractor{web, pages, clock};
        std::unique_ptr<SummaryService> service;
        DiagnosticLines diagnostics;
        QList<std::optional<SummaryProgress>> progress;
        Scope waiters;

        SummaryDesk() { makeService(); }
        void makeService()
        {
            service = std::make_unique<SummaryService>(context(), *model, extractor, clock);
            connect(service.get(), &SummaryService::currentProgressChanged, service.get(),
                    [this, own = service.get()] { progress.append(own->currentProgress()); });
        }
        LinkId addLink(const QString &url, const std::optional<QString> &title = {},
                       const std::optional<QString> &summary = {})
        {
            const CapturedLink link{QUuid::createUuid(), url, title, summary, clock.now()};
            context().insert(link);
            return link.id;
        }
        std::optional<QString> summary(const LinkId &id) { return context().link(id)->summary; }
        void start(const QList<LinkId> &ids) { waiters.start(service->summarizeAll(ids)); }
        /// Lets the model be loaded and the first page be asked for.
        bool reachFirstPage()
        {
            clock.advance(1s);
            return QTest::qWaitFor([this] { return web.waiting() == 1; });
        }
        /// Lets time pass until no batch runs and nobody waits.
        bool finish()
        {
            return QTest::qWaitFor([this] {
                clock.advance(100ms);
                return !service->isSummarizing() && waiters.isEmpty();
            });
        }
    };

private Q_SLOTS:
    void goesOnAfterAFailure()
    {
        SummaryDesk desk;
        desk.web.answerWith([](const HttpRequest &request) -> HttpReply {
            return request.url.endsWith("2")
                ? HttpReply(HttpResponse{500, "<title>no</title>", false})
                : page(request.url.right(1));
        });
        const QList<LinkId> ids{
            desk.addLink(u"http://a.org/1"_s), desk.addLink(u"http://a.org/2"_s),
            desk.addLink(u"http://a.org/3"_s), desk.addLink(u"http://a.org/4"_s, {}, u""_s)};
        desk.start(ids);
        QVERIFY(desk.service->isSummarizing());
        QVERIFY(desk.finish());
        QCOMPARE(desk.summary(ids[0]), u"1 - a webpage on a.org."_s);
        QCOMPARE(desk.summary(ids[1]), std::nullopt);
        QCOMPARE(desk.summary(ids[2]), u"3 - a webpage on a.org."_s);
        QCOMPARE(desk.summary(ids[3]), u""_s);
        using Progress = std::optional<SummaryProgress>;
        const QList<Progress> expected{Progress({0, 3}), Progress({1, 3}), Progress({2, 3}),
                                       Progress({3, 3}), Progress()};
        QVERIFY(desk.progress == expected);
        const QStringList lines{
            u"Generated summary for http://a.org/1: 1 - a webpage on a.org...."_s,
            u"Extraction failed for http://a.org/2: Failed to fetch page"_s,
            u"Generated summary for http://a.org/3: 3 - a webpage on a.org...."_s,
            u"Batch summarization complete: 3 links processed"_s};
        QCOMPARE(desk.diagnostics.lines(), lines);
        QVERIFY(desk.service->lastError().isEmpty());
    }

    void pausesAfterEachLink()
    {
        SummaryDesk desk;
        desk.start({desk.addLink(u"http://a.org"_s)});
        QVERIFY(desk.reachFirstPage());
        desk.web.answerNext(page("T"));
        QVERIFY(QTest::qWaitFor([&] { return desk.progress.last() == SummaryProgress{1, 1}; }));
        desk.clock.advance(99ms);
        QVERIFY(desk.service->isSummarizing());
        desk.clock.advance(1ms);
        QVERIFY(!desk.service->isSummarizing() && !desk.service->currentProgress());
    }

    void returnsAtOnceWhenNothingIsMissing()
    {
        SummaryDesk desk;
        const QList<LinkId> done{desk.addLink(u"http://a.org"_s, {}, u"S"_s), QUuid::createUuid()};
        desk.start(done);
        QVERIFY(desk.waiters.isEmpty() && desk.progress.isEmpty());
        desk.web.answerWith([](const HttpRequest &) { return page("T"); });
        desk.start({desk.addLink(u"http://b.org"_s)});
        Scope besides; // the batch that runs
        besides.start(desk.service->summarizeAll(done));
        QVERIFY(besides.isEmpty() && !desk.waiters.isEmpty());
        QVERIFY(desk.finish());
    }

    void leavesDeletedLinksDeleted()
    {
        SummaryDesk desk;
        const QList<LinkId> ids{desk.addLink(u"http://a.org"_s), desk.addLink(u"http://b.org"_s)};
        desk.start(ids);
        QVERIFY(desk.reachFirstPage());
        QVERIFY(desk.context().removeAll());
        desk.web.answerNext(page("T"));
        QVERIFY(desk.finish());
        QCOMPARE(desk.context().counts().stored, 0);
        QCOMPARE(desk.web.requests().size(), 1);
        QVERIFY(desk.progress.contains(SummaryProgress{2, 2}));
        QCOMPARE(desk.diagnostics.lines(),
                 QStringList{u"Batch summarization complete: 2 links processed"_s});
    }

    void takesTurnsWithAnotherBatch()
    {
        SummaryDesk desk;
        const LinkId first = desk.addLink(u"http://a.org/1"_s);
        const LinkId second = desk.addLink(u"http://a.org/2"_s);
        const LinkId third = desk.addLink(u"http://a.org/3"_s);
        desk.web.answerWith([](const HttpRequest &) { return page("T"); });
        desk.start({first, second});
        desk.start({third, second}); // which has its summary when its turn comes again
        QVERIFY(desk.progress.contains(SummaryProgress{0, 4}));
        QVERIFY(desk.finish());
        QVERIFY(desk.summary(first) && desk.summary(second) && desk.summary(third));
        QByteArrayList pages;
        for (const HttpRequest &request : desk.web.requests())
            pages.append(request.url.right(1));
        QCOMPARE(pages.first(2), QByteArrayList({"1", "3"}));
        QVERIFY(desk.progress.contains(SummaryProgress{4, 4}));
    }

    void goesOnWhenNobodyWaits()
    {
        SummaryDesk desk;
        const LinkId id = desk.addLink(u"http://a.org"_s);
        {
            Scope screen;
            screen.start(desk.service->summarizeAll({id}));
            QVERIFY(desk.reachFirstPage());
        }
        desk.web.answerNext(page("T"));
        QVERIFY(desk.finish());
        QVERIFY(desk.summary(id));
    }

    void endsWithTheService()
    {
        for (int wait = 0; wait < 3; ++wait) { // for the model, for the page, for the pause to end
            SummaryDesk desk;
            const LinkId id = desk.addLink(u"http://a.org"_s);
            auto screen = std::make_unique<Scope>();
            screen->start(desk.service->summarizeAll({id, desk.addLink(u"http://b.org"_s)}));
            if (wait > 0)
                QVERIFY(desk.reachFirstPage());
            if (wait > 1) {
                desk.web.answerNext(page("T"));
                QVERIFY(QTest::qWaitFor([&] { return desk.summary(id).has_value(); }));
            }
            QList<bool> busy;
            connect(desk.service.get(), &SummaryService::isSummarizingChanged, this,
                    [&busy, own = desk.service.get()] { busy.append(own->isSummarizing()); });
            screen.reset();
            desk.service.reset();
            QCOMPARE(busy, QList<bool>{false});
            QVERIFY(!desk.progress.last());
            QCOMPARE(desk.clock.alarmCount(), 0u);
            QCOMPARE(desk.web.waiting(), 0);
        }
    }

    void saysThatTheModelCannotBeLoaded()
    {
        SummaryDesk desk;
        desk.model = std::make_unique<BrokenModel>(AppInfo(QString()), desk.clock);
        desk.makeService();
        const LinkId id = desk.addLink(u"http://a.org"_s);
        desk.start({id});
        std::optional<QString> summary;
        desk.waiters.start(keepSummary(*desk.service, id, &summary));
        QVERIFY(desk.finish());
        QCOMPARE(desk.service->lastError(), u"Failed to load AI model: no room"_s);
        QCOMPARE(
            desk.diagnostics.lines(),
            QStringList(
                {u"Failed to load model: Failed to load AI model: no room"_s,
                 u"Failed to load model for summarization: Failed to load AI model: no room"_s}));
        QVERIFY(!desk.service->currentProgress() && !summary && desk.web.requests().isEmpty());
    }

    void fillsInAMissingTitle()
    {
        const Rows<QByteArray, QString, QString> rows{
            {"missing", "<title>T</title>"_ba, QString(), u"T"_s},
            {"empty", "<title>T</title>"_ba, u""_s, u"T"_s},
            {"kept", "<title>T</title>"_ba, u"Mine"_s, u"Mine"_s},
            {"Open Graph", "<meta property='og:title' content='OG'>"_ba, QString(), u"OG"_s},
            {"none", "text"_ba, QString(), QString()},
        };
        for (const auto &[html, before, after] : rows) {
            SummaryDesk desk;
            const auto title = before.isNull() ? std::nullopt : std::optional(before);
            const LinkId id = desk.addLink(u"http://a.org"_s, title);
            std::optional<QString> summary;
            desk.waiters.start(keepSummary(*desk.service, id, &summary));
            QVERIFY(desk.reachFirstPage());
            desk.web.answerNext(HttpResponse{200, html, false});
            QVERIFY(desk.finish());
            QCOMPARE(desk.context().link(id)->title.value_or(QString()), after);
            QVERIFY(summary && !desk.summary(id)); // which is for the caller to store
        }
    }

    void namesTransportErrors()
    {
        SummaryDesk desk;
        desk.web.answerWith([](const HttpRequest &) -> HttpReply {
            return Unexpected{HttpError{HttpError::Kind::timedOut, u"timed out"_s}};
        });
        desk.start({desk.addLink(u"http://a.org"_s)});
        QVERIFY(desk.finish());
        QCOMPARE(desk.diagnostics.lines().first(),
                 u"Unexpected error summarizing http://a.org: timed out"_s);
    }
};

QTEST_GUILESS_MAIN(SummaryServiceTest)
#include "SummaryServiceTest.moc"
