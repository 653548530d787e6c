// SPDX-License-Identifier: MIT
#include "Preferences.h"

#include "DiagnosticLines.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <optional>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

using Spoil = std::function<void(const QString &)>;
Q_DECLARE_METATYPE(Spoil)

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

    void readsValuesOfTheRightKind_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<QString>("readings"); // boolean, integer, string, date
        const auto row = [](const char *name, const QByteArray &value, const char *readings) {
            QTest::newRow(name) << value << QString::fromUtf8(readings);
        };
        row("boolean", "true", "1|-|true|-");
        row("quoted boolean", "\"False\"", "0|-|False|-");
        row("neither yes nor no", "maybe", "-|-|maybe|-");
        row("hour beyond the day", "99", "-|99|99|-");
        row("negative days", "-5", "-|-5|-5|-");
        row("more days than a number holds", "99999999999", "-|-|99999999999|-");
        row("letters for a number", "abc", "-|-|abc|-");
        row("part of a number", "8.5", "-|-|8.5|-");
        row("date", "2026-03-01T08:00:00.000Z", "-|-|2026-03-01T08:00:00.000Z|1772352000");
        row("no such date", "2026-02-31T08:00:00Z", "-|-|2026-02-31T08:00:00Z|-");
        row("a list", "a@b.example, c@d.example", "-|-|-|-");
        row("a typed value", "@Variant(\\0\\0\\0\\x8\\xff\\xff\\xff\\xff)", "-|-|-|-");
        row("nothing", "", "-|-||-");
    }

    void readsValuesOfTheRightKind()
    {
        QFETCH(const QByteArray, value);
        QFETCH(const QString, readings);
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
        QVERIFY(
            read(path()).contains(QByteArray("\nkey=" + value + '\n'))); // whatever it is, it stays
    }

    void writesWhatItAndQSettingsReadAgain_data()
    {
        QTest::addColumn<QString>("value");
        for (const QString &value :
             {u"you@example.org"_s, u"a, b; c = \"d\" # %20"_s, u"@Invalid()"_s, u"@@"_s,
              u"back\\slash\\x41"_s, u"line\nbreak\r\n\tand tab"_s,
              u"\0\x01"
              "fab\x7f"
              "0"_s,
              u" spaces "_s, u"ärger \U0001F517"_s, u"[General]"_s, u""_s})
            QTest::newRow(qUtf8Printable(u'<' + value.toHtmlEscaped() + u'>')) << value;
    }

    void writesWhatItAndQSettingsReadAgain()
    {
        QFETCH(const QString, value);
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

    void keepsForThisRunWhatCannotBeWritten_data()
    {
        QTest::addColumn<Spoil>("spoil");
        QTest::newRow("a folder in its place")
            << Spoil([](const QString &path) { QVERIFY(QDir().mkpath(path)); });
        QTest::newRow("a pipe in its place") << Spoil([](const QString &path) {
            QVERIFY(QDir().mkpath(QFileInfo(path).path()));
            QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        });
        QTest::newRow("a file in its folder's place") << Spoil([](const QString &path) {
            QVERIFY(QFile(QFileInfo(path).path()).open(QIODevice::WriteOnly));
        });
    }

    void keepsForThisRunWhatCannotBeWritten()
    {
        QFETCH(const Spoil, spoil);
        spoil(path());
        Preferences preferences(path());
        DiagnosticLines diagnostics;
        preferences.set(preferenceKeys::emailSendHour, 9);
        QCOMPARE(diagnostics.lines().size(), 1);
        QVERIFY(diagnostics.lines().first().startsWith(u"Failed to write preferences: "));
        QCOMPARE(preferences.integer(preferenceKeys::emailSendHour), std::optional(9));
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
