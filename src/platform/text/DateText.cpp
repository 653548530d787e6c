// SPDX-License-Identifier: MIT
#include "DateText.h"

#include "MinuteFormat.h"

#include <QDateTime>

#include <ctime>
#include <unicode/datefmt.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

using namespace Qt::StringLiterals;
using icu::DateFormat;

namespace
{

using Format = std::unique_ptr<DateFormat>;

QString written(const DateFormat &format, double civilTime)
{
    icu::UnicodeString text;
    format.format(civilTime, text);
    return QStringView(text.getBuffer(), text.length()).toString();
}

/// QDateTime would look whether /etc/localtime has changed, at several microseconds a date.
long systemOffset(time_t seconds)
{
    tm civil = {};
    localtime_r(&seconds, &civil);
    return civil.tm_gmtoff;
}

QString localeOfEnvironment()
{
    for (const char *const name : {"LC_ALL", "LC_TIME", "LANG"}) {
        if (const QString locale = qEnvironmentVariable(name); !locale.isEmpty())
            return locale;
    }
    return {};
}

} // namespace

QString systemLocale()
{
    const QString locale = localeOfEnvironment();
    const QString name = locale.section(u'.', 0, 0).section(u'@', 0, 0);
    const bool isNeutral = name.isEmpty() || name == u"C" || name == u"POSIX";
    return isNeutral ? u"en_US"_s : name;
}

struct DateText::Formats {
    Format longDate;
    MinuteFormat mediumDateShortTime;
    Format shortTime;
};

DateText::DateText(const QString &locale, std::optional<QTimeZone> zone)
    : m_zone(std::move(zone))
{
    tzset(); // the zone may have changed
    const auto place = icu::Locale::createCanonical(locale.toLatin1().constData());
    const auto inUtc = [](DateFormat *made) {
        made->setTimeZone(*icu::TimeZone::getGMT());
        return Format(made);
    };
    m_formats = std::make_unique<Formats>(
        Formats{inUtc(DateFormat::createDateInstance(DateFormat::kLong, place)),
                MinuteFormat(inUtc(DateFormat::createDateTimeInstance(DateFormat::kMedium,
                                                                      DateFormat::kShort, place))),
                inUtc(DateFormat::createTimeInstance(DateFormat::kShort, place))});
}

DateText::~DateText() = default;

QString DateText::longDate(Instant instant) const
{
    return written(*m_formats->longDate, civilTime(instant));
}

QString DateText::mediumDateShortTime(Instant instant) const
{
    return m_formats->mediumDateShortTime.text(civilTime(instant));
}

QString DateText::shortTime(Instant instant) const
{
    return written(*m_formats->shortTime, civilTime(instant));
}

/// What the clocks of the zone show, as if it were UTC, in ICU's unit. ICU's own zones are as old
/// as the library; the system's are kept up to date.
double DateText::civilTime(Instant instant) const
{
    using std::chrono::floor;
    const auto sinceEpoch = floor<std::chrono::milliseconds>(instant.time_since_epoch());
    const time_t seconds = floor<std::chrono::seconds>(sinceEpoch).count();
    const long offset = m_zone ? m_zone->offsetFromUtc(QDateTime::fromSecsSinceEpoch(seconds))
                               : systemOffset(seconds);
    return double(sinceEpoch.count()) + double(offset) * 1000.0;
}
