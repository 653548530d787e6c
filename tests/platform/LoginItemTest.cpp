// SPDX-License-Identifier: MIT
#include "LoginItem.h"

#include "DiagnosticLines.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class LoginItemTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;
    QString m_autostart = m_folder.filePath(u"config/autostart"_s);
    QString m_entry = m_autostart + u"/app.strandloom.desktop";

private Q_SLOTS:
    void startsTheVeryProgram()
    {
        for (const auto *const name :
             {"plain", "with space", "quote\"s'", "$HOME", "`id`", "back\\slash", "a;b&c|d>e",
              "tab\tand\nbreak", "\xC3\xA4rger"}) {
            const QString program = m_folder.filePath(QString::fromUtf8(name));
            QFile script(program);
            QVERIFY(script.open(QIODevice::WriteOnly));
            script.write("#!/bin/sh\nprintf '%s\\n' \"$0\" \"$@\" > \"$SEEN\"\n");
            script.close();
            script.setPermissions(QFile::ReadOwner | QFile::ExeOwner);

            LoginItem(program, m_autostart).setLaunchAtLogin(true);
            const QString seen = m_folder.filePath(u"seen"_s);
            QFile::remove(seen);
            // The desktop's own reading of the entry, with its rules of quoting.
            QProcess desktop;
            auto environment = QProcessEnvironment::systemEnvironment();
            environment.insert(u"SEEN"_s, seen);
            desktop.setProcessEnvironment(environment);
            desktop.start(u"/usr/bin/python3"_s,
                          {u"-c"_s,
                           u"import sys; from gi.repository import Gio; "
                           "Gio.DesktopAppInfo.new_from_filename(sys.argv[1]).launch([], None)"_s,
                           m_entry});
            QVERIFY(desktop.waitForFinished());
            QCOMPARE(desktop.exitCode(), 0);
            const QByteArray expected = QByteArray(program.toUtf8() + "\n--background\n");
            QFile told(seen);
            QTRY_VERIFY(told.exists() && told.size() == expected.size());
            QVERIFY(told.open(QIODevice::ReadOnly));
            QCOMPARE(told.readAll(), expected);
        }
    }

    void comesAndGoes()
    {
        QCOMPARE(quotedForExec(u"/opt/100%/\\f"_s), u"\"/opt/100%%/\\\\\\\\f\""_s);
        DiagnosticLines diagnostics;
        LoginItem item(u"/usr/bin/strandloom"_s, m_autostart);
        item.setLaunchAtLogin(true);
        item.setLaunchAtLogin(true);
        QProcess validation;
        validation.start(u"desktop-file-validate"_s, {m_entry});
        QVERIFY2(validation.waitForFinished(), "desktop-file-utils is missing");
        QCOMPARE(validation.readAllStandardOutput(), QByteArray());
        QCOMPARE(validation.exitCode(), 0);
        item.setLaunchAtLogin(false);
        QCOMPARE(
            QDir(m_autostart).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
            QStringList());
        QCOMPARE(diagnostics.take(), QStringList());

        item.setLaunchAtLogin(false);
        LoginItem(u"/usr/bin/strandloom"_s, u"/dev/null/autostart"_s).setLaunchAtLogin(true);
        const QString prefix = u"Failed to set launch at login: "_s;
        QCOMPARE(
            diagnostics.take(),
            QStringList({prefix + m_entry + u": No such file or directory",
                         prefix + u"/dev/null/autostart/app.strandloom.desktop: Not a directory"}));
    }
};

QTEST_GUILESS_MAIN(LoginItemTest)
#include "LoginItemTest.moc"
