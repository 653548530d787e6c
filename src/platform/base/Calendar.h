// SPDX-License-Identifier: MIT
#pragma once

#include "Clock.h"

#include <optional>

class QDate;
class QDateTime;
class QTime;

/// The user's calendar: days in the system's current time zone, which follow its clock changes.

QDateTime dateTimeOf(Instant instant);
/// `dateTime` must be valid.
Instant instantOf(const QDateTime &dateTime);

/// The same time of day `days` days later (earlier when negative), whatever clock changes lie
/// between; absent when the calendar has no such date.
std::optional<Instant> addDays(Instant instant, int days);
/// When the clocks show `time` on `date`, both valid, for the first time; where they skip that, as
/// much later as they skip.
Instant instantAt(QDate date, QTime time);
/// When it is `hour` o'clock on the day `days` after that of `instant`, for the first time; where
/// the clocks skip that hour or day, as much later as they skip. Absent when the calendar has no
/// such date or a day no such hour.
std::optional<Instant> atHour(Instant instant, int hour, int days = 0);
/// The first moment of the day that holds `instant`.
Instant startOfDay(Instant instant);
/// Whether both lie in the same day.
bool isSameDay(Instant one, Instant other);
