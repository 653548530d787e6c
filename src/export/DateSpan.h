// SPDX-License-Identifier: MIT
#pragma once

#include "Clock.h"
#include "ExportOptions.h"

#include <optional>

/// The moments from `first` to `last`, both included; none when they are the wrong way round.
struct DateSpan {
    Instant first = Instant::min();
    Instant last = Instant::max();

    bool contains(Instant instant) const { return first <= instant && instant <= last; }
    bool operator==(const DateSpan &) const = default;
};

/// What `range` covers at the moment `now`, by the user's calendar; `custom` is the span of that
/// choice. The last days have no end: they begin at this time of day and hold the future too.
DateSpan spanOf(DateRangeOption range, Instant now, const DateSpan &custom);
DateSpan spanOf(InlineDateRangeOption range, Instant now);

/// A span as the command line names it: today, yesterday, last7Days, last30Days, all, or FROM..TO
/// in ISO dates or date-times in local time. A date as TO means the end of that day. Absent when
/// `text` is nothing of that.
std::optional<DateSpan> parseSpan(const QString &text, Instant now);
