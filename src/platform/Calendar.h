#pragma once

#include "Clock.h"

#include <optional>

class QDateTime;

/// The user's calendar: days in the system's current time zone, which follow its clock changes.

QDateTime dateTimeOf(Instant instant);
/// `dateTime` must be valid.
Instant instantOf(const QDateTime &dateTime);

/// The same time of day `days` days later (earlier when negative), whatever clock changes lie
/// between; absent when the calendar has no such date.
std::optional<Instant> addDays(Instant instant, int days);
/// The first moment of the day that holds `instant`.
Instant startOfDay(Instant instant);
/// Whether both lie in the same day.
bool isSameDay(Instant one, Instant other);
