// SPDX-License-Identifier: MIT
#include "ElidedLabel.h"
#include "Heartbeat.h"
#include "IconLabel.h"
#include "TestPanel.h"

#include <QAccessible>
#include <QMenu>
#include <QScrollBar>
#include <QTest>
#include <QToolButton>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

/// A list on screen, high enough for ten rows and a half.
struct ShownList : TestPanel {
    LinkListView list{model};

    void show()
    {
        list.resize(380, 10 * LinkRowView::collapsedHeight(list) + 20);
        list.show();
        QVERIFY(QTest::qWaitForWindowActive(&list));
        settle();
    }
    LinkRowView *row(int place) const { return list.rowsInView().at(size_t(place)); }
    int firstNumber() const { return numberOf(*row(0)); }
    /// That of the row which has the focus; -1 when none has.
    int currentNumber() const
    {
        const auto *const current = qobject_cast<LinkRowView *>(QApplication::focusWidget());
        return current ? numberOf(*current) : -1;
    }
    int numberOf(const LinkRowView &view) const
    {
        return context().link(view.id())->url.section(u'/', -1).toInt();
    }
    int scrolled() const { return list.verticalScrollBar()->value(); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
        settle();
    }
};

void pointAt(const QWidget *widget)
{
    QCursor::setPos(widget->mapToGlobal(widget->rect().center()));
    QCoreApplication::processEvents();
}

QMenu *openContextMenu(LinkRowView *row)
{
    QContextMenuEvent event(QContextMenuEvent::Mouse, row->rect().center(),
                            row->mapToGlobal(row->rect().center()));
    QApplication::sendEvent(row, &event);
    return qobject_cast<QMenu *>(QApplication::activePopupWidget());
}

QStringList actionsOf(const QMenu &menu)
{
    QStringList texts;
    for (const QAction *const action : menu.actions()) {
        if (!action->isSeparator())
            texts.append(action->text());
    }
    return texts;
}

} // namespace

class LinkListViewTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void hasWidgetsForTheRowsInViewOnly()
    {
        ShownList shown;
        shown.addLinks(450);
        shown.show();
        QCOMPARE(shown.list.rowsInView().size(), 11);
        QScrollBar &bar = *shown.list.verticalScrollBar();
        for (int value = 0; value < bar.maximum(); value += 170)
            bar.setValue(value);
        bar.setValue(bar.maximum());
        QCOMPARE(shown.numberOf(*shown.list.rowsInView().back()), 0);
        QCOMPARE(shown.row(10)->geometry().bottom() + 1, shown.list.viewport()->height());
        QVERIFY(shown.list.findChildren<LinkRowView *>().size() <= 12);
    }

    void followsKeys()
    {
        ShownList shown;
        shown.addLinks(450);
        shown.show();
        shown.list.setFocus();
        QCOMPARE(shown.currentNumber(), -1);
        shown.press(Qt::Key_Down);
        QCOMPARE(shown.currentNumber(), 449);
        shown.press(Qt::Key_Up);
        QCOMPARE(shown.currentNumber(), 449);
        shown.press(Qt::Key_PageDown);
        QCOMPARE(shown.currentNumber(), 440);
        QCOMPARE(shown.scrolled(), 0);
        shown.press(Qt::Key_Down);
        QCOMPARE(shown.currentNumber(), 439);
        QVERIFY(shown.scrolled() > 0);
        shown.press(Qt::Key_End);
        QCOMPARE(shown.currentNumber(), 0);
        shown.press(Qt::Key_PageUp);
        QCOMPARE(shown.currentNumber(), 9);
        shown.press(Qt::Key_Home);
        QCOMPARE(shown.currentNumber(), 449);
        QCOMPARE(shown.scrolled(), 0);
        shown.press(Qt::Key_Return);
        QCOMPARE(shown.browser.opened, {u"https://a.example/449"_s});
        shown.press(Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(shown.clipboard.text(), u"https://a.example/449"_s);
    }

    void movesTheFocusToTheNeighbourOfADeletedRow()
    {
        ShownList shown;
        shown.addLinks(3);
        shown.show();
        shown.list.setCurrent(1);
        QCOMPARE(shown.currentNumber(), 1);
        shown.press(Qt::Key_Delete);
        QCOMPARE(shown.currentNumber(), 0);
        shown.press(Qt::Key_Delete);
        QCOMPARE(shown.currentNumber(), 2);
        shown.press(Qt::Key_Delete);
        QVERIFY(shown.model.isEmpty());
        QCOMPARE(QApplication::focusWidget(), &shown.list);
        shown.press(Qt::Key_Delete); // nothing is left to delete
    }

    void keepsTheCurrentRowWhileItIsScrolledOut()
    {
        ShownList shown;
        shown.addLinks(100);
        shown.show();
        shown.list.setCurrent(3);
        shown.list.verticalScrollBar()->setValue(2000);
        QCOMPARE(shown.currentNumber(), -1);
        QCOMPARE(QApplication::focusWidget(), &shown.list);
        shown.press(Qt::Key_Down);
        QCOMPARE(shown.currentNumber(), 95);
    }

    void tabGoesFromTheCurrentRowToItsButtons()
    {
        ShownList shown;
        shown.addLinks(5);
        shown.show();
        shown.list.setCurrent(1);
        QStringList names;
        for (int i = 0; i < 4; ++i) {
            names.append(QApplication::focusWidget()->accessibleName().section(u',', 0, 0));
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        const QStringList wanted{u"https://a.example/3"_s, u"Open in Browser"_s, u"Copy URL"_s,
                                 u"Delete"_s};
        QCOMPARE(names, wanted);
        QCOMPARE(shown.currentNumber(), 3);
    }

    void staysInPlaceWhenRowsComeAndGoAbove()
    {
        ShownList shown;
        shown.addLinks(100);
        shown.show();
        shown.list.verticalScrollBar()->setValue(1010);
        const int first = shown.firstNumber(), y = shown.row(0)->y();
        for (int i = 0; i < 5; ++i)
            shown.add(u"https://a.example/%1"_s.arg(100 + i), 100 + i);
        shown.settle();
        QCOMPARE(shown.firstNumber(), first);
        QCOMPARE(shown.row(0)->y(), y);
        QVERIFY(shown.context().remove({shown.model.links().positionAt(0).id}));
        shown.settle();
        QCOMPARE(shown.firstNumber(), first);
        QCOMPARE(shown.row(0)->y(), y);
        QVERIFY(shown.context().remove({shown.row(0)->id()}));
        shown.settle();
        QCOMPARE(shown.firstNumber(), first - 1);

        shown.list.verticalScrollBar()->setValue(0);
        shown.add(u"https://a.example/200"_s, 200);
        shown.settle();
        QCOMPARE(shown.firstNumber(), 200); // at the top the newest is shown
    }

    void expandsAndCollapsesByClick()
    {
        ShownList shown;
        shown.addLinks(3);
        const CapturedLink link =
            shown.addSummarized(u"https://a.example/9"_s, 9, u"A page about tea."_s);
        shown.show();
        const int collapsed = shown.row(0)->height();
        QTest::mouseClick(shown.row(0), Qt::RightButton);
        QTest::mouseClick(shown.row(0), Qt::LeftButton);
        QTRY_VERIFY(shown.row(0)->height() >= collapsed + shown.list.fontMetrics().height());
        shown.add(u"https://a.example/10"_s, 10); // by link, not by place
        shown.settle();
        QCOMPARE(shown.row(0)->height(), collapsed);
        QCOMPARE(shown.row(1)->id(), link.id);
        QTRY_COMPARE(shown.row(2)->y(), shown.row(1)->geometry().bottom() + 1);
        QVERIFY(shown.row(1)->isExpanded());

        QTest::mouseClick(shown.row(1), Qt::LeftButton);
        QTest::mouseClick(shown.row(1), Qt::LeftButton); // back before it was collapsed
        QTest::mouseClick(shown.row(1), Qt::LeftButton);
        QTRY_COMPARE(shown.row(1)->height(), collapsed);
        QTest::mouseClick(shown.row(1), Qt::LeftButton);
        QTRY_VERIFY(shown.row(1)->isExpanded());
    }

    void aSummaryOpensInARowThatIsExpandedAlready()
    {
        ShownList shown;
        shown.addLinks(2);
        shown.show();
        shown.list.setCurrent(0);
        shown.press(Qt::Key_Space);
        QVERIFY(!shown.row(0)->isExpanded());
        shown.context().setSummary(shown.row(0)->id(), u"A page about tea."_s);
        QTRY_VERIFY(shown.row(0)->isExpanded());
        shown.press(Qt::Key_Space);
        QTRY_VERIFY(!shown.row(0)->isExpanded());
    }

    void contextMenuOffersTheSummaryWhereThereIsOne()
    {
        ShownList shown;
        shown.addLinks(1);
        shown.addSummarized(u"https://a.example/9"_s, 9, u"A page about tea."_s);
        shown.show();
        QMenu *menu = openContextMenu(shown.row(1));
        const QStringList without{u"Copy URL"_s, u"Open in Browser"_s, u"Delete"_s};
        QCOMPARE(actionsOf(*menu), without);
        menu->close();
        menu = openContextMenu(shown.row(0));
        const QStringList with{u"Copy URL"_s, u"Open in Browser"_s, u"Copy Summary"_s, u"Delete"_s};
        QCOMPARE(actionsOf(*menu), with);
        QCOMPARE(menu->actions().last()->property("role"), u"destructive"_s);
        menu->actions().at(2)->trigger();
        QCOMPARE(shown.clipboard.text(), u"A page about tea."_s);
        menu->close();
    }

    void buttonsAreForThePointerAndTheKeyboard()
    {
        ShownList shown;
        shown.addLinks(3);
        shown.show();
        const auto buttonOf = [&shown](int row) {
            return shown.row(row)->findChildren<QToolButton *>().at(2);
        };
        const auto &title = *shown.row(0)->findChild<ElidedLabel *>();
        pointAt(shown.row(0));
        QVERIFY(buttonOf(0)->isVisible());
        const QRect place = title.geometry();
        pointAt(shown.row(2));
        QVERIFY(!buttonOf(0)->isVisible());
        QCOMPARE(title.geometry(), place);
        QTest::mouseClick(shown.row(0), Qt::LeftButton);
        pointAt(shown.row(2));
        QVERIFY(shown.row(0)->hasFocus());
        QVERIFY(!buttonOf(0)->isVisible());
        shown.press(Qt::Key_Down);
        QVERIFY(buttonOf(1)->isVisible());
        pointAt(shown.row(0));
        QTest::mouseClick(buttonOf(0), Qt::LeftButton);
        shown.settle();
        QCOMPARE(shown.firstNumber(), 1);
    }

    void timesStandInOneColumnAndSayWhatWasCopied()
    {
        ShownList shown;
        shown.addSummarized(u"https://a.example/0"_s, 0, u"On tea."_s);
        shown.addSummarized(u"https://a.example/1"_s, 3 * 3600, u"On tea."_s); // a wider time
        shown.show();
        const auto markOf = [&shown](int row) {
            const auto *const mark = shown.row(row)->findChild<IconLabel *>();
            return mark->mapTo(shown.row(row), QPoint()).x();
        };
        QCOMPARE(markOf(0), markOf(1));
        const auto name = [&shown] { return shown.row(0)->accessibleName(); };
        const QString before = name();
        shown.model.copySummary(shown.row(0)->id());
        QVERIFY(name().endsWith(u"Copied"));
        QCOMPARE(markOf(0), markOf(1));
        shown.clock.advance(std::chrono::seconds(2));
        QCOMPARE(name(), before);
    }

    void answersWhateverAPageSends()
    {
        ShownList shown;
        shown.addLinks(20);
        shown.show();
        for (int row = 0; row < 12; ++row) {
            const LinkId id = shown.model.links().positionAt(row).id;
            shown.context().setTitle(id, QString(4 << 20, row % 2 ? u'W' : u'\u0301'));
        }
        const auto begin = countedTime();
        shown.settle();
        shown.list.grab();
        QVERIFY(countedTime() - begin < 1s);
        QCOMPARE(shown.row(1)->accessibleName().section(u',', 0, 0).size(), 500);
    }

    void screenReadersSeeAListOfItems()
    {
        ShownList shown;
        shown.addLinks(30);
        shown.addSummarized(u"https://a.example/99"_s, 99, u"A page about tea."_s);
        shown.show();
        QAccessibleInterface *const list = QAccessible::queryAccessibleInterface(&shown.list);
        QCOMPARE(list->role(), QAccessible::List);
        QCOMPARE(list->childCount(), 11);
        QAccessibleInterface *const item = list->child(0);
        QCOMPARE(item->role(), QAccessible::ListItem);
        QCOMPARE(item->parent(), list);
        QCOMPARE(list->indexOfChild(item), 0);
        QVERIFY(item->text(QAccessible::Name).startsWith(u"https://a.example/99, "));
        QCOMPARE(item->text(QAccessible::Description), u"A page about tea."_s);
        QVERIFY(item->state().collapsed);
        QVERIFY(!list->child(1)->state().expandable);
    }
};

QTEST_MAIN(LinkListViewTest)
#include "LinkListViewTest.moc"
