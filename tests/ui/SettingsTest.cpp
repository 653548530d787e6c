// SPDX-License-Identifier: MIT
#include "SettingsDesk.h"
#include "settings/DataTabContent.h"
#include "settings/EmailSettingsTab.h"
#include "settings/EmailSetupSheet.h"
#include "settings/EmailTabContent.h"
#include "settings/ExcludedDomainsModel.h"
#include "settings/ExcludedTabContent.h"
#include "settings/GeneralSettingsTab.h"
#include "settings/GeneralTabContent.h"
#include "settings/InlineSettingsView.h"
#include "settings/SettingsView.h"
#include "settings/StorageSettingsTab.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QTabBar>
#include <QTest>
#include <QTimeEdit>

using namespace Qt::StringLiterals;

namespace
{

using MakeScreen = std::function<QWidget *(const SettingsParts &)>;

template <typename Screen>
MakeScreen screen()
{
    return [](const SettingsParts &parts) -> QWidget * { return new Screen(parts); };
}

template <typename Control>
Control *labelled(QWidget &screen, const QString &label)
{
    for (Control *const control : screen.findChildren<Control *>()) {
        const auto *const button = qobject_cast<QAbstractButton *>(control);
        if ((button && button->text() == label) || control->accessibleName() == label)
            return control;
    }
    return nullptr;
}

QStringList texts(const QWidget &screen)
{
    QStringList found;
    for (const QLabel *const label : screen.findChildren<QLabel *>()) {
        if (label->isVisibleTo(&screen))
            found.append(label->text());
    }
    return found;
}

QMessageBox *openQuestion()
{
    return qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
}

QAbstractButton *button(QMessageBox &box, const QString &text)
{
    return labelled<QAbstractButton>(box, text);
}

} // namespace

class SettingsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void togglesShowTheirDefaultAndWriteOnlyWhenClicked_data()
    {
        QTest::addColumn<MakeScreen>("make");
        QTest::addColumn<QString>("label");
        QTest::addColumn<bool>("isOn");
        QTest::addColumn<QString>("key");
        const auto row = [](const MakeScreen &make, const char *label, bool isOn, const char *key) {
            QTest::addRow("%s, %s", label, isOn ? "on" : "off")
                << make << QString::fromUtf8(label) << isOn << QString::fromUtf8(key);
        };
        row(screen<GeneralTabContent>(), "Launch at Login", false, "launchAtLogin");
        row(screen<GeneralTabContent>(), "Automatically install updates", false,
            "autoInstallUpdates");
        row(screen<EmailTabContent>(), "Enable Daily Email Digest", false, "emailDigestEnabled");
        row(screen<EmailTabContent>(), "Clear links after sending", true, "clearAfterEmail");
        row(screen<GeneralSettingsTab>(), "Show in Dock", false, "showInDock");
        row(screen<GeneralSettingsTab>(), "Launch at Login", true, "launchAtLogin");
        row(screen<GeneralSettingsTab>(), "Check for Updates Automatically", true,
            "checkForUpdates");
        row(screen<EmailSettingsTab>(), "Enable Daily Email Digest", false, "emailDigestEnabled");
    }
    void togglesShowTheirDefaultAndWriteOnlyWhenClicked()
    {
        QFETCH(MakeScreen, make);
        QFETCH(QString, label);
        QFETCH(bool, isOn);
        QFETCH(QString, key);
        SettingsDesk desk;
        const std::unique_ptr<QWidget> view(make(desk.parts));
        auto *const toggle = labelled<QCheckBox>(*view, label);
        QVERIFY(toggle);
        QCOMPARE(toggle->isChecked(), isOn);
        QCOMPARE(desk.written(), QString());

        toggle->click();
        QVERIFY(desk.written().contains(key + (isOn ? u"=false" : u"=true")));
        QCOMPARE(desk.written().count(u'='), 1);
        QCOMPARE(desk.logins, key == u"launchAtLogin" ? QList{!isOn} : QList<bool>());
    }

    void pickersAndFields_data()
    {
        QTest::addColumn<MakeScreen>("make");
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QString>("line");
        const auto row = [](const MakeScreen &make, const QString &label, const QString &shown,
                            const QString &entry, const QString &line) {
            QTest::newRow(qPrintable(label + u": "_s + entry))
                << make << label << shown << entry << line;
        };
        const std::pair<QString, int> spans[] = {{u"30 days"_s, 30},
                                                 {u"90 days"_s, 90},
                                                 {u"180 days"_s, 180},
                                                 {u"1 year"_s, 365},
                                                 {u"Never"_s, 0}};
        for (const auto &[entry, days] : spans) {
            const QString line = u"autoPruneDays=%1"_s.arg(days);
            row(screen<DataTabContent>(), u"Auto-delete after"_s, u"90 days"_s, entry, line);
            row(screen<StorageSettingsTab>(), u"Auto-prune after"_s, u"90 days"_s, entry, line);
        }
        for (int hour = 0; hour < 24; ++hour)
            row(screen<EmailTabContent>(), u"Send at"_s, u"08:00"_s,
                u"%1:00"_s.arg(hour, 2, 10, QChar(u'0')), u"emailSendHour=%1"_s.arg(hour));
        for (const auto &[make, label] :
             {std::pair(screen<EmailTabContent>(), u"Send To"_s),
              std::pair(screen<EmailSettingsTab>(), u"Email Address"_s)})
            row(make, label, {}, u"me"_s, u"emailAddress=me"_s);
    }
    void pickersAndFields()
    {
        QFETCH(MakeScreen, make);
        QFETCH(QString, label);
        QFETCH(QString, shown);
        QFETCH(QString, entry);
        QFETCH(QString, line);
        SettingsDesk desk;
        const std::unique_ptr<QWidget> view(make(desk.parts));
        if (auto *const picker = labelled<QComboBox>(*view, label)) {
            QCOMPARE(picker->currentText(), shown);
            QCOMPARE(desk.written(), QString());
            picker->setCurrentText(entry);
            Q_EMIT picker->activated(picker->currentIndex());
        } else {
            auto *const field = labelled<QLineEdit>(*view, label);
            QVERIFY(field);
            QCOMPARE(field->text(), shown);
            QCOMPARE(desk.written(), QString());
            QTest::keyClicks(field, entry);
        }
        QVERIFY2(desk.written().contains(line), qPrintable(desk.written()));
    }

    void strangeValuesAreShownAndLeftAsTheyAre_data()
    {
        QTest::addColumn<int>("pruneDays");
        QTest::newRow("before never") << -5;
        QTest::newRow("between two entries") << 45;
    }
    void strangeValuesAreShownAndLeftAsTheyAre()
    {
        QFETCH(int, pruneDays);
        SettingsDesk desk;
        desk.preferences.set(preferenceKeys::emailSendHour, 99);
        desk.preferences.set(preferenceKeys::autoPruneDays, pruneDays);
        const QString before = desk.written();
        InlineSettingsView inlineView(desk.parts);
        inlineView.select(SettingsTab::email);
        QCOMPARE(labelled<QComboBox>(inlineView, u"Send at"_s)->placeholderText(), u"99"_s);
        inlineView.select(SettingsTab::data);
        QCOMPARE(labelled<QComboBox>(inlineView, u"Auto-delete after"_s)->currentIndex(), -1);
        const SettingsView window(desk.parts);
        QCOMPARE(desk.written(), before);
    }

    void bothScreensAgree()
    {
        SettingsDesk desk;
        EmailTabContent inlineView(desk.parts);
        EmailSettingsTab window(desk.parts);
        auto *const time = window.findChild<QTimeEdit *>();
        QCOMPARE(time->time(), QTime(8, 0));
        time->setTime(QTime(17, 45));
        Q_EMIT time->editingFinished();
        QCOMPARE(labelled<QComboBox>(inlineView, u"Send at"_s)->currentText(), u"17:00"_s);
        QCOMPARE(time->time(), QTime(17, 0));
        labelled<QCheckBox>(inlineView, u"Enable Daily Email Digest"_s)->click();
        QVERIFY(labelled<QCheckBox>(window, u"Enable Daily Email Digest"_s)->isChecked());
        QTest::keyClicks(labelled<QLineEdit>(window, u"Email Address"_s), u"a@b.example"_s);
        QCOMPARE(labelled<QLineEdit>(inlineView, u"Send To"_s)->text(), u"a@b.example"_s);
    }

    void timesReadTheSameFromRightToLeft()
    {
        QApplication::setLayoutDirection(Qt::RightToLeft);
        const auto back = qScopeGuard([] { QApplication::setLayoutDirection(Qt::LeftToRight); });
        SettingsDesk desk;
        const EmailSettingsTab window(desk.parts);
        QCOMPARE(window.findChild<QTimeEdit *>()->text(), u"08:00"_s);
    }

    void textsStandAsGiven()
    {
        SettingsDesk desk;
        InlineSettingsView view(desk.parts);
        const auto *const tabs = view.findChild<QTabBar *>();
        QStringList titles;
        for (int index = 0; index < tabs->count(); ++index)
            titles.append(tabs->tabText(index));
        QCOMPARE(titles, QStringList({u"General"_s, u"Email"_s, u"Excluded"_s, u"Data"_s}));
        QVERIFY(texts(view).contains(
            u"Strandloom runs in your menu bar and captures URLs you copy."_s));
        view.select(SettingsTab::excluded);
        QVERIFY(texts(view).contains(u"URLs from these domains won't be captured."_s));
        QVERIFY(texts(view).contains(u"No excluded domains"_s));
        view.select(SettingsTab::data);
        QVERIFY(texts(view).contains(u"Stored Links: 0"_s));
        QVERIFY(texts(view).contains(u"Clearing history cannot be undone."_s));
        view.select(SettingsTab::email);
        QVERIFY(texts(view).contains(
            u"To send emails, you'll need a free Resend API key. This keeps your data private - "
            "emails are sent directly from your Mac."_s));
        QVERIFY(
            texts(view).contains(u"Send your captured links to your inbox with AI summaries."_s));
    }

    void domains_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("domain");
        QTest::newRow("an address") << u"  HTTPS://Shop.Example/a?b=c \n"_s << u"shop.example"_s;
        QTest::newRow("a name") << u"example.com"_s << u"example.com"_s;
        QTest::newRow("port and query stay") << u"a.example:80?x"_s << u"a.example:80?x"_s;
        QTest::newRow("www stays") << u"www.a.example"_s << u"www.a.example"_s;
        QTest::newRow("every scheme") << u"https://http://a.example"_s << u"a.example"_s;
        QTest::newRow("a scheme alone") << u"http://"_s << QString();
        QTest::newRow("a path alone") << u"/a"_s << QString();
        QTest::newRow("nothing") << u" \t"_s << QString();
    }
    void domains()
    {
        QFETCH(QString, typed);
        QFETCH(QString, domain);
        QCOMPARE(domainFrom(typed).value_or(QString()), domain);
    }

    void domainsAreAddedTwiceAndRemovedOnce()
    {
        SettingsDesk desk;
        ExcludedTabContent view(desk.parts);
        auto *const field = view.findChild<QLineEdit *>();
        for (int time = 0; time < 2; ++time) {
            QTest::keyClicks(field, u"a.example"_s);
            QTest::keyClick(field, Qt::Key_Return);
            QCOMPARE(field->text(), QString());
        }
        QCOMPARE(desk.context().excludedDomains()->size(), 2);
        labelled<QAbstractButton>(view, u"Remove a.example"_s)->click();
        QCOMPARE(desk.context().excludedDomains()->size(), 1);
    }

    void clearingAsksFirst_data()
    {
        QTest::addColumn<MakeScreen>("make");
        QTest::addColumn<QStringList>("texts"); // button, title, message, action
        QTest::newRow("inline") << screen<DataTabContent>()
                                << QStringList{u"Clear All History"_s, u"Delete all 1 links?"_s,
                                               u"This cannot be undone."_s, u"Delete All"_s};
        QTest::newRow("window") << screen<StorageSettingsTab>()
                                << QStringList{u"Clear History"_s, u"Clear History"_s,
                                               u"This will permanently delete all captured links. "
                                               "This action cannot be undone."_s,
                                               u"Clear All"_s};
    }
    void clearingAsksFirst()
    {
        QFETCH(MakeScreen, make);
        QFETCH(QStringList, texts);
        SettingsDesk desk;
        desk.addLink(u"https://a.example"_s);
        const std::unique_ptr<QWidget> view(make(desk.parts));
        for (const QString &answer : {u"Cancel"_s, texts.at(3)}) {
            QCOMPARE(desk.context().counts().stored, 1);
            labelled<QAbstractButton>(*view, texts.at(0))->click();
            QMessageBox *const question = openQuestion();
            QVERIFY(question);
            QCOMPARE(question->text(), texts.at(1));
            QCOMPARE(question->informativeText(), texts.at(2));
            button(*question, answer)->click();
        }
        QCOMPARE(desk.context().counts().stored, 0);
    }

    void theSheetStaysOpenUntilItsTextsAreRight()
    {
        SettingsDesk desk;
        desk.secrets.contents.clear();
        EmailSettingsViewModel model(desk.parts);
        auto *const sheet = new EmailSetupSheet(desk.parts, model, nullptr);
        const QPointer<EmailSetupSheet> open = sheet;
        sheet->open();
        auto *const save = labelled<QAbstractButton>(*sheet, u"Save"_s);
        const auto typeAndSave = [&](const QString &key, const QString &from) {
            labelled<QLineEdit>(*sheet, u"API Key"_s)->setText(key);
            labelled<QLineEdit>(*sheet, u"From Email"_s)->setText(from);
            save->click();
        };
        typeAndSave({}, {});
        QTRY_VERIFY(texts(*sheet).contains(u"API key cannot be empty"_s));
        typeAndSave(u"re_01234567890123456"_s, u"me@a"_s);
        QTRY_VERIFY(texts(*sheet).contains(u"Invalid email address format"_s));
        QVERIFY(open->isVisible());
        typeAndSave(u"re_01234567890123456"_s, u"me@a.example"_s);
        QTRY_VERIFY(!open || !open->isVisible());
        QCOMPARE(model.senderText(), u"Sending from: me@a.example"_s);
    }
};

QTEST_MAIN(SettingsTest)
#include "SettingsTest.moc"
