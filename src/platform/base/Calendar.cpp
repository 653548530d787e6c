// SPDX-License-Identifier: MIT
#include "Calendar.h"

#include <QDateTime>

using std::chrono::milliseconds;
using std::chrono::seconds;
using namespace std::chrono_literals;

namespace
{
seconds offsetFromUtc(Instant instant)
{
    return seconds(dateTimeOf(instant).offsetFromUtc());
}
} // namespace

QDateTime dateTimeOf(Instant instant)
{
    const auto sinceEpoch = std::chrono::floor<milliseconds>(instant.time_since_epoch());
    return QDateTime::fromMSecsSinceEpoch(sinceEpoch.count(), Qt::LocalTime);
}

Instant instantOf(const QDateTime &dateTime)
{
    return Instant(milliseconds(dateTime.toMSecsSinceEpoch()));
}

std::optional<Instant> addDays(Instant instant, int days)
{
    const QDateTime date = dateTimeOf(instant);
    const auto belowMilliseconds = instant - instantOf(date);
    const QDateTime moved = date.addDays(days);
    if (!moved.isValid())
        return std::nullopt;
    return instantOf(moved) + belowMilliseconds;
}

std::optional<Instant> atHour(Instant instant, int hour, int days)
{
    const QDate date = dateTimeOf(instant).date().addDays(days);
    const QTime time(hour, 0);
    if (!date.isValid() || !time.isValid())
        return std::nullopt;
    return instantAt(date, time);
}

Instant instantAt(QDate date, QTime time)
{
    // QDateTime itself is not to be relied on near a change of the clocks.
    const Instant civil = instantOf(QDateTime(date, time, Qt::UTC));
    const seconds before = offsetFromUtc(civil - 24h);
    const seconds after = offsetFromUtc(civil + 24h);
    const bool isAfter =
        offsetFromUtc(civil - before) != before && offsetFromUtc(civil - after) == after;
    return civil - (isAfter ? after : before);
}

Instant startOfDay(Instant instant)
{
    return atHour(instant, 0).value_or(instant);
}

bool isSameDay(Instant one, Instant other)
{
    return dateTimeOf(one).date() == dateTimeOf(other).date();
}
