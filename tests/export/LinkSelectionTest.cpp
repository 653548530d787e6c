// SPDX-License-Identifier: MIT
#include "LinkSelection.h"

#include "Calendar.h"
#include "ExportSamples.h"

#include <QDateTime>
#include <QScopeGuard>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

/// Local time of Berlin, where clocks went back on 2025-10-26 and forward on 2025-03-30.
Instant at(const QString &text)
{
    return instantOf(QDateTime::fromString(text, Qt::ISODateWithMs));
}

constexpr auto moment = Instant::duration(1);

} // namespace

class LinkSelectionTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    static void initTestCase();
    void coversTheDaysOfTheCalendar_data();
    void coversTheDaysOfTheCalendar();
    void beginsTheDayAtTheFirstOfTwoMidnights();
    void includesBothCustomBounds();
    void readsRangesOfTheCommandLine_data();
    void readsRangesOfTheCommandLine();
    void findsTextsAsReadersExpect_data();
    void findsTextsAsReadersExpect();
};

void LinkSelectionTest::initTestCase()
{
    qputenv("TZ", "Europe/Berlin");
    tzset();
}

void LinkSelectionTest::coversTheDaysOfTheCalendar_data()
{
    QTest::addColumn<DateRangeOption>("range");
    QTest::addColumn<QString>("now");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("behind"); ///< empty: there is no end
    const auto row = [](const char *name, DateRangeOption range, const QString &now,
                        const QString &first, const QString &behind = {}) {
        QTest::newRow(name) << range << now << first << behind;
    };
    using enum DateRangeOption;
    row("today", today, u"2025-11-21T15:00"_s, u"2025-11-21T00:00"_s, u"2025-11-22T00:00"_s);
    row("today at midnight", today, u"2025-11-21T00:00"_s, u"2025-11-21T00:00"_s,
        u"2025-11-22T00:00"_s);
    row("today has 25 hours", today, u"2025-10-26T23:30"_s, u"2025-10-26T00:00"_s,
        u"2025-10-27T00:00"_s);
    row("yesterday", yesterday, u"2025-11-21T00:00"_s, u"2025-11-20T00:00"_s,
        u"2025-11-21T00:00"_s);
    row("yesterday had 23 hours", yesterday, u"2025-03-31T12:00"_s, u"2025-03-30T00:00"_s,
        u"2025-03-31T00:00"_s);
    row("yesterday of another year", yesterday, u"2025-01-01T12:00"_s, u"2024-12-31T00:00"_s,
        u"2025-01-01T00:00"_s);
    row("7 days", last7Days, u"2025-11-21T15:00"_s, u"2025-11-14T15:00"_s);
    row("7 days, clocks changed", last7Days, u"2025-10-28T15:00"_s, u"2025-10-21T15:00"_s);
    row("7 days, the hour did not exist", last7Days, u"2025-04-06T02:30"_s, u"2025-03-30T03:30"_s);
    row("30 days", last30Days, u"2025-11-21T15:00"_s, u"2025-10-22T15:00"_s);
}

void LinkSelectionTest::coversTheDaysOfTheCalendar()
{
    QFETCH(DateRangeOption, range);
    QFETCH(QString, now);
    QFETCH(QString, first);
    QFETCH(QString, behind);
    const DateSpan span = spanOf(range, at(now), {});
    QVERIFY(span.contains(at(first)));
    QVERIFY(!span.contains(at(first) - moment));
    if (behind.isEmpty()) {
        QVERIFY(span.contains(at(now) + 24h * 365));
    } else {
        QVERIFY(span.contains(at(behind) - moment));
        QVERIFY(!span.contains(at(behind)));
    }
}

void LinkSelectionTest::beginsTheDayAtTheFirstOfTwoMidnights()
{
    const auto berlin = qScopeGuard([] { initTestCase(); });
    qputenv("TZ", "America/Havana"); // from 1:00 back to 0:00 on 2025-11-02
    tzset();
    const Instant firstMidnight = at(u"2025-11-02T04:00Z"_s);
    const Instant noon = at(u"2025-11-02T12:00"_s);
    QCOMPARE(spanOf(DateRangeOption::today, noon, {}).first, firstMidnight);
    QCOMPARE(spanOf(DateRangeOption::yesterday, noon, {}).last, firstMidnight - moment);
}

void LinkSelectionTest::includesBothCustomBounds()
{
    const DateSpan custom{at(u"2025-11-20T10:15"_s), at(u"2025-11-21T10:15"_s)};
    const DateSpan span = spanOf(DateRangeOption::custom, at(u"2025-12-01T00:00"_s), custom);
    QVERIFY(span.contains(custom.first) && span.contains(custom.last));
    QVERIFY(!span.contains(custom.first - moment) && !span.contains(custom.last + moment));
    const DateSpan reversed{custom.last, custom.first};
    QVERIFY(!reversed.contains(custom.first) && !reversed.contains(custom.last));
}

void LinkSelectionTest::readsRangesOfTheCommandLine_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<std::optional<DateSpan>>("span");
    const auto row = [](const QString &text, const std::optional<DateSpan> &span) {
        QTest::newRow(qPrintable(text)) << text << span;
    };
    row(u"today"_s, DateSpan{at(u"2025-11-21T00:00"_s), at(u"2025-11-22T00:00"_s) - moment});
    row(u"yesterday"_s, DateSpan{at(u"2025-11-20T00:00"_s), at(u"2025-11-21T00:00"_s) - moment});
    row(u"last7Days"_s, DateSpan{at(u"2025-11-14T15:00"_s)});
    row(u"last30Days"_s, DateSpan{at(u"2025-10-22T15:00"_s)});
    row(u"all"_s, DateSpan());
    row(u"2025-10-25..2025-10-26"_s,
        DateSpan{at(u"2025-10-25T00:00"_s), at(u"2025-10-27T00:00"_s) - moment});
    row(u"2025-10-25T08:00..2025-10-26T09:30:15.250"_s,
        DateSpan{at(u"2025-10-25T08:00"_s), at(u"2025-10-26T09:30:15.250"_s)});
    row(u"2025-10-25T08:00Z..2025-10-26"_s,
        DateSpan{at(u"2025-10-25T10:00"_s), at(u"2025-10-27T00:00"_s) - moment});
    row(u"2026-03-29T02:30..2025-10-26T02:30"_s, // skipped, and there twice
        DateSpan{at(u"2026-03-29T03:30"_s), at(u"2025-10-26T00:30Z"_s)});
    row(u"2025-10-26T02:30+01:00..2025-10-26"_s,
        DateSpan{at(u"2025-10-26T01:30Z"_s), at(u"2025-10-27T00:00"_s) - moment});
    for (const auto &text : {u""_s, u"Today"_s, u".."_s, u"2025-10-25"_s, u"2025-10-25.."_s,
                             u"2025-02-30..2025-03-01"_s, u"2025-10-25..2025-10-26..2025-10-27"_s,
                             u"2025-10-25..yesterday"_s, u"2025-10-25T08:00ZZ..2025-10-26"_s})
        row(text, std::nullopt);
}

void LinkSelectionTest::readsRangesOfTheCommandLine()
{
    QFETCH(QString, text);
    QFETCH(std::optional<DateSpan>, span);
    QVERIFY(parseSpan(text, at(u"2025-11-21T15:00"_s)) == span);
}

void LinkSelectionTest::findsTextsAsReadersExpect_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("sought");
    QTest::addColumn<bool>("isFound");
    const QString url = u"https://example.org/path"_s;
    const auto row = [&](const char *name, const QString &title, const QString &sought,
                         bool isFound, const QString &locale = u"en_US"_s) {
        QTest::newRow(name) << locale << url << title << sought << isFound;
    };
    row("nothing sought", {}, u""_s, true);
    row("capitals in the search", {}, u"EXAMPLE.ORG/P"_s, true);
    row("capitals in the title", u"A TITLE"_s, u"title"_s, true);
    row("no title", {}, u"title"_s, false);
    row("spaces are a search", u"OneWord"_s, u" "_s, false);
    row("spaces are found", u"two words"_s, u" "_s, true);
    row("URL and title are two texts", u"title"_s, u"pathtitle"_s, false);
    row("sharp s", u"Die STRASSE"_s, u"straße"_s, true);
    row("composed and not", u"cafe\u0301"_s, u"CAF\u00C9"_s, true);
    row("an accent counts", u"café"_s, u"cafe"_s, false);
    row("final sigma", u"ΟΔΟΣ"_s, u"οδος"_s, true);
    row("one I in English", u"INFO"_s, u"info"_s, true);
    row("two I in Turkish", u"INFO"_s, u"info"_s, false, u"tr_TR"_s);
    row("dotless i in Turkish", u"ISPARTA"_s, u"ısparta"_s, true, u"tr_TR"_s);
    row("dotted I in Azerbaijani", u"İdman"_s, u"idman"_s, true, u"az"_s);
    row("half a character", u"a\U0001F389"_s, QString(QChar(0xD83C)), false);
}

void LinkSelectionTest::findsTextsAsReadersExpect()
{
    QFETCH(QString, locale);
    QFETCH(QString, url);
    QFETCH(QString, title);
    QFETCH(QString, sought);
    const LinkSelection selection({}, sought, LocalizedSearch(locale));
    const QString summary = sought; // is never searched
    QTEST(selection.accepts(makeLink(url, title, summary)), "isFound");
}

QTEST_GUILESS_MAIN(LinkSelectionTest)
#include "LinkSelectionTest.moc"
