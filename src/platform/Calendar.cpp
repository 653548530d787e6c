#include "Calendar.h"

#include <QDateTime>

using std::chrono::milliseconds;

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

Instant startOfDay(Instant instant)
{
    return instantOf(dateTimeOf(instant).date().startOfDay(Qt::LocalTime));
}

bool isSameDay(Instant one, Instant other)
{
    return dateTimeOf(one).date() == dateTimeOf(other).date();
}
