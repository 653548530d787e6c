// SPDX-License-Identifier: MIT
#include "MinuteFormat.h"

#include <algorithm>
#include <cmath>
#include <unicode/fpositer.h>

namespace
{

bool isOfTime(int field)
{
    constexpr int timeFields[] = {
        UDAT_HOUR_OF_DAY0_FIELD,
        UDAT_HOUR_OF_DAY1_FIELD,
        UDAT_HOUR0_FIELD,
        UDAT_HOUR1_FIELD,
        UDAT_MINUTE_FIELD,
        UDAT_AM_PM_FIELD,
        UDAT_AM_PM_MIDNIGHT_NOON_FIELD,
        UDAT_FLEXIBLE_DAY_PERIOD_FIELD,
    };
    return std::find(std::begin(timeFields), std::end(timeFields), field) != std::end(timeFields);
}

struct Span {
    int begin;
    int end;
};

/// Where the time stands in a text of `size`.
Span spanOfTime(icu::FieldPositionIterator &fields, int size)
{
    Span span{size, 0};
    icu::FieldPosition field;
    while (fields.next(field)) {
        if (isOfTime(field.getField()))
            span = {std::min(span.begin, field.getBeginIndex()),
                    std::max(span.end, field.getEndIndex())};
    }
    return span;
}

} // namespace

MinuteFormat::MinuteFormat(std::unique_ptr<icu::DateFormat> format)
    : m_format(std::move(format))
{
}

QString MinuteFormat::text(double time)
{
    const auto minutes = qint64(std::floor(time / 60'000));
    const auto day = qint64(std::floor(double(minutes) / minutesADay));
    QString &timeText = m_times[minutes - day * minutesADay];
    const auto known = m_days.constFind(day);
    if (known != m_days.constEnd() && !timeText.isEmpty())
        return known->before + timeText + known->after;

    icu::UnicodeString text;
    icu::FieldPositionIterator fields;
    UErrorCode status = U_ZERO_ERROR;
    m_format->format(time, text, &fields, status);
    const auto whole = QStringView(text.getBuffer(), text.length()).toString();
    const Span span = spanOfTime(fields, text.length());
    timeText = whole.sliced(span.begin, span.end - span.begin);
    m_days.insert(day, {whole.first(span.begin), whole.sliced(span.end)});
    return whole;
}
