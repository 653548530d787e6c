// SPDX-License-Identifier: MIT
#include "DateText.h"

#include "MinuteFormat.h"
#include "Rows.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{
constexpr Instant autumnMorning(std::chrono::sys_days(2026y / 11 / 21) + 7h + 5min + 59s);
constexpr Instant beforeNewYear(std::chrono::sys_days(2026y / 12 / 31) + 23h + 30min);
} // namespace

class DateTextTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void writesForTheReadersOfALocale()
    {
        const Rows<QString, QByteArray, Instant, QString, QString, QString> rows{
            {"American", u"en_US"_s, "America/New_York"_ba, autumnMorning, u"November 21, 2026"_s,
             u"Nov 21, 2026, 2:05\u202fAM"_s, u"2:05\u202fAM"_s},
            {"German", u"de_DE"_s, "Europe/Berlin"_ba, autumnMorning, u"21. November 2026"_s,
             u"21.11.2026, 08:05"_s, u"08:05"_s},
            {"Japanese, next year", u"ja_JP"_s, "Asia/Tokyo"_ba, beforeNewYear, u"2027年1月1日"_s,
             u"2027/01/01 8:30"_s, u"8:30"_s},
            {"with encoding", u"en_GB.UTF-8"_s, "UTC"_ba, beforeNewYear, u"31 December 2026"_s,
             u"31 Dec 2026, 23:30"_s, u"23:30"_s},
            {"another script", u"sr_RS@latin"_s, "UTC"_ba, beforeNewYear, u"31. decembar 2026."_s,
             u"31. 12. 2026. 23:30"_s, u"23:30"_s},
            {"too long for a locale", u"de_DE_"_s + QString(1000, u'x'), "UTC"_ba, beforeNewYear,
             u"2026 M12 31"_s, u"2026 M12 31 23:30"_s, u"23:30"_s},
            {"too long for a language", QString(1000, u'x'), "UTC"_ba, beforeNewYear,
             u"2026 M12 31"_s, u"2026 M12 31 23:30"_s, u"23:30"_s},
            {"summer time", u"en_GB"_s, "Europe/London"_ba,
             Instant(std::chrono::sys_days(2026y / 7 / 1) + 23h), u"2 July 2026"_s,
             u"2 Jul 2026, 00:00"_s, u"00:00"_s},
        };
        for (const auto &[locale, zone, instant, longDate, dateAndTime, time] : rows) {
            const DateText dates(locale, QTimeZone(zone));
            QCOMPARE(dates.longDate(instant), longDate);
            QCOMPARE(dates.mediumDateShortTime(instant), dateAndTime);
            QCOMPARE(dates.shortTime(instant), time);
        }
    }

    void remembersDaysAndMinutesInEveryLocale()
    {
        int count = 0;
        const icu::Locale *const locales = icu::Locale::getAvailableLocales(count);
        for (const icu::Locale *locale = locales; locale != locales + count; ++locale) {
            const auto format = [locale] {
                auto *const made = icu::DateFormat::createDateTimeInstance(
                    icu::DateFormat::kMedium, icu::DateFormat::kShort, *locale);
                made->setTimeZone(*icu::TimeZone::getGMT());
                return std::unique_ptr<icu::DateFormat>(made);
            };
            MinuteFormat remembering(format());
            const auto plain = format();
            for (int i = 0; i < 120; ++i) { // eight days and fifteen times of day
                const double time = (i % 8 * 46.0 * 24 + i % 15 * 1.7) * 3'600'000 - 1;
                icu::UnicodeString text;
                plain->format(time, text);
                QCOMPARE(remembering.text(time),
                         QString::fromUtf16(text.getBuffer(), text.length()));
            }
        }
    }

    void followsTheSystemsZone()
    {
        const DateText dates(u"de_DE"_s);
        QCOMPARE(inZone("America/New_York", dates), u"02:05"_s);
        QCOMPARE(inZone("Asia/Kolkata", dates), u"12:35"_s);
    }

    void takesTheLocaleOfTheEnvironment()
    {
        const Rows<QByteArray, QByteArray, QByteArray, QString> rows{
            {"all beats the others", "ja_JP"_ba, "de_DE"_ba, "fr_FR"_ba, u"ja_JP"_s},
            {"time beats lang", ""_ba, "de_DE.UTF-8"_ba, "fr_FR"_ba, u"de_DE"_s},
            {"lang, modified", ""_ba, ""_ba, "fr_FR.UTF-8@euro"_ba, u"fr_FR@euro"_s},
            {"neutral", "C.UTF-8"_ba, "de_DE"_ba, ""_ba, u"en_US"_s},
            {"POSIX", ""_ba, "POSIX"_ba, ""_ba, u"en_US"_s},
            {"nothing", ""_ba, ""_ba, ""_ba, u"en_US"_s},
        };
        for (const auto &[all, time, lang, locale] : rows) {
            qputenv("LC_ALL", all);
            qputenv("LC_TIME", time);
            qputenv("LANG", lang);
            QCOMPARE(systemLocale(), locale);
        }
    }

private:
    static QString inZone(const char *zone, const DateText &dates)
    {
        qputenv("TZ", zone);
        tzset();
        return dates.shortTime(autumnMorning);
    }
};

QTEST_GUILESS_MAIN(DateTextTest)
#include "DateTextTest.moc"
