// SPDX-License-Identifier: MIT
#include "Calendar.h"
#include "Rows.h"
#include "TestPanel.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class MenuBarViewModelTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { qputenv("TZ", "Europe/Berlin"); }

    void countsTheListedLinksAndThoseOfToday()
    {
        TestPanel panel;
        QVERIFY(panel.model.isEmpty());
        QCOMPARE(panel.model.countText(), u"0 links"_s);
        QCOMPARE(panel.model.todayText(), u"0 today"_s);

        const auto sinceMidnight = std::chrono::duration_cast<std::chrono::seconds>(
            panel.clock.now() - startOfDay(panel.clock.now()));
        panel.add(u"https://a.example/last-of-yesterday"_s, -int(sinceMidnight.count()) - 1);
        panel.add(u"https://a.example/first-of-today"_s, -int(sinceMidnight.count()));
        const CapturedLink hidden = panel.add(u"https://a.example/hidden"_s);
        QVERIFY(panel.context().hide({hidden.id}));
        QSignalSpy changes(&panel.model, &MenuBarViewModel::changed);
        panel.settle();
        QCOMPARE(changes.count(), 1);
        QVERIFY(!panel.model.isEmpty());
        QCOMPARE(panel.model.countText(), u"2 links"_s);
        QCOMPARE(panel.model.todayText(), u"1 today"_s);
    }

    void startsANewDayAtMidnight()
    {
        TestPanel panel;
        panel.addLinks(2);
        QCOMPARE(panel.model.todayText(), u"2 today"_s);
        const Instant midnight = *addDays(startOfDay(panel.clock.now()), 1);
        const auto rest =
            std::chrono::floor<std::chrono::milliseconds>(midnight - panel.clock.now());
        panel.clock.advance(rest - 1ms);
        QCOMPARE(panel.model.todayText(), u"2 today"_s);
        panel.clock.advance(1ms);
        QCOMPARE(panel.model.todayText(), u"0 today"_s);
        QCOMPARE(panel.model.countText(), u"2 links"_s);
    }

    void countsAnewAfterANightAsleep()
    {
        TestPanel panel;
        panel.addLinks(1);
        panel.clock.setWallClock(panel.clock.now() + 24h);
        panel.model.recountToday();
        QCOMPARE(panel.model.todayText(), u"0 today"_s);
    }

    void rowsShowTheTitleOrElseTheAddress()
    {
        using Title = std::optional<QString>;
        const Rows<std::optional<QString>, QString> rows{
            {"no title", Title(), u"https://a.example/x"_s},
            {"a title", Title(u"News"_s), u"News"_s},
            {"an empty title", Title(u""_s), u""_s},
            {"a huge title", Title(QString(4'000'000, u'w')), QString(500, u'w')},
        };
        for (const auto &[title, shown] : rows) {
            TestPanel panel;
            const CapturedLink link = panel.add(u"https://a.example/x"_s);
            if (title)
                panel.context().setTitle(link.id, *title);
            const LinkRow row = panel.model.row(positionOf(link));
            QCOMPARE(row.title, shown);
            QCOMPARE(row.time, u"11:13\u202fPM"_s); // 22:13 UTC, an hour later in Berlin
            QVERIFY(!row.summary);
        }
    }

    void actsOnTheWholeRecord()
    {
        TestPanel panel;
        const QString url = u"https://a.example/"_s + QString(1000, u'x');
        const QString summary(1000, u's');
        const CapturedLink link = panel.addSummarized(url, 0, summary);
        panel.model.open(link.id);
        QCOMPARE(panel.browser.opened, {url});
        panel.model.copyUrl(link.id);
        QCOMPARE(panel.clipboard.text(), url);
        panel.model.copySummary(link.id);
        QCOMPARE(panel.clipboard.text(), summary);
        panel.context().setTitle(link.id, u"<b>Tea</b>"_s);
        const QStringList told = panel.model.toolTip(link.id).split(u"<br>"_s);
        QCOMPARE(told.first(), u"&lt;b&gt;Tea&lt;/b&gt;"_s);
        QVERIFY(QString(told.at(1)).remove(QChar(0x200b)).startsWith(url.left(400)));
        QCOMPARE(told.at(2), u"Nov 14, 2023, 11:13\u202fPM"_s);
        panel.model.remove(link.id);
        QVERIFY(!panel.context().link(link.id));

        const qint64 copies = panel.clipboard.changeCount();
        panel.model.open(link.id); // a row may be clicked before its removal is announced
        panel.model.copyUrl(link.id);
        panel.model.copySummary(link.id);
        panel.model.remove(link.id);
        QCOMPARE(panel.browser.opened.size(), 1);
        QCOMPARE(panel.clipboard.changeCount(), copies);
    }

    void tellsWhatDoesNotWork()
    {
        TestPanel panel;
        QSignalSpy changes(&panel.model, &MenuBarViewModel::changed);
        QCOMPARE(panel.model.notice(), QString());
        panel.clipboard.setLimitation(u"Copies cannot be seen here."_s);
        QCOMPARE(panel.model.notice(), u"Copies cannot be seen here."_s);
        QCOMPARE(changes.count(), 1);
        panel.model.setNotice(u"Damaged."_s);
        QCOMPARE(panel.model.notice(), u"Damaged."_s);
        panel.model.setNotice({});
        {
            const FullDisk disk;
            panel.add(u"https://a.example/kept"_s);
            QVERIFY(panel.model.notice().contains(u"cannot be saved"));
        }
        changes.clear();
        panel.clock.advance(1min);
        QCOMPARE(panel.model.notice(), u"Copies cannot be seen here."_s);
        QVERIFY(changes.count() >= 1);
    }
};

QTEST_GUILESS_MAIN(MenuBarViewModelTest)
#include "MenuBarViewModelTest.moc"
