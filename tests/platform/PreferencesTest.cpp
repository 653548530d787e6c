// SPDX-License-Identifier: MIT
#include "Preferences.h"

#include "DiagnosticLines.h"
#include "Rows.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <optional>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

class PreferencesTest : public QObject
{
    Q_OBJECT

    std::optional<QTemporaryDir> m_folder;

    QString path() const { return m_folder->filePath(u"strandloom/settings.ini"_s); }
    void write(const QByteArray &text) const
    {
        QVERIFY(QDir().mkpath(QFileInfo(path()).path()));
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    static QByteArray read(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : "unreadable";
    }

private Q_SLOTS:
    void init() { m_folder.emplace(); }

    void readsValuesOfTheRightKind()
    {
        // What is read: boolean, integer, string and date.
        const Rows<QByteArray, QString> rows{
            {"boolean", "true", u"1|-|true|-"_s},
            {"quoted boolean", "\"False\"", u"0|-|False|-"_s},
            {"neither yes nor no", "maybe", u"-|-|maybe|-"_s},
            {"hour beyond the day", "99", u"-|99|99|-"_s},
            {"negative days", "-5", u"-|-5|-5|-"_s},
            {"more days than a number holds", "99999999999", u"-|-|99999999999|-"_s},
            {"letters for a number", "abc", u"-|-|abc|-"_s},
            {"part of a number", "8.5", u"-|-|8.5|-"_s},
            {"date", "2026-03-01T08:00:00.000Z", u"-|-|2026-03-01T08:00:00.000Z|1772352000"_s},
            {"no such date", "2026-02-31T08:00:00Z", u"-|-|2026-02-31T08:00:00Z|-"_s},
            {"a list", "a@b.example, c@d.example", u"-|-|-|-"_s},
            {"a typed value", "@Variant(\\0\\0\\0\\x8\\xff\\xff\\xff\\xff)", u"-|-|-|-"_s},
            {"nothing", "", u"-|-||-"_s},
        };
        for (const auto &[value, readings] : rows) {
            init();
            write("[General]\nother=1\nkey=" + value + "\nlast=2\n");
            Preferences preferences(path());
            constexpr QLatin1StringView key("key");
            const auto boolean = preferences.boolean(key);
            const auto integer = preferences.integer(key);
            const auto date = preferences.date(key);
            const QString seen = (boolean ? QString::number(*boolean) : u"-"_s) % u'|'
                % (integer ? QString::number(*integer) : u"-"_s) % u'|'
                % preferences.string(key).value_or(u"-"_s) % u'|'
                % (date ? QString::number(qint64(date->time_since_epoch().count() / 1'000'000))
                        : u"-"_s);
            QCOMPARE(seen, readings);
            preferences.set(QLatin1StringView("another"), true);
            QVERIFY(read(path()).contains(
                QByteArray("\nkey=" + value + '\n'))); // whatever it is, it stays
        }
    }

    void writesWhatItAndQSettingsReadAgain()
    {
        for (const QString &value :
             {u"you@example.org"_s, u"a, b; c = \"d\" # %20"_s, u"@Invalid()"_s, u"@@"_s,
              u"back\\slash\\x41"_s, u"line\nbreak\r\n\tand tab"_s,
              u"\0\x01"
              "fab\x7f"
              "0"_s,
              u" spaces "_s, u"ärger \U0001F517"_s, u"[General]"_s, u""_s}) {
            init();
            write("\xEF\xBB\xBFlast=kept\n[Window]\nemailAddress=elsewhere\n");
            Preferences preferences(path());
            preferences.set(preferenceKeys::emailAddress, u"first"_s);
            preferences.set(preferenceKeys::emailAddress, value);
            struct stat status = {};
            QCOMPARE(stat(QFile::encodeName(path()).constData(), &status), 0);
            QCOMPARE(status.st_mode & 0777, 0600u); // it holds the mail address
            const QSettings settings(path(), QSettings::IniFormat);
            QCOMPARE(settings.status(), QSettings::NoError);
            QCOMPARE(settings.value("emailAddress"_L1), QVariant(value));
            QCOMPARE(settings.value("Window/emailAddress"_L1), QVariant(u"elsewhere"_s));
            QCOMPARE(settings.allKeys().size(), 3);
            QCOMPARE(Preferences(path()).string(QLatin1StringView("last")), u"kept"_s);
        }
    }

    void losesNothingOfADamagedFile()
    {
        const QByteArray damaged =
            QByteArray("autoPruneDays=30\n\0\x8f garbage\n[unclosed\nx=\"no end\n=\n\\\n", 52);
        write(damaged);
        DiagnosticLines diagnostics;
        Preferences preferences(path());
        QVERIFY(diagnostics.take().value(0).startsWith(u"Preferences are damaged: "));
        QCOMPARE(preferences.integer(preferenceKeys::autoPruneDays), std::optional(30));
        preferences.set(preferenceKeys::emailSendHour, 9);
        QVERIFY(read(path()).endsWith(damaged));
        QCOMPARE(Preferences(path()).integer(preferenceKeys::emailSendHour), std::optional(9));
        QCOMPARE(Preferences(path()).integer(preferenceKeys::autoPruneDays), std::optional(30));
    }

    void keepsForThisRunWhatCannotBeWritten()
    {
        const Rows<std::function<void(const QString &)>> rows{
            {"a folder in its place", [](const QString &path) { QVERIFY(QDir().mkpath(path)); }},
            {"a pipe in its place",
             [](const QString &path) {
                 QVERIFY(QDir().mkpath(QFileInfo(path).path()));
                 QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
             }},
            {"a file in its folder's place",
             [](const QString &path) {
                 QVERIFY(QFile(QFileInfo(path).path()).open(QIODevice::WriteOnly));
             }},
        };
        for (const auto &[spoil] : rows) {
            init();
            spoil(path());
            Preferences preferences(path());
            DiagnosticLines diagnostics;
            preferences.set(preferenceKeys::emailSendHour, 9);
            QCOMPARE(diagnostics.lines().size(), 1);
            QVERIFY(diagnostics.lines().first().startsWith(u"Failed to write preferences: "));
            QCOMPARE(preferences.integer(preferenceKeys::emailSendHour), std::optional(9));
        }
    }

    void putsAHugeFileAside()
    {
        const QByteArray huge = "a=" + QByteArray(10 << 20, ',');
        write(huge);
        Preferences preferences(path());
        QVERIFY(!preferences.string(QLatin1StringView("a")));
        preferences.set(preferenceKeys::emailSendHour, 9);
        QCOMPARE(read(path()), QByteArray("[General]\nemailSendHour=9\n"));
        QCOMPARE(read(path() + u".damaged"), huge);
    }

    void isNotHeldUpByALockLeftBehind()
    {
        write("");
        QFile lock(path() + u".lock");
        QVERIFY(lock.open(QIODevice::WriteOnly));
        Preferences preferences(path());
        preferences.set(preferenceKeys::emailSendHour, 9);
        QCOMPARE(Preferences(path()).integer(preferenceKeys::emailSendHour), std::optional(9));
    }
};

QTEST_GUILESS_MAIN(PreferencesTest)
#include "PreferencesTest.moc"
