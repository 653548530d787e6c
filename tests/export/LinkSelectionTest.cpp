// SPDX-License-Identifier: MIT
#include "LinkSelection.h"

#include "Calendar.h"
#include "ExportSamples.h"
#include "Rows.h"

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
    static void initTestCase()
    {
        qputenv("TZ", "Europe/Berlin");
        tzset();
    }

    void coversTheDaysOfTheCalendar()
    {
        using enum DateRangeOption;
        // Now, the first moment and the one behind; without that there is no end.
        const Rows<DateRangeOption, QString, QString, QString> rows{
            {"today", today, u"2025-11-21T15:00"_s, u"2025-11-21T00:00"_s, u"2025-11-22T00:00"_s},
            {"today at midnight", today, u"2025-11-21T00:00"_s, u"2025-11-21T00:00"_s,
             u"2025-11-22T00:00"_s},
            {"today has 25 hours", today, u"2025-10-26T23:30"_s, u"2025-10-26T00:00"_s,
             u"2025-10-27T00:00"_s},
            {"yesterday", yesterday, u"2025-11-21T00:00"_s, u"2025-11-20T00:00"_s,
             u"2025-11-21T00:00"_s},
            {"yesterday had 23 hours", yesterday, u"2025-03-31T12:00"_s, u"2025-03-30T00:00"_s,
             u"2025-03-31T00:00"_s},
            {"yesterday of another year", yesterday, u"2025-01-01T12:00"_s, u"2024-12-31T00:00"_s,
             u"2025-01-01T00:00"_s},
            {"7 days", last7Days, u"2025-11-21T15:00"_s, u"2025-11-14T15:00"_s},
            {"7 days, clocks changed", last7Days, u"2025-10-28T15:00"_s, u"2025-10-21T15:00"_s},
            {"7 days, the hour did not exist", last7Days, u"2025-04-06T02:30"_s,
             u"2025-03-30T03:30"_s},
            {"30 days", last30Days, u"2025-11-21T15:00"_s, u"2025-10-22T15:00"_s},
        };
        for (const auto &[range, now, first, behind] : rows) {
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
    }

    void beginsTheDayAtTheFirstOfTwoMidnights()
    {
        const auto berlin = qScopeGuard([] { initTestCase(); });
        qputenv("TZ", "America/Havana"); // from 1:00 back to 0:00 on 2025-11-02
        tzset();
        const Instant firstMidnight = at(u"2025-11-02T04:00Z"_s);
        const Instant noon = at(u"2025-11-02T12:00"_s);
        QCOMPARE(spanOf(DateRangeOption::today, noon, {}).first, firstMidnight);
        QCOMPARE(spanOf(DateRangeOption::yesterday, noon, {}).last, firstMidnight - moment);
    }

    void includesBothCustomBounds()
    {
        const DateSpan custom{at(u"2025-11-20T10:15"_s), at(u"2025-11-21T10:15"_s)};
        const DateSpan span = spanOf(DateRangeOption::custom, at(u"2025-12-01T00:00"_s), custom);
        QVERIFY(span.contains(custom.first) && span.contains(custom.last));
        QVERIFY(!span.contains(custom.first - moment) && !span.contains(custom.last + moment));
        const DateSpan reversed{custom.last, custom.first};
        QVERIFY(!reversed.contains(custom.first) && !reversed.contains(custom.last));
    }

    void readsRangesOfTheCommandLine()
    {
        const std::pair<QString, DateSpan> ranges[] = {
            {u"today"_s, {at(u"2025-11-21T00:00"_s), at(u"2025-11-22T00:00"_s) - moment}},
            {u"yesterday"_s, {at(u"2025-11-20T00:00"_s), at(u"2025-11-21T00:00"_s) - moment}},
            {u"last7Days"_s, {at(u"2025-11-14T15:00"_s)}},
            {u"last30Days"_s, {at(u"2025-10-22T15:00"_s)}},
            {u"all"_s, DateSpan()},
            {u"2025-10-25..2025-10-26"_s,
             {at(u"2025-10-25T00:00"_s), at(u"2025-10-27T00:00"_s) - moment}},
            {u"2025-10-25T08:00..2025-10-26T09:30:15.250"_s,
             {at(u"2025-10-25T08:00"_s), at(u"2025-10-26T09:30:15.250"_s)}},
            {u"2025-10-25T08:00Z..2025-10-26"_s,
             {at(u"2025-10-25T10:00"_s), at(u"2025-10-27T00:00"_s) - moment}},
            {u"2026-03-29T02:30..2025-10-26T02:30"_s, // skipped, and there twice
             {at(u"2026-03-29T03:30"_s), at(u"2025-10-26T00:30Z"_s)}},
            {u"2025-10-26T02:30+01:00..2025-10-26"_s,
             {at(u"2025-10-26T01:30Z"_s), at(u"2025-10-27T00:00"_s) - moment}},
        };
        const Instant now = at(u"2025-11-21T15:00"_s);
        for (const auto &[text, span] : ranges)
            QVERIFY2(parseSpan(text, now) == span, qPrintable(text));
        for (const auto &text :
             {u""_s, u"Today"_s, u".."_s, u"2025-10-25"_s, u"2025-10-25.."_s,
              u"2025-02-30..2025-03-01"_s, u"2025-10-25..2025-10-26..2025-10-27"_s,
              u"2025-10-25..yesterday"_s, u"2025-10-25T08:00ZZ..2025-10-26"_s})
            QVERIFY2(!parseSpan(text, now), qPrintable(text));
    }

    void findsTextsAsReadersExpect()
    {
        const Rows<QString, QString, bool, QString> rows{
            {"nothing sought", QString(), u""_s, true},
            {"capitals in the search", QString(), u"EXAMPLE.ORG/P"_s, true},
            {"capitals in the title", u"A TITLE"_s, u"title"_s, true},
            {"no title", QString(), u"title"_s, false},
            {"spaces are a search", u"OneWord"_s, u" "_s, false},
            {"spaces are found", u"two words"_s, u" "_s, true},
            {"URL and title are two texts", u"title"_s, u"pathtitle"_s, false},
            {"sharp s", u"Die STRASSE"_s, u"straße"_s, true},
            {"composed and not", u"cafe\u0301"_s, u"CAF\u00C9"_s, true},
            {"an accent counts", u"café"_s, u"cafe"_s, false},
            {"final sigma", u"ΟΔΟΣ"_s, u"οδος"_s, true},
            {"one I in English", u"INFO"_s, u"info"_s, true},
            {"two I in Turkish", u"INFO"_s, u"info"_s, false, u"tr_TR"_s},
            {"dotless i in Turkish", u"ISPARTA"_s, u"ısparta"_s, true, u"tr_TR"_s},
            {"dotted I in Azerbaijani", u"İdman"_s, u"idman"_s, true, u"az"_s},
            {"half a character", u"a\U0001F389"_s, QString(QChar(0xD83C)), false},
        };
        const QString url = u"https://example.org/path"_s;
        for (const auto &[title, sought, isFound, locale] : rows) {
            const LocalizedSearch search(locale.isEmpty() ? u"en_US"_s : locale);
            const LinkSelection selection({}, sought, search);
            const QString summary = sought; // is never searched
            QCOMPARE(selection.accepts(makeLink(url, title, summary)), isFound);
        }
    }
};

QTEST_GUILESS_MAIN(LinkSelectionTest)
#include "LinkSelectionTest.moc"
