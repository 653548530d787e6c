// SPDX-License-Identifier: MIT
#include "DateText.h"

#include "MinuteFormat.h"

#include <QDateTime>
#include <QRegularExpression>

#include <ctime>
#include <unicode/datefmt.h>
#include <unicode/localebuilder.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/uscript.h>

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

/// ICU knows "sr_Latn_RS", but keeps the modifier of "sr_RS@latin" as one that says nothing.
icu::Locale withScript(const icu::Locale &place)
{
    const int script = u_getPropertyValueEnum(UCHAR_SCRIPT, place.getVariant());
    if (script == UCHAR_INVALID_CODE)
        return place;
    icu::LocaleBuilder builder;
    builder.setLocale(place).setVariant({});
    builder.setScript(uscript_getShortName(static_cast<UScriptCode>(script)));
    UErrorCode error = U_ZERO_ERROR;
    icu::Locale made = builder.build(error);
    return U_SUCCESS(error) ? made : place;
}

/// The locale of a POSIX name; the root where ICU makes nothing of it.
icu::Locale placeOf(const QString &name)
{
    const auto place = icu::Locale::createCanonical(name.toLatin1().constData());
    if (place.isBogus())
        return icu::Locale::getRoot();
    return withScript(place);
}

/// What `make` makes for the place, in UTC; for no place in particular where it makes nothing.
Format formatFor(const icu::Locale &place, DateFormat *(*make)(const icu::Locale &))
{
    Format made(make(place));
    if (!made)
        made.reset(make(icu::Locale::getRoot()));
    made->setTimeZone(*icu::TimeZone::getGMT());
    return made;
}

} // namespace

QString systemLocale()
{
    const QString locale = localeOfEnvironment();
    static const QRegularExpression encoding(u"\\.[^@]*"_s);
    const QString name = QString(locale).remove(encoding);
    const QString language = name.section(u'@', 0, 0);
    const bool isNeutral = language.isEmpty() || language == u"C" || language == u"POSIX";
    return isNeutral ? u"en_US"_s : name;
}

/// Each made when it is first needed: it is not small.
struct DateText::Formats {
    icu::Locale place;
    Format longDate;
    std::optional<MinuteFormat> mediumDateShortTime;
    Format shortTime;
};

DateText::DateText(const QString &locale, std::optional<QTimeZone> zone)
    : m_zone(std::move(zone))
    , m_formats(std::make_unique<Formats>())
{
    tzset(); // the zone may have changed
    m_formats->place = placeOf(locale);
    m_isRightToLeft = m_formats->place.isRightToLeft();
}

DateText::~DateText() = default;

QString DateText::longDate(Instant instant) const
{
    Format &format = m_formats->longDate;
    if (!format) {
        format = formatFor(m_formats->place, [](const icu::Locale &of) {
            return DateFormat::createDateInstance(DateFormat::kLong, of);
        });
    }
    return written(*format, civilTime(instant));
}

QString DateText::mediumDateShortTime(Instant instant) const
{
    auto &format = m_formats->mediumDateShortTime;
    if (!format) {
        format.emplace(formatFor(m_formats->place, [](const icu::Locale &of) {
            return DateFormat::createDateTimeInstance(DateFormat::kMedium, DateFormat::kShort, of);
        }));
    }
    return format->text(civilTime(instant));
}

QString DateText::shortTime(Instant instant) const
{
    Format &format = m_formats->shortTime;
    if (!format) {
        format = formatFor(m_formats->place, [](const icu::Locale &of) {
            return DateFormat::createTimeInstance(DateFormat::kShort, of);
        });
    }
    return written(*format, civilTime(instant));
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
