// SPDX-License-Identifier: MIT
#include "DiagnosticLines.h"
#include "ExportFile.h"
#include "LazyHttpClient.h"
#include "SecretServiceStore.h"
#include "Waiting.h"

#include <QDir>
#include <QTest>
#include <QThreadPool>

using namespace Qt::StringLiterals;

/// Modules as they are after an update, or a bad one, under the running program.
class ModuleTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void failsWhatNeedsIt_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("sentence");
        QTest::addRow("missing") << QString() << u"A part of Strandloom cannot be loaded; "_s;
        QTest::addRow("of another version")
            << QStringLiteral(OTHER_VERSION) << u"Strandloom was updated; restart it"_s;
    }
    void failsWhatNeedsIt()
    {
        QFETCH(const QString, file);
        QFETCH(const QString, sentence);
        const QDir folder(QCoreApplication::applicationDirPath() + u"/" STRANDLOOM_MODULE_PATH);
        QVERIFY(folder.mkpath(u"."_s));
        for (const auto &name : {u"http.so"_s, u"pdf.so"_s, u"secrets.so"_s}) {
            QFile::remove(folder.filePath(name));
            QVERIFY(file.isEmpty() || QFile::copy(file, folder.filePath(name)));
        }

        QThreadPool pool;
        LazyHttpClient http(pool);
        HttpRequest request;
        request.url = "http://127.0.0.1:9/";
        const auto reply = waitFor(http.send(request));
        QVERIFY(reply && !*reply && reply->error().message.startsWith(sentence));

        const auto drawn =
            writeDocument({}, ExportFormat::pdf, [](QByteArrayView) { return true; });
        QVERIFY(!drawn && description(drawn.error()).startsWith(sentence));

        const DiagnosticLines diagnostics;
        SecretServiceStore keyring(u"app.strandloom.test"_s);
        const auto secrets = waitFor(keyring.find({u"key"_s}));
        QVERIFY(secrets && !*secrets && secrets->error() == SecretFault::notLoaded);
        QVERIFY(diagnostics.lines().join(u'\n').contains(sentence));
    }
};

QTEST_GUILESS_MAIN(ModuleTest)
#include "ModuleTest.moc"
