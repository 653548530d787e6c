// SPDX-License-Identifier: MIT
#pragma once

#include "Clock.h"

#include <QString>
#include <QTimeZone>

#include <memory>
#include <optional>

/// The locale that the user has chosen for dates, such as "de_DE" or "sr_RS@latin": the first
/// non-empty of LC_ALL, LC_TIME and LANG, without the encoding; "en_US" where that is C, POSIX or
/// nothing.
QString systemLocale();

/// Writes dates the way readers of one locale expect them. The first text of each kind is slow
/// (milliseconds), the others are not: make one per document. To be used by one thread at a time.
class DateText
{
public:
    /// A `locale` that nobody knows is as good as none. Without `zone` the system's holds.
    explicit DateText(const QString &locale, std::optional<QTimeZone> zone = std::nullopt);
    ~DateText();

    /// Whether the texts are in a script that is written from right to left.
    bool isRightToLeft() const { return m_isRightToLeft; }
    /// "November 21, 2026"
    QString longDate(Instant instant) const;
    /// "Nov 21, 2026, 8:05 AM", with a narrow no-break space before "AM"
    QString mediumDateShortTime(Instant instant) const;
    /// "8:05 AM", with a narrow no-break space before "AM"
    QString shortTime(Instant instant) const;

private:
    struct Formats;

    double civilTime(Instant instant) const;

    std::optional<QTimeZone> m_zone;
    bool m_isRightToLeft = false;
    std::unique_ptr<Formats> m_formats;
};
