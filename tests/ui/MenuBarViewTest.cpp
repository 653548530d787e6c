// SPDX-License-Identifier: MIT
#include "MenuBarView.h"

#include "Card.h"
#include "Controls.h"
#include "FormWidgets.h"
#include "IconButton.h"
#include "PanelPlacement.h"
#include "Rows.h"
#include "Spinner.h"
#include "TestPanel.h"
#include "TintedIcon.h"

#include <QDialog>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <cmath>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

QColor inkOf(const QIcon &icon)
{
    const QImage image = icon.pixmap(16, 16).toImage();
    QColor ink(Qt::transparent);
    for (int at = 0; at < 256; ++at) {
        const QColor color = image.pixelColor(at % 16, at / 16);
        ink = color.alpha() > ink.alpha() ? color : ink;
    }
    return ink;
}

} // namespace

class MenuBarViewTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void opensWhereTheTrayIs()
    {
        using Tray = std::optional<QRect>;
        const QRect wide(0, 24, 1000, 676);
        const Rows<QRect, Tray, QPoint, QRect> rows{
            {"below a tray above", wide, Tray(QRect(500, 0, 24, 24)), QPoint(),
             QRect(411, 24, 200, 300)},
            {"above a tray below", wide, Tray(QRect(500, 676, 24, 24)), QPoint(),
             QRect(411, 376, 200, 300)},
            {"in the right corner", wide, Tray(QRect(980, 0, 20, 24)), QPoint(),
             QRect(800, 24, 200, 300)},
            {"at the cursor", wide, Tray(), QPoint(300, 100), QRect(200, 101, 200, 300)},
            {"cursor in a corner", wide, Tray(), QPoint(2, 698), QRect(0, 398, 200, 300)},
            {"on another screen", QRect(-1000, 0, 1000, 700), Tray(QRect(-1000, 0, 20, 20)),
             QPoint(5, 5), QRect(-1000, 20, 200, 300)},
            {"no room beside the tray", QRect(0, 0, 1000, 310), Tray(QRect(500, 0, 24, 24)),
             QPoint(), QRect(411, 24, 200, 286)},
            {"screen too small", QRect(0, 0, 160, 120), Tray(), QPoint(80, 10),
             QRect(0, 0, 160, 120)},
        };
        for (const auto &[screen, tray, cursor, place] : rows)
            QCOMPARE(panelPlacement(QSize(200, 300), tray, cursor, screen), place);
    }

    void invitesToCopyWhileThereAreNoLinks()
    {
        TestPanel panel;
        MenuBarView view(panel.model, {});
        view.showAsPanel({});
        QVERIFY(shows(view, u"No Links Yet"_s));
        QVERIFY(!view.findChild<LinkListView *>()->isVisible());
        panel.addLinks(1);
        QVERIFY(!shows(view, u"No Links Yet"_s));
        QTRY_COMPARE(view.findChild<LinkListView *>()->rowsInView().size(), 1);
        panel.model.remove(panel.model.links().positionAt(0).id);
        panel.settle();
        QVERIFY(shows(view, u"No Links Yet"_s));
    }

    void outlinesAreWholeAtEveryScale()
    {
        for (const qreal scale : {1., 1.25, 1.5, 1.75, 2.}) {
            QWidget window;
            window.resize(101, 61);
            Card card(&window);
            card.setGeometry(11, 7, 77, 45);
            QImage image((QSizeF(window.size()) * scale).toSize(), QImage::Format_RGB32);
            image.setDevicePixelRatio(scale);
            window.render(&image);
            const QRgb line = card.palette().color(QPalette::Mid).rgb();
            const QRect place =
                QRectF(QPointF(card.pos()) * scale, QSizeF(card.size()) * scale).toRect();
            const int corner = int(std::ceil(7 * scale));
            for (int x = place.left() + corner; x <= place.right() - corner; ++x) {
                QCOMPARE(image.pixel(x, place.top()), line);
                QCOMPARE(image.pixel(x, place.bottom()), line);
            }
            for (int y = place.top() + corner; y <= place.bottom() - corner; ++y) {
                QCOMPARE(image.pixel(place.left(), y), line);
                QCOMPARE(image.pixel(place.right(), y), line);
            }
            QVERIFY(image.pixel(place.center()) != line);
        }
    }

    void showsTheNoticeOnlyWhileThereIsOne()
    {
        TestPanel panel;
        MenuBarView view(panel.model, {});
        view.showAsWindow();
        QSignalSpy resumes(&panel.model, &MenuBarViewModel::resumeRequested);
        panel.model.setPaused(true);
        QVERIFY(shows(view, u"Capturing is paused."_s));
        const auto buttons = view.findChildren<QPushButton *>();
        QCOMPARE(buttons.size(), 1);
        QVERIFY(buttons.first()->isVisible());
        buttons.first()->click();
        QCOMPARE(resumes.size(), 1);
        panel.model.setPaused(false);
        QVERIFY(!buttons.first()->isVisible());
        panel.clipboard.setLimitation(u"Copies cannot be seen here."_s);
        QVERIFY(shows(view, u"Copies cannot be seen here."_s));
        panel.clipboard.setLimitation({});
        QVERIFY(!shows(view, QString()));
    }

    void aSpinnerStandsForTheIconWhileSummariesAreWritten()
    {
        TestPanel panel;
        panel.addLinks(1);
        MenuBarView view(panel.model, {});
        view.showAsPanel({});
        auto &spinner = *view.findChild<Spinner *>();
        auto &button = *labelled<IconButton>(view, u"Generate AI summaries for 1 links"_s);
        QVERIFY(!spinner.isVisible());
        button.click();
        QVERIFY(spinner.isVisible());
        QVERIFY(button.icon().isNull());
        QVERIFY(button.isEnabled());
        QTRY_VERIFY((panel.clock.advance(100ms), panel.web.waiting() == 1));
        panel.web.answerNext(HttpResponse{200, "<title>Tea</title>", false});
        QTRY_VERIFY((panel.clock.advance(100ms), !spinner.isVisible()));
        QVERIFY(!button.icon().isNull());
        QCOMPARE(button.accessibleName(), u"All links have summaries"_s);
    }

    void showsHowFarTheModelIsLoaded()
    {
        TestPanel panel;
        MenuBarView view(panel.model, {});
        view.showAsPanel({});
        auto &bar = *view.findChild<QProgressBar *>();
        QVERIFY(!bar.isVisible());
        panel.model.setModelLoad(0.25);
        QVERIFY(bar.isVisible());
        QCOMPARE(4 * (bar.value() - bar.minimum()), bar.maximum() - bar.minimum());
        panel.model.setModelLoad({});
        QVERIFY(!bar.isVisible());
    }

    void goesWhenTheUserTurnsElsewhere()
    {
        TestPanel panel;
        MenuBarView view(panel.model, {});
        QWidget other;
        view.showAsPanel({});
        QVERIFY(QTest::qWaitForWindowActive(&view));
        other.show();
        other.activateWindow();
        QTRY_VERIFY(!view.isVisible());

        view.showAsPanel({});
        QVERIFY(QTest::qWaitForWindowActive(&view));
        QDialog dialog(&view);
        dialog.open();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        QVERIFY(view.isVisible());
        other.activateWindow(); // to look something up: the dialog stays, and the panel comes back
        QTRY_VERIFY(!view.isVisible());
        QVERIFY(dialog.isVisible());
        dialog.reject();
        QVERIFY(view.isVisible());

        view.showAsWindow();
        QVERIFY(QTest::qWaitForWindowActive(&view));
        other.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        QVERIFY(view.isVisible());
    }

    void escapeClosesAndQuitQuits()
    {
        TestPanel panel;
        panel.addLinks(1);
        MenuBarView view(panel.model, {});
        view.showAsPanel({});
        QVERIFY(QTest::qWaitForWindowActive(&view));
        QSignalSpy quits(&view, &MenuBarView::quitRequested);
        labelled<IconButton>(view, u"Quit Strandloom"_s)->click();
        QCOMPARE(quits.count(), 1);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        QVERIFY(!view.isVisible());
    }

    void typingFinds()
    {
        TestPanel panel;
        panel.addLinks(30);
        panel.addSummarized(u"https://b.example/"_s, 99, u"A page about 7 sorts of tea."_s);
        MenuBarView view(panel.model, {});
        view.showAsPanel({});
        QVERIFY(QTest::qWaitForWindowActive(&view));
        auto &list = *view.findChild<LinkListView *>();
        auto &line = *view.findChild<QLineEdit *>();
        const auto press = [](Qt::Key key, const QString &text = {}) {
            QTest::sendKeyEvent(QTest::Click, QApplication::focusWidget(), key, text, {});
            TestPanel::settle();
        };
        press(Qt::Key_Space, u" "_s);
        QVERIFY(!line.isVisible());
        press(Qt::Key_7, u"7"_s);
        QVERIFY(line.hasFocus());
        QVERIFY(shows(view, u"4 of 31 links"_s));
        press(Qt::Key_Down);
        press(Qt::Key_Down);
        QCOMPARE(list.rowsInView().size(), 4);
        QVERIFY(list.rowsInView().at(1)->hasFocus());
        press(Qt::Key_Return);
        press(Qt::Key_Delete);
        QCOMPARE(panel.browser.opened, {u"https://a.example/27"_s});
        QVERIFY(shows(view, u"3 of 30 links"_s));
        press(Qt::Key_1, u"1"_s); // goes on from the list
        QCOMPARE(line.text(), u"71"_s);
        QCOMPARE(list.rowsInView().size(), 0);
        press(Qt::Key_Return);
        press(Qt::Key_Backspace);
        press(Qt::Key_Return); // opens the first
        QCOMPARE(panel.browser.opened.last(), u"https://b.example/"_s);

        press(Qt::Key_Escape);
        QVERIFY(line.isVisible());
        QVERIFY(shows(view, u"30 links"_s));
        press(Qt::Key_Escape);
        QVERIFY(!line.isVisible());
        press(Qt::Key_7, u"7"_s);
        view.hide();
        QVERIFY(!panel.model.isSearching());
        view.showAsPanel({});
        QVERIFY(!line.isVisible());
    }

    void pastingAddsAndTellsWhatCameOfIt()
    {
        const Rows<QString, QString> rows{
            {"new", u"https://new.example/"_s, u"The link was added."_s},
            {"stored", u" https://a.example/0/ "_s, u"The link is already there."_s},
            {"excluded", u"https://www.ads.example/"_s, u"Links of this domain are excluded."_s},
            {"no address", u"new.example"_s, u"The clipboard holds no web address."_s},
        };
        for (const auto &[copied, answer] : rows) {
            TestPanel panel;
            panel.addLinks(1);
            QVERIFY(panel.context().insert(ExcludedDomain{{}, u"ads.example"_s, {}}));
            MenuBarView view(panel.model, {});
            view.showAsPanel({});
            panel.clipboard.stopReading(); // as while capturing is paused
            panel.clipboard.copy(copied);
            QTest::keyClick(&view, Qt::Key_V, Qt::ControlModifier);
            QVERIFY(shows(view, answer));
            const bool isNew = copied.contains(u"new.example/");
            QCOMPARE(panel.visible().size(), isNew ? 2 : 1);
            QTRY_COMPARE(panel.web.requests().size(), isNew ? 1 : 0); // for the title
            panel.clock.advance(5s);
            QVERIFY(!shows(view, answer));
        }
    }

    void opensAnewEachTime()
    {
        TestPanel panel;
        panel.addLinks(100);
        MenuBarView view(panel.model, {});
        view.showAsPanel({});
        QVERIFY(QTest::qWaitForWindowActive(&view));
        auto &list = *view.findChild<LinkListView *>();
        panel.context().setSummary(list.rowsInView().front()->id(), u"On tea."_s);
        list.setCurrent(0);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
        QTRY_VERIFY(list.rowsInView().front()->isExpanded());
        list.setCurrent(50);
        view.hide();
        panel.clock.setWallClock(panel.clock.now() + 24h);
        view.showAsPanel({});
        QCOMPARE(list.rowsInView().front()->id(), panel.model.links().positionAt(0).id);
        QVERIFY(!list.rowsInView().front()->isExpanded());
        QCOMPARE(panel.model.todayText(), u"0 today"_s);
    }

    void iconsAreDrawnInTheColourOfTheText()
    {
        const QPalette before = QApplication::palette();
        const QIcon icon = tintedIcon(u"trash"_s);
        for (const QColor &color : {QColor(Qt::red), QColor(Qt::green)}) {
            QPalette palette = before;
            palette.setColor(QPalette::WindowText, color);
            QApplication::setPalette(palette);
            QCOMPARE(inkOf(icon), color);
        }
        const std::unique_ptr<QPushButton> remove(destructiveButton(u"Delete"_s));
        remove->show();
        for (const QColor &base : {QColor(Qt::black), QColor(Qt::white)}) {
            QPalette palette = before;
            palette.setColor(QPalette::Base, base);
            QApplication::setPalette(palette);
            QTRY_COMPARE(remove->palette().color(QPalette::ButtonText),
                         toneColor(Tone::error, palette));
        }
        QApplication::setPalette(before);
    }
};

QTEST_MAIN(MenuBarViewTest)
#include "MenuBarViewTest.moc"
