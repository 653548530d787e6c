// SPDX-License-Identifier: MIT
#include "DateSpan.h"

#include "Calendar.h"

#include <QDateTime>

using namespace Qt::StringLiterals;

namespace
{

constexpr auto isoDateSize = QLatin1StringView("2026-11-21").size();

/// All of the day `days` after that of `instant`.
DateSpan wholeDay(Instant instant, int days = 0)
{
    const auto first = atHour(instant, 0, days);
    const auto behind = atHour(instant, 0, days + 1);
    if (!first || !behind)
        qFatal("The calendar has no day %d days later", days);
    return {*first, *behind - Instant::duration(1)};
}

DateSpan since(int days, Instant now)
{
    const auto first = addDays(now, -days);
    if (!first)
        qFatal("The calendar has no date %d days ago", days);
    return {*first};
}

/// The whole day or the very moment that `text` names.
std::optional<DateSpan> parseMoment(const QString &text)
{
    if (text.size() == isoDateSize) { // QDate would overlook a time behind the date
        const QDate date = QDate::fromString(text, Qt::ISODate);
        return date.isValid() ? std::optional(wholeDay(instantAt(date, QTime(12, 0))))
                              : std::nullopt;
    }
    // Without a zone it is read as in UTC, which has all times: QDateTime refuses what is skipped.
    const QDateTime local = QDateTime::fromString(text + u'Z', Qt::ISODateWithMs);
    const QDateTime zoned = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (!local.isValid() && !zoned.isValid())
        return std::nullopt;
    const Instant moment =
        local.isValid() ? instantAt(local.date(), local.time()) : instantOf(zoned);
    return DateSpan{moment, moment};
}

} // namespace

DateSpan spanOf(DateRangeOption range, Instant now, const DateSpan &custom)
{
    switch (range) {
    case DateRangeOption::today:
        return wholeDay(now);
    case DateRangeOption::yesterday:
        return wholeDay(now, -1);
    case DateRangeOption::last7Days:
        return since(7, now);
    case DateRangeOption::last30Days:
        return since(30, now);
    case DateRangeOption::custom:
        return custom;
    }
    Q_UNREACHABLE();
}

DateSpan spanOf(InlineDateRangeOption range, Instant now)
{
    switch (range) {
    case InlineDateRangeOption::today:
        return spanOf(DateRangeOption::today, now, {});
    case InlineDateRangeOption::yesterday:
        return spanOf(DateRangeOption::yesterday, now, {});
    case InlineDateRangeOption::last7Days:
        return spanOf(DateRangeOption::last7Days, now, {});
    case InlineDateRangeOption::last30Days:
        return spanOf(DateRangeOption::last30Days, now, {});
    case InlineDateRangeOption::all:
        return {};
    }
    Q_UNREACHABLE();
}

std::optional<DateSpan> parseSpan(const QString &text, Instant now)
{
    if (text == u"today")
        return spanOf(DateRangeOption::today, now, {});
    if (text == u"yesterday")
        return spanOf(DateRangeOption::yesterday, now, {});
    if (text == u"last7Days")
        return spanOf(DateRangeOption::last7Days, now, {});
    if (text == u"last30Days")
        return spanOf(DateRangeOption::last30Days, now, {});
    if (text == u"all")
        return DateSpan();

    const auto dots = text.indexOf(u".."_s);
    if (dots < 0)
        return std::nullopt;
    const auto from = parseMoment(text.first(dots));
    const auto to = parseMoment(text.sliced(dots + 2));
    if (!from || !to)
        return std::nullopt;
    return DateSpan{from->first, to->last};
}
