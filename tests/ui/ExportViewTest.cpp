// SPDX-License-Identifier: MIT
#include "ExportView.h"

#include "Controls.h"
#include "Desk.h"
#include "ExportService.h"
#include "ExportViewModel.h"
#include "InlineExportView.h"
#include "InlineExportViewModel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QFile>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace
{

struct ExportDesk : Desk {
    ExportService exports{
        {context(), dialog, [](QList<LinkId>) -> Task<> { co_return; }, clock, u"en_US"_s}};

    ExportDesk()
    {
        add(u"https://a.example/one"_s);
        add(u"https://b.example/two"_s);
    }
};

QStringList entries(const QComboBox &picker)
{
    QStringList found;
    for (int index = 0; index < picker.count(); ++index)
        found.append(picker.itemText(index));
    return found;
}

} // namespace

class ExportViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theWindowOffersWhatItShould()
    {
        ExportDesk desk;
        const ExportView view(std::make_shared<ExportViewModel>(desk.exports));
        QCOMPARE(view.windowTitle(), u"Export Links"_s);
        auto *const range = labelled<QComboBox>(view, u"Date Range"_s);
        QCOMPARE(entries(*range),
                 QStringList({u"Today"_s, u"Yesterday"_s, u"Last 7 Days"_s, u"Last 30 Days"_s,
                              u"Custom"_s}));
        QCOMPARE(range->currentText(), u"Today"_s);
        const auto *const format = labelled<QComboBox>(view, u"Format"_s);
        QCOMPARE(entries(*format),
                 QStringList({u"Text (.txt)"_s, u"Markdown (.md)"_s, u"PDF (.pdf)"_s}));
        QCOMPARE(format->currentText(), u"Markdown (.md)"_s);
        QTRY_VERIFY(shows(view, u"2 links to export"_s));
        QVERIFY(!view.findChild<QCheckBox *>()->isChecked());
        QVERIFY(labelled<QPushButton>(view, u"Export"_s)->isDefault());

        // As assistive technology sets it: what is filtered out must not be exported.
        labelled<QLineEdit>(view, u"Filter links..."_s)->setText(u"TWO"_s);
        QTRY_VERIFY(shows(view, u"1 links to export"_s));
        for (const QString &entry : {u"Custom"_s, u"Today"_s}) {
            range->setCurrentText(entry);
            for (const QString &day : {u"From"_s, u"To"_s})
                QCOMPARE(labelled<QDateEdit>(view, day)->isVisibleTo(&view), entry == u"Custom");
        }
    }

    void theWindowWritesAndCloses()
    {
        ExportDesk desk;
        desk.dialog.answer = desk.temporary.filePath(u"links.md"_s);
        const QPointer<ExportView> view =
            new ExportView(std::make_shared<ExportViewModel>(desk.exports));
        view->show();
        QTest::keyClick(view, Qt::Key_Return);
        QVERIFY(!labelled<QPushButton>(*view, u"Export"_s)->isEnabled());
        QTRY_VERIFY(!view);
        QCOMPARE(desk.dialog.requests.value(0).suggestedName, u"links.md"_s);
        QVERIFY(QFile::exists(*desk.dialog.answer));
    }

    void escapeClosesTheWindow()
    {
        ExportDesk desk;
        const QPointer<ExportView> view =
            new ExportView(std::make_shared<ExportViewModel>(desk.exports));
        view->show();
        QTest::keyClick(view, Qt::Key_Escape);
        QTRY_VERIFY(!view);
        QVERIFY(desk.dialog.requests.isEmpty());
    }

    void aRunningExportOutlivesTheWindow()
    {
        ExportDesk desk;
        const auto model = std::make_shared<ExportViewModel>(desk.exports);
        ExportView view(model);
        auto *const saveDialog = new QObject(&view);
        connect(saveDialog, &QObject::destroyed, model.get(),
                [&] { model->setClearAfterExport(true); });
    }

    void theCompactScreenOffersWhatItShould()
    {
        ExportDesk desk;
        const InlineExportView view(std::make_shared<InlineExportViewModel>(desk.exports));
        const auto *const range = labelled<QComboBox>(view, u"Date Range"_s);
        QCOMPARE(entries(*range),
                 QStringList({u"Today"_s, u"Yesterday"_s, u"Last 7 Days"_s, u"Last 30 Days"_s,
                              u"All Time"_s}));
        QCOMPARE(range->currentText(), u"Last 7 Days"_s);
        const auto *const format = labelled<QComboBox>(view, u"Format"_s);
        QCOMPARE(entries(*format), QStringList({u"Plain Text"_s, u"Markdown"_s, u"PDF"_s}));
        QCOMPARE(format->currentText(), u"Markdown"_s);
        QVERIFY(labelled<QLineEdit>(view, u"Search links..."_s));
        QTRY_VERIFY(shows(view, u"Links to export: 2"_s));
        labelled<QLineEdit>(view, u"Search links..."_s)->setText(u"TWO"_s);
        QTRY_VERIFY(shows(view, u"Links to export: 1"_s));
        QSignalSpy done(&view, &InlineExportView::done);
        labelled<QPushButton>(view, u"Cancel"_s)->click();
        QCOMPARE(done.size(), 1);
        labelled<QPushButton>(view, u"Export"_s)->click();
        QTRY_COMPARE(desk.dialog.requests.value(0).suggestedName, u"links-export.md"_s);
        QTRY_VERIFY(labelled<QPushButton>(view, u"Export"_s)->isEnabled());
        QCOMPARE(done.size(), 1); // the user has cancelled the dialog: the screen stays
    }
};

QTEST_MAIN(ExportViewTest)
#include "ExportViewTest.moc"
