// SPDX-License-Identifier: MIT
#include "Confirmation.h"
#include "Controls.h"
#include "InlineExportView.h"
#include "MenuBarView.h"
#include "Rows.h"
#include "SettingsDesk.h"
#include "Spinner.h"
#include "StatusLine.h"
#include "TestPanel.h"
#include "Waiting.h"
#include "settings/EmailSettingsTab.h"
#include "settings/EmailSetupSheet.h"
#include "settings/ExcludedDomainsModel.h"
#include "settings/ExcludedTabContent.h"
#include "settings/InlineSettingsView.h"
#include "settings/SettingsView.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimeEdit>
#include <QWheelEvent>

using namespace Qt::StringLiterals;

namespace
{

using MakeScreen = QWidget *(*)(const SettingsDependencies &);

template <SettingsTab tab>
QWidget *inPanel(const SettingsDependencies &with)
{
    auto *const view = new InlineSettingsView(with);
    view->select(tab);
    return view;
}

QWidget *inWindow(const SettingsDependencies &with)
{
    return new SettingsView(with);
}

QString valueOf(const QWidget &control)
{
    if (const auto *const toggle = qobject_cast<const QCheckBox *>(&control))
        return toggle->isChecked() ? u"on"_s : u"off"_s;
    return control.property(qobject_cast<const QComboBox *>(&control) ? "currentText" : "text")
        .toString();
}

/// As assistive technology does it: without keys and clicks.
void setValue(QWidget &control, const QString &value)
{
    if (auto *const toggle = qobject_cast<QCheckBox *>(&control))
        toggle->toggle();
    else if (auto *const picker = qobject_cast<QComboBox *>(&control))
        picker->setCurrentText(value);
    else if (auto *const field = qobject_cast<QLineEdit *>(&control))
        field->setText(value);
    else if (auto *const time = qobject_cast<QTimeEdit *>(&control)) {
        time->setTime(QTime::fromString(value));
        Q_EMIT time->editingFinished();
    }
}

void turnWheelOver(QWidget &control)
{
    const QPoint step(0, -120);
    QWheelEvent event({5, 5}, control.mapToGlobal(QPointF(5, 5)), step, step, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&control, &event);
}

ConfirmationView *openQuestion()
{
    return qobject_cast<ConfirmationView *>(QApplication::activeModalWidget());
}

} // namespace

class SettingsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void controlsWriteOnlyWhatIsChanged()
    {
        Rows<MakeScreen, QString, QString, QString, QString> rows{
            {"Send Time", inWindow, u"Send Time"_s, u"08:00"_s, u"17:45:00"_s,
             u"emailSendHour=17"_s},
            {"Send To", inPanel<SettingsTab::email>, u"Send To"_s, QString(), u"me"_s,
             u"emailAddress=me"_s},
            {"Email Address", inWindow, u"Email Address"_s, QString(), u"me"_s,
             u"emailAddress=me"_s},
        };
        const auto toggle = [&rows](const MakeScreen &make, const QString &label, bool isOn,
                                    const QString &key) {
            rows.add({label.toUtf8(), make, label, isOn ? u"on"_s : u"off"_s, QString(),
                      key + (isOn ? u"=false" : u"=true")});
        };
        toggle(inPanel<SettingsTab::general>, u"Launch at Login"_s, false, u"launchAtLogin"_s);
        toggle(inPanel<SettingsTab::general>, u"Automatically install updates"_s, false,
               u"autoInstallUpdates"_s);
        toggle(inPanel<SettingsTab::email>, u"Enable Daily Email Digest"_s, false,
               u"emailDigestEnabled"_s);
        toggle(inPanel<SettingsTab::email>, u"Clear links after sending"_s, true,
               u"clearAfterEmail"_s);
        toggle(inWindow, u"Show in Dock"_s, false, u"showInDock"_s);
        toggle(inWindow, u"Launch at Login"_s, true, u"launchAtLogin"_s);
        toggle(inWindow, u"Check for Updates Automatically"_s, true, u"checkForUpdates"_s);
        toggle(inWindow, u"Enable Daily Email Digest"_s, false, u"emailDigestEnabled"_s);
        const std::pair<QString, int> spans[] = {
            {u"30 days"_s, 30}, {u"180 days"_s, 180}, {u"1 year"_s, 365}, {u"Never"_s, 0}};
        for (const auto &[entry, days] : spans) {
            const QString line = u"autoPruneDays=%1"_s.arg(days);
            rows.add({entry.toUtf8(), inPanel<SettingsTab::data>, u"Auto-delete after"_s,
                      u"90 days"_s, entry, line});
            rows.add({entry.toUtf8(), inWindow, u"Auto-prune after"_s, u"90 days"_s, entry, line});
        }
        for (const int hour : {0, 9, 23})
            rows.add({"Send at", inPanel<SettingsTab::email>, u"Send at"_s, u"08:00"_s,
                      u"%1:00"_s.arg(hour, 2, 10, QChar(u'0')), u"emailSendHour=%1"_s.arg(hour)});
        for (const auto &[make, label, shown, value, line] : rows) {
            SettingsDesk desk;
            const std::unique_ptr<QWidget> view(make(desk.all));
            auto *const control = labelled<QWidget>(*view, label);
            QVERIFY(control);
            QCOMPARE(valueOf(*control), shown);
            turnWheelOver(*control);
            QCOMPARE(valueOf(*control), shown);
            QCOMPARE(desk.written(), QString());

            setValue(*control, value);
            QVERIFY2(desk.written().contains(line), qPrintable(desk.written()));
            QCOMPARE(desk.written().count(u'='), 1);
            QCOMPARE(desk.logins,
                     label == u"Launch at Login" ? QList{shown == u"off"} : QList<bool>());
        }
    }

    void strangeValuesAreShownAndLeftAsTheyAre()
    {
        const Rows<int> rows{{"before never", -5}, {"between two entries", 45}};
        for (const auto &[pruneDays] : rows) {
            SettingsDesk desk;
            desk.preferences.set(preferenceKeys::emailSendHour, 99);
            desk.preferences.set(preferenceKeys::autoPruneDays, pruneDays);
            const QString before = desk.written();
            InlineSettingsView inlineView(desk.all);
            inlineView.select(SettingsTab::email);
            QCOMPARE(labelled<QComboBox>(inlineView, u"Send at"_s)->placeholderText(), u"99"_s);
            inlineView.select(SettingsTab::data);
            QCOMPARE(labelled<QComboBox>(inlineView, u"Auto-delete after"_s)->currentIndex(), -1);
            const SettingsView window(desk.all);
            QCOMPARE(desk.written(), before);
        }
    }

    void bothScreensAgree()
    {
        SettingsDesk desk;
        const EmailTabContent inlineView(desk.email);
        const EmailSettingsTab window(desk.preferences, desk.scheduler);
        auto *const time = window.findChild<QTimeEdit *>();
        desk.preferences.set(preferenceKeys::emailDigestEnabled, true);
        QTRY_VERIFY(desk.keys.isConfigured());
        setValue(*time, u"17:45:00"_s);
        QVERIFY(desk.scheduler.isScheduled());
        QCOMPARE(labelled<QComboBox>(inlineView, u"Send at"_s)->currentText(), u"17:00"_s);
        QCOMPARE(time->time(), QTime(17, 0));
        labelled<QCheckBox>(inlineView, u"Enable Daily Email Digest"_s)->click();
        QVERIFY(!desk.scheduler.isScheduled());
        QVERIFY(!labelled<QCheckBox>(window, u"Enable Daily Email Digest"_s)->isChecked());
        QTest::keyClicks(labelled<QLineEdit>(window, u"Email Address"_s), u"a@b.example"_s);
        QCOMPARE(labelled<QLineEdit>(inlineView, u"Send To"_s)->text(), u"a@b.example"_s);
    }

    void aSendOutlivesItsTabAndItsOutcomeIsSeenOnce()
    {
        const Rows<int, QString> rows{
            {"sent", 200, u"Email sent successfully!"_s},
            {"refused", 500, u"Failed to connect to the email service."_s}};
        for (const auto &[status, outcome] : rows) {
            SettingsDesk desk;
            desk.addLink(u"https://a.example"_s);
            InlineSettingsView view(desk.all);
            view.show();
            const auto open = [&view](SettingsTab tab) {
                view.select(tab);
                QCoreApplication::processEvents(); // shows it
            };
            const auto press = [&view] { labelled<QAbstractButton>(view, u"Send Now"_s)->click(); };
            open(SettingsTab::email);
            QTest::keyClicks(labelled<QLineEdit>(view, u"Send To"_s), u"a@b.example"_s);
            press();
            open(SettingsTab::general);
            QTRY_COMPARE(desk.web.waiting(), 1);
            open(SettingsTab::email);
            QVERIFY(view.findChild<Spinner *>()->isVisible());
            press();
            open(SettingsTab::general);
            desk.web.answerNext(HttpResponse{status, {}, false});
            QTRY_VERIFY(!desk.manualSend.isSending());
            open(SettingsTab::email);
            QVERIFY(shows(view, outcome));
            QCOMPARE(desk.web.requests().size(), 1);

            open(SettingsTab::general);
            open(SettingsTab::email);
            QVERIFY(!shows(view, outcome));
            press();
            QTRY_COMPARE(desk.web.waiting(), 1);
            desk.web.answerNext(HttpResponse{status, {}, false});
            QTRY_VERIFY(shows(view, outcome)); // seen as it comes
            view.hide();
            view.show();
            QVERIFY(!shows(view, outcome));
        }
    }

    void timesReadTheSameFromRightToLeft()
    {
        QApplication::setLayoutDirection(Qt::RightToLeft);
        const auto back = qScopeGuard([] { QApplication::setLayoutDirection(Qt::LeftToRight); });
        SettingsDesk desk;
        const EmailSettingsTab window(desk.preferences, desk.scheduler);
        QCOMPARE(window.findChild<QTimeEdit *>()->text(), u"08:00"_s);
    }

    void domains()
    {
        const Rows<QString, QString> rows{
            {"an address", u"  HTTPS://Shop.Example/a?b=c \n"_s, u"shop.example"_s},
            {"a name", u"example.com"_s, u"example.com"_s},
            {"port and query stay", u"a.example:80?x"_s, u"a.example:80?x"_s},
            {"www stays", u"www.a.example"_s, u"www.a.example"_s},
            {"every scheme", u"https://http://a.example"_s, u"a.example"_s},
            {"a scheme alone", u"http://"_s, QString()},
            {"a path alone", u"/a"_s, QString()},
            {"nothing", u" \t"_s, QString()},
        };
        for (const auto &[typed, domain] : rows)
            QCOMPARE(domainFrom(typed).value_or(QString()), domain);
    }

    void domainsAreAddedTwiceAndRemovedOnce()
    {
        SettingsDesk desk;
        ExcludedTabContent view(desk.context(), desk.clock);
        auto *const field = view.findChild<QLineEdit *>();
        for (int time = 0; time < 2; ++time) {
            QTest::keyClicks(field, u"a.example"_s);
            QTest::keyClick(field, Qt::Key_Return);
            QCOMPARE(field->text(), QString());
        }
        QCOMPARE(desk.context().excludedDomains()->size(), 2);
        view.show();
        for (int left = 1; left >= 0; --left) { // by keyboard, which then is at the next, or back
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            auto *const remove = labelled<QAbstractButton>(view, u"Remove a.example"_s);
            remove->setFocus();
            remove->click();
            QCOMPARE(desk.context().excludedDomains()->size(), left);
            const QWidget *const now = view.focusWidget();
            QVERIFY(now != remove);
            QCOMPARE(now->accessibleName(),
                     left > 0 ? u"Remove a.example"_s : field->accessibleName());
        }
    }

    void aScreenBeginsAnewWhenItIsNextSeen()
    {
        TestPanel panel;
        SettingsDesk desk;
        MenuBarView view(panel.model, [&] { return new InlineSettingsView(desk.all); });
        const std::function<void()> waysOut[] = {
            [&] { labelled<QAbstractButton>(view, u"Back"_s)->click(); }, [&] { view.hide(); }};
        for (const auto &leave : waysOut) {
            view.showAsPanel({});
            panel.model.setCurrentScreen(MenuBarScreen::settings);
            auto *const settings = view.findChild<InlineSettingsView *>();
            QCOMPARE(settings->selectedTab(), SettingsTab::general);
            settings->select(SettingsTab::data);
            labelled<QAbstractButton>(view, u"Export Links..."_s)->click();
            QVERIFY(view.findChild<InlineExportView *>());
            leave();
            QTRY_VERIFY(!view.findChild<InlineSettingsView *>());
        }
    }

    void longTextsOfOthersStayWithinThePanel()
    {
        SettingsDesk desk;
        const QString address = u"a"_s.repeated(200) + u"@b.example"_s;
        desk.secrets.contents[ResendKeyService::emailAccount] = address.toUtf8();
        desk.keys.refresh();
        EmailTabContent view(desk.email);
        QTRY_VERIFY(shows(view, u"Sending from: "_s + address));
        auto *const outcome = view.findChild<StatusLine *>();
        outcome->tell(Tone::error, u"x"_s.repeated(300));
        view.resize(360, 800);
        view.show();
        QVERIFY(view.minimumSizeHint().width() <= 360);
        QVERIFY(outcome->height() >= 5 * view.fontMetrics().height());
    }

    void clearingAsksFirst()
    {
        // The texts: the button, and the title, message and action of its question.
        const Rows<MakeScreen, QStringList> rows{
            {"inline", MakeScreen(inPanel<SettingsTab::data>),
             QStringList{u"Clear All History"_s, u"Delete all 1 links?"_s,
                         u"This cannot be undone."_s, u"Delete All"_s}},
            {"window", MakeScreen(inWindow),
             QStringList{u"Clear History"_s, u"Clear History"_s,
                         u"This will permanently delete all captured links. "
                         "This action cannot be undone."_s,
                         u"Clear All"_s}},
        };
        for (const auto &[make, texts] : rows) {
            SettingsDesk desk;
            desk.addLink(u"https://a.example"_s);
            const std::unique_ptr<QWidget> view(make(desk.all));
            for (const QString &answer : {u"Cancel"_s, texts.at(3)}) {
                QCOMPARE(desk.context().counts().stored, 1);
                labelled<QAbstractButton>(*view, texts.at(0))->click();
                ConfirmationView *const question = openQuestion();
                QVERIFY(question);
                QVERIFY(shows(*question, texts.at(1)) && shows(*question, texts.at(2)));
                QVERIFY(labelled<QPushButton>(*question, u"Cancel"_s)->isDefault());
                labelled<QAbstractButton>(*question, answer)->click();
            }
            QCOMPARE(desk.context().counts().stored, 0);
        }
    }

    void theSheetStaysOpenUntilItsTextsAreRight()
    {
        SettingsDesk desk;
        desk.secrets.contents.clear();
        EmailSettingsViewModel model(desk.context(), desk.keys, desk.manualSend);
        auto *const sheet = new EmailSetupSheet(model, desk.email.pages, nullptr);
        const QPointer<EmailSetupSheet> open = sheet;
        sheet->open();
        auto *const save = labelled<QAbstractButton>(*sheet, u"Save"_s);
        const auto typeAndSave = [&](const QString &key, const QString &from) {
            labelled<QLineEdit>(*sheet, u"API Key"_s)->setText(key);
            labelled<QLineEdit>(*sheet, u"From Email"_s)->setText(from);
            save->click();
        };
        const auto isMarked = [&](const QString &field) {
            return labelled<QLineEdit>(*sheet, field)->actions().first()->isVisible();
        };
        typeAndSave({}, {});
        QTRY_VERIFY(shows(*sheet, u"API key cannot be empty"_s));
        QVERIFY(isMarked(u"API Key"_s) && !isMarked(u"From Email"_s));
        typeAndSave(u"re_01234567890123456"_s, u"me@a"_s);
        QTRY_VERIFY(shows(*sheet, u"Invalid email address format"_s));
        QVERIFY(!isMarked(u"API Key"_s) && isMarked(u"From Email"_s));
        QVERIFY(open->isVisible());
        typeAndSave(u"re_01234567890123456"_s, u"me@a.example"_s);
        QTRY_VERIFY(!open || !open->isVisible());
        QCOMPARE(model.senderText(), u"Sending from: me@a.example"_s);
        QVERIFY(!*waitFor(desk.keys.saveConfiguration({}, {})));
        const EmailSetupSheet another(model, desk.email.pages, nullptr);
        QVERIFY(!shows(another, u"API key cannot be empty"_s)); // of an older sheet
    }
};

QTEST_MAIN(SettingsTest)
#include "SettingsTest.moc"
