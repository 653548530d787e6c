// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QString>

#include <array>
#include <memory>
#include <unicode/datefmt.h>

/// Writes days with their time to the minute as an ICU format does, which is asked only once for
/// each day and each minute of the day: it takes microseconds for a text. One thread at a time.
class MinuteFormat
{
public:
    /// `format` shows nothing smaller than a minute, in UTC.
    explicit MinuteFormat(std::unique_ptr<icu::DateFormat> format);

    /// `time` is in milliseconds since the epoch.
    QString text(double time);

private:
    static constexpr int minutesADay = 24 * 60;
    /// What stands around the time.
    struct Day {
        QString before;
        QString after;
    };

    std::unique_ptr<icu::DateFormat> m_format;
    QHash<qint64, Day> m_days;
    std::array<QString, minutesADay> m_times;
};
