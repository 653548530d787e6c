// SPDX-License-Identifier: MIT
#include "ElidedLabel.h"
#include "ExportView.h"
#include "ExportViewModel.h"
#include "InlineExportView.h"
#include "InlineExportViewModel.h"
#include "MenuBarView.h"
#include "SettingsDesk.h"
#include "TestPanel.h"
#include "UpdateView.h"
#include "settings/EmailSettingsViewModel.h"
#include "settings/EmailSetupSheet.h"
#include "settings/InlineSettingsView.h"
#include "settings/SettingsView.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabBar>
#include <QTest>
#include <QTranslator>

using namespace Qt::StringLiterals;

namespace
{

constexpr int panelWidth = 380;

/// Every text 40 % longer, and marked.
class LongTexts : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char *, const char *text, const char *, int) const override
    {
        const QString source = QString::fromUtf8(text);
        return u'[' + source + u" été"_s.repeated(source.size() / 10) + u']';
    }
};

/// Those that no translator sees: numbers, times, addresses and the like.
bool isUntranslatable(const QString &text)
{
    return text.isEmpty() || text == u"Strandloom" || text.contains(u"@")
        || text.contains(u".example") || text.endsWith(u"AM") || text.endsWith(u"PM")
        || !std::any_of(text.begin(), text.end(), [](QChar c) { return c.isLetter(); });
}

bool hasRoom(const QLabel &label)
{
    return label.wordWrap() ? label.height() >= label.heightForWidth(label.width())
                            : label.width() >= label.sizeHint().width();
}

/// What is wrong with the texts of a window.
QStringList faults(const QWidget &window)
{
    QStringList found;
    const auto check = [&](const QWidget &widget, const QString &text, bool hasRoom) {
        if (!widget.isVisibleTo(&window) || isUntranslatable(text))
            return;
        if (!text.contains(u'['))
            found.append(u"not translated: "_s + text);
        if (!hasRoom)
            found.append(u"cut off: "_s + text);
        const QRect place(widget.mapTo(&window, QPoint()), widget.size());
        if (place.right() > window.width() || place.left() < 0)
            found.append(u"outside: "_s + text);
    };
    for (const QLabel *const label : window.findChildren<QLabel *>())
        check(*label, label->text(), hasRoom(*label));
    for (const ElidedLabel *const label : window.findChildren<ElidedLabel *>())
        check(*label, label->text(), true);
    for (const QAbstractButton *const button : window.findChildren<QAbstractButton *>())
        check(*button, button->text(), button->width() >= button->minimumSizeHint().width());
    for (const QComboBox *const picker : window.findChildren<QComboBox *>()) {
        for (int index = 0; index < picker->count(); ++index)
            check(*picker, picker->itemText(index), picker->width() >= picker->sizeHint().width());
    }
    for (const QTabBar *const tabs : window.findChildren<QTabBar *>()) {
        for (int index = 0; index < tabs->count(); ++index)
            check(*tabs, tabs->tabText(index), true);
    }
    return found;
}

} // namespace

class PseudoLocaleTest : public QObject
{
    Q_OBJECT

    LongTexts m_texts;

private Q_SLOTS:
    void initTestCase() { QVERIFY(QApplication::installTranslator(&m_texts)); }

    void linksOfThePanel()
    {
        for (const int count : {0, 3}) {
            TestPanel desk;
            desk.addLinks(count);
            MenuBarView panel(desk.model, {});
            panel.show();
            TestPanel::settle();
            QCOMPARE(faults(panel).join(u"; "_s), QString());
        }
    }

    void updates()
    {
        using Kind = UpdateStatus::Kind;
        FakeUrlOpener browser;
        UpdateView view(browser);
        for (const Kind kind :
             {Kind::checking, Kind::upToDate, Kind::newVersion, Kind::fromSystemPackages}) {
            view.present({kind});
            QCoreApplication::processEvents();
            QVERIFY(view.testAttribute(Qt::WA_Moved)); // else a quick answer moves it to a corner
            QCOMPARE(faults(view).join(u"; "_s), QString());
        }
    }

    void tabsOfThePanel()
    {
        for (const bool isConfigured : {false, true}) {
            SettingsDesk desk;
            if (!isConfigured)
                desk.secrets.contents.clear();
            desk.keys.refresh();
            QTRY_COMPARE(desk.keys.isConfigured(), isConfigured);
            InlineSettingsView view(desk.all);
            for (const SettingsTab tab : settingsTabs) {
                view.resize(panelWidth, 600);
                view.select(tab);
                view.show();
                view.resize(panelWidth, view.contentHeight());
                QCoreApplication::processEvents();
                QCOMPARE(faults(view).join(u"; "_s), QString());
                QVERIFY(!view.findChild<QScrollArea *>()->verticalScrollBar()->isVisible());
            }
        }
    }

    void compactExport()
    {
        SettingsDesk desk;
        InlineExportView view(std::make_shared<InlineExportViewModel>(desk.exports));
        view.resize(panelWidth - 24, view.sizeHint().height());
        view.show();
        QCOMPARE(faults(view).join(u"; "_s), QString());
    }

    void windows()
    {
        SettingsDesk desk;
        SettingsView settings(desk.all);
        settings.show();
        for (int index = 0; index < settings.count(); ++index) {
            settings.setCurrentIndex(index);
            QCoreApplication::processEvents();
            QCOMPARE(faults(settings).join(u"; "_s), QString());
        }
        auto *const window = new ExportView(std::make_shared<ExportViewModel>(desk.exports));
        window->show();
        QCOMPARE(faults(*window).join(u"; "_s), QString());
        window->close();
        EmailSettingsViewModel model(desk.context(), desk.keys, desk.manualSend);
        auto *const sheet = new EmailSetupSheet(model, desk.email.pages, nullptr);
        sheet->open();
        QCoreApplication::processEvents();
        QCOMPARE(faults(*sheet).join(u"; "_s), QString());
        sheet->close();
    }
};

QTEST_MAIN(PseudoLocaleTest)
#include "PseudoLocaleTest.moc"
