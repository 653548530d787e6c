#include "text/DateText.h"

#include "Calendar.h"

#include <QDateTime>

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
    Format mediumDateShortTime;
    Format shortTime;
};

DateText::DateText(const QString &locale, std::optional<QTimeZone> zone)
    : m_zone(std::move(zone))
{
    const auto place = icu::Locale::createCanonical(locale.toLatin1().constData());
    m_formats = std::make_unique<Formats>(Formats{
        Format(DateFormat::createDateInstance(DateFormat::kLong, place)),
        Format(DateFormat::createDateTimeInstance(DateFormat::kMedium, DateFormat::kShort, place)),
        Format(DateFormat::createTimeInstance(DateFormat::kShort, place))});
    for (const auto *const format :
         {&m_formats->longDate, &m_formats->mediumDateShortTime, &m_formats->shortTime})
        (*format)->setTimeZone(*icu::TimeZone::getGMT());
}

DateText::~DateText() = default;

QString DateText::longDate(Instant instant) const
{
    return written(*m_formats->longDate, civilTime(instant));
}

QString DateText::mediumDateShortTime(Instant instant) const
{
    return written(*m_formats->mediumDateShortTime, civilTime(instant));
}

QString DateText::shortTime(Instant instant) const
{
    return written(*m_formats->shortTime, civilTime(instant));
}

/// What the clocks of the zone show, as if it were UTC, in ICU's unit. ICU's own zones are as old
/// as the library; the system's are kept up to date.
double DateText::civilTime(Instant instant) const
{
    QDateTime date = dateTimeOf(instant);
    if (m_zone)
        date = date.toTimeZone(*m_zone);
    return double(date.toMSecsSinceEpoch()) + date.offsetFromUtc() * 1000.0;
}
