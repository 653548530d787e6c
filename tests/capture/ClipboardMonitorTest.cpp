// SPDX-License-Identifier: MIT
#include "ClipboardMonitor.h"

#include "Desk.h"
#include "DiagnosticLines.h"
#include "Rows.h"
#include "StoreDatabase.h"

#include <QTest>

#include <SQLiteCpp/Database.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

HttpReply page(const QByteArray &body, int status = 200)
{
    return HttpResponse{status, body, false};
}

} // namespace

class ClipboardMonitorTest : public QObject
{
    Q_OBJECT

    struct MonitoredDesk : Desk {
        std::unique_ptr<ClipboardMonitor> monitor;
        DiagnosticLines diagnostics;

        void start()
        {
            monitor = std::make_unique<ClipboardMonitor>(ClipboardMonitor::Dependencies{
                context(), clipboard, web, pages, preferences, clock});
            monitor->startMonitoring();
        }
        QStringList urls() const { return urlsOf(inStoreOrder(context())); }
        std::optional<QString> title() const { return inStoreOrder(context()).first().title; }
    };

private Q_SLOTS:
    void putsEachCopyThroughTheGates()
    {
        const QString site = u"https://example.org"_s;
        const Rows<QStringList, QStringList, QStringList> rows{
            {"white space around it",
             {u" \n\u00a0https://example.org\u2003\n"_s},
             {site},
             {u"Captured link: https://example.org"_s}},
            {"one slash is dropped",
             {u"https://a.example//"_s},
             {u"https://a.example/"_s},
             {u"Captured link: https://a.example/"_s}},
            {"nothing but the scheme",
             {u"https://"_s},
             {u"https:/"_s},
             {u"Captured link: https:/"_s}},
            {"the same with a slash",
             {site, site + u'/'},
             {site},
             {u"Captured link: https://example.org"_s,
              u"Skipping rapid duplicate URL: https://example.org"_s}},
            {"differs in case",
             {site, u"https://example.org/A"_s, u"https://example.org/a"_s},
             {site, u"https://example.org/A"_s, u"https://example.org/a"_s},
             {u"Captured link: https://example.org"_s, u"Captured link: https://example.org/A"_s,
              u"Captured link: https://example.org/a"_s}},
            {"came back later",
             {site, u"https://b.example"_s, site},
             {site, u"https://b.example"_s},
             {u"Captured link: https://example.org"_s, u"Captured link: https://b.example"_s,
              u"Skipping existing URL: https://example.org"_s}},
            {"no address",
             {u"example.org"_s, u"ftp://example.org"_s, u"HTTP://example.org"_s,
              u"see https://example.org"_s, u"https://a b"_s, u"https://x/<b>"_s, u""_s},
             {},
             {}},
            {"excluded, its sub-domains too",
             {u"https://EXCLUDED.example/x"_s, u"https://a.b.excluded.example:8080"_s},
             {},
             {u"Skipping excluded domain: https://EXCLUDED.example/x"_s,
              u"Skipping excluded domain: https://a.b.excluded.example:8080"_s}},
            {"excluded, whatever is written for it",
             {u"https://ex%63luded%2eexample"_s, u"https://Ｅxcluded。example/"_s,
              u"http://0x7F.1"_s, u"http://xn--mnchen-3ya.de"_s,
              u"http://a@b.de:1@excluded.example/"_s},
             {},
             {u"Skipping excluded domain: https://ex%63luded%2eexample"_s,
              u"Skipping excluded domain: https://Ｅxcluded。example"_s,
              u"Skipping excluded domain: http://0x7F.1"_s,
              u"Skipping excluded domain: http://xn--mnchen-3ya.de"_s,
              u"Skipping excluded domain: http://a@b.de:1@excluded.example"_s}},
            {"without a host, or one that browsers alone take",
             {u"http:///excluded.example"_s, u"https://foo-.example"_s},
             {u"http:///excluded.example"_s, u"https://foo-.example"_s},
             {u"Captured link: http:///excluded.example"_s,
              u"Captured link: https://foo-.example"_s}},
            {"not excluded",
             {u"https://notexcluded.example"_s},
             {u"https://notexcluded.example"_s},
             {u"Captured link: https://notexcluded.example"_s}},
        };
        for (const auto &[copies, stored, said] : rows) {
            MonitoredDesk desk;
            for (const QString &domain : {u"Excluded.Example"_s, u"https://b.example"_s,
                                          u" b.example"_s, u"127.0.0.1"_s, u"München.de"_s})
                QVERIFY(desk.context().insert(ExcludedDomain{QUuid::createUuid(), domain, {}}));
            desk.start();
            for (const QString &text : copies)
                desk.clipboard.copy(text);
            QCOMPARE(desk.urls(), stored);
            QCOMPARE(desk.diagnostics.lines(), said);
        }
    }

    void capturesNothingFromBeforeItsConstruction()
    {
        MonitoredDesk desk;
        desk.clipboard.startReading();
        desk.clipboard.copy(u"https://before.example"_s);
        desk.start();
        desk.monitor->checkClipboard();
        QCOMPARE(desk.urls(), QStringList());
    }

    void capturesAfterStopNothing()
    {
        MonitoredDesk desk;
        desk.start();
        desk.monitor->startMonitoring(); // twice is once
        desk.clipboard.copy(u"https://one.example"_s);
        desk.monitor->stopMonitoring();
        desk.clipboard.copy(u"https://two.example"_s);
        QCOMPARE(desk.urls(), QStringList{u"https://one.example"_s});
        QCOMPARE(desk.web.waiting(), 1);
    }

    void leavesOutWhatIsCopiedInAPause()
    {
        MonitoredDesk desk;
        desk.start();
        desk.monitor->setPaused(true);
        desk.clipboard.copy(u"https://paused.example"_s);
        QCOMPARE(desk.clipboard.text(), std::nullopt); // not even read
        desk.monitor->setPaused(false);
        desk.monitor->checkClipboard();
        desk.clipboard.copy(u"https://resumed.example"_s);
        QCOMPARE(desk.urls(), QStringList{u"https://resumed.example"_s});
    }

    void keepsACopyWhileTheStoreCannotBeRead()
    {
        MonitoredDesk desk;
        desk.start();
        SQLite::Database other(StoreDatabase::pathIn(desk.folder).toStdString(),
                               SQLite::OPEN_READWRITE);
        other.exec("ALTER TABLE links RENAME TO lost");
        desk.clipboard.copy(u"https://a.example"_s);
        QVERIFY(desk.diagnostics.take().value(0).startsWith(u"Failed to check URL existence: "));
        other.exec("ALTER TABLE lost RENAME TO links");
        desk.clock.advance(5s);
        QCOMPARE(desk.urls(), QStringList{u"https://a.example"_s});
    }

    void givesEveryNewLinkItsDefaults()
    {
        MonitoredDesk desk;
        desk.start();
        desk.clipboard.copy(u"https://one.example"_s);
        const CapturedLink link = desk.context().visibleNewestFirst({}, 1)->first();
        QVERIFY(!link.id.isNull() && !link.title && !link.summary);
        QVERIFY(link.isVisible && !link.isExported);
        QCOMPARE(link.copiedAt, desk.clock.now());
    }

    void countsTheFiveSecondsFromTheFirstCopy()
    {
        const QString url = u"https://example.org"_s;
        MonitoredDesk desk;
        desk.start();
        desk.clipboard.copy(url);
        for (const auto pause : {4999ms, 1ms, 4999ms, 1ms}) {
            desk.clock.advance(pause);
            desk.clipboard.copy(url);
        }
        const QString rapid = u"Skipping rapid duplicate URL: "_s + url;
        const QString existing = u"Skipping existing URL: "_s + url; // begins a new five seconds
        QCOMPARE(desk.diagnostics.lines(),
                 QStringList({u"Captured link: "_s + url, rapid, existing, rapid, existing}));
    }

    void reloadsExcludedDomains()
    {
        MonitoredDesk desk;
        desk.start();
        const ExcludedDomain domain{QUuid::createUuid(), u"example.org"_s, {}};
        QVERIFY(desk.context().insert(domain));
        desk.monitor->loadExcludedDomains();
        desk.clipboard.copy(u"https://example.org"_s);
        QCOMPARE(desk.urls(), QStringList());

        // The excluded gate did not take note of the address, so it is no rapid duplicate either.
        QVERIFY(desk.context().removeExcludedDomain(domain.id));
        desk.monitor->loadExcludedDomains();
        desk.clipboard.copy(u"https://example.org"_s);
        QCOMPARE(desk.urls(), QStringList{u"https://example.org"_s});
    }

    void fetchesTheTitle()
    {
        // Status 0 is no answer; a null title is absent.
        const Rows<QByteArray, int, QString, QString> rows{
            {"page", "<title> A &amp; B\n</title>", 200, u"A & B"_s, u"Fetched title: A & B"_s},
            {"Latin-1", "<title>caf\xe9</title>", 200, u"café"_s, u"Fetched title: café"_s},
            {"two lines", "<title>a\nb</title>", 200, u"a\nb"_s, u"Fetched title: a b"_s},
            {"no title", "<p>nothing</p>", 200, QString(), QString()},
            {"not found", "<title>Nothing</title>", 404, QString(), QString()},
            {"no content", "<title>Odd</title>", 204, QString(), QString()},
            {"no answer", "", 0, QString(),
             u"Failed to fetch title for https://a.example: no route"_s},
        };
        for (const auto &[body, status, title, said] : rows) {
            MonitoredDesk desk;
            desk.start();
            desk.clipboard.copy(u"https://a.example"_s);
            desk.diagnostics.take();
            desk.web.answerNext(
                status ? page(body, status)
                       : Unexpected{HttpError{HttpError::Kind::unreachable, u"no route"_s}});
            desk.pages.waitForDone();
            QCoreApplication::processEvents();

            QCOMPARE(desk.title().value_or(QString()), title);
            QCOMPARE(desk.title().has_value(), !title.isNull());
            QCOMPARE(desk.diagnostics.lines().join(u'|'), said);
            const HttpRequest request = desk.web.requests().first();
            QCOMPARE(request.url, "https://a.example");
            QCOMPARE(request.inactivityLimit, 10s);
            QCOMPARE(request.headers.size(), 1);
            QCOMPARE(request.headers.first().value.size(), 68);
        }
    }

    void leavesADeletedLinkDeleted()
    {
        const Rows<bool> rows{{"while the page is fetched", false},
                              {"while the page is read", true}};
        for (const auto &[whileReading] : rows) {
            MonitoredDesk desk;
            desk.start();
            desk.clipboard.copy(u"https://a.example"_s);
            const LinkId id = desk.context().visibleNewestFirst({}, 1)->first().id;
            if (!whileReading)
                QVERIFY(desk.context().remove({id}));
            desk.web.answerNext(page("<title>Late</title>"));
            if (whileReading)
                QVERIFY(desk.context().remove({id}));
            desk.pages.waitForDone();
            QCoreApplication::processEvents();
            QCOMPARE(desk.context().counts().stored, 0);
            QVERIFY(!desk.diagnostics.lines().contains(u"Fetched title: Late"_s));
        }
    }

    void prunesOnlyWhatTheUserChose()
    {
        const Rows<std::optional<int>, int> rows{
            {"never chosen", std::optional<int>(), 3}, {"never", std::optional(0), 3},
            {"nonsense", std::optional(-1), 3},        {"a day", std::optional(1), 2},
            {"a year", std::optional(365), 3},
        };
        for (const auto &[days, left] : rows) {
            MonitoredDesk desk;
            desk.add(u"https://old.example"_s, -25 * 3600);
            desk.add(u"https://younger.example"_s, -23 * 3600);
            desk.add(u"https://limit.example"_s, -24 * 3600);
            if (days)
                desk.preferences.set(preferenceKeys::autoPruneDays, *days);
            desk.start();
            QCOMPARE(desk.context().counts().stored, left);
            const QStringList said =
                left == 3 ? QStringList() : QStringList{u"Auto-pruned 1 old links"_s};
            QCOMPARE(desk.diagnostics.lines(), said);
        }
    }
};

QTEST_GUILESS_MAIN(ClipboardMonitorTest)
#include "ClipboardMonitorTest.moc"
