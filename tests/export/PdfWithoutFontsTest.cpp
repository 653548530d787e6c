// SPDX-License-Identifier: MIT
#include "ExportFile.h"
#include "ExportSamples.h"
#include "PdfWriter.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class PdfWithoutFontsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        QFile config(m_folder.filePath(u"fonts.conf"_s));
        QVERIFY(config.open(QIODevice::WriteOnly));
        config.write("<?xml version='1.0'?><!DOCTYPE fontconfig SYSTEM 'fonts.dtd'>"
                     "<fontconfig></fontconfig>");
        qputenv("FONTCONFIG_FILE", QFile::encodeName(config.fileName()));
    }

    void saysThatNoFontIsInstalled()
    {
        const QString path = m_folder.filePath(u"links.pdf"_s);
        QByteArray bytes;
        QVERIFY(!writePdf(makeDocument({}), [&bytes](QByteArrayView part) {
            bytes.append(part);
            return true;
        }));
        QVERIFY(bytes.isEmpty());
        const auto result = exportToFile(makeDocument({}), ExportFormat::pdf, path);
        QVERIFY(!result);
        QCOMPARE(description(result.error()),
                 u"a PDF cannot be written because no font is installed"_s);
        QCOMPARE(QDir(m_folder.path()).entryList(QDir::Files | QDir::Hidden),
                 QStringList{u"fonts.conf"_s});
    }

private:
    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(PdfWithoutFontsTest)
#include "PdfWithoutFontsTest.moc"
