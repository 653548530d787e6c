// SPDX-License-Identifier: MIT
#include "WaylandClipboard.h"

#include "DesktopClipboard.h"
#include "Heartbeat.h"
#include "PeakMemory.h"
#include "Program.h"
#include "RealClipboard.h"
#include "Rows.h"
#include "SwayServer.h"
#include "TextsTold.h"
#include "XvfbServer.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class WaylandClipboardTest : public QObject
{
    Q_OBJECT
private:
    Program small(const QStringList &offers = {u"ext"_s}) const
    {
        return Program(SMALL_COMPOSITOR, offers,
                       {{u"XDG_RUNTIME_DIR"_s, m_folder.path().toUtf8()}});
    }

    static Program::Variables environment(const SwayServer &sway)
    {
        return {{u"WAYLAND_DISPLAY"_s, sway.display()}};
    }

    QTemporaryDir m_folder;
    QByteArray m_small; // the address of the small compositor

private Q_SLOTS:
    void initTestCase()
    {
        std::signal(SIGPIPE, SIG_IGN);
        qunsetenv("WAYLAND_DISPLAY");
        qunsetenv("DISPLAY");
        m_small = m_folder.filePath(u"small"_s).toUtf8();
    }

    void survivesFaultyPrograms()
    {
        const Rows<QByteArray, std::optional<QString>> rows{
            {"no fault", "text=https://a.example/ä", u"https://a.example/ä"_s},
            {"never writes", "silent"},
            {"ends before it writes", "dies"},
            {"writes when it is too late", "late"},
            {"stalls amid the text", "stalls"},
            {"writes without end", "endless"},
            {"writes without end, just in time", "drips"},
            {"more than fits", "bytes=1048577"},
            {"as much as fits", "bytes=1048576 text=a", u"a"_s.leftJustified(1 << 20, u'x')},
            {"a picture", "type=image/png"},
            {"an old type", "type=STRING text=\xe9", u"é"_s},
            {"not UTF-8", "text=\xe9", u"é"_s},
            {"a thousand types", "thousand-types text=many", u"many"_s},
            {"the plain type", "type=text/plain text=b", u"b"_s},
            {"a secret", "secret"},
        };
        for (const auto &[copy, text] : rows) {
            Program compositor = small();
            const auto clipboard = makeReadingClipboard<WaylandClipboard>(m_small);
            QVERIFY(clipboard);
            const long memory = peakMemoryKiB();
            const Heartbeat heartbeat;

            compositor.tell("copy " + copy);
            QTRY_COMPARE(clipboard->changeCount(), 2);
            QCOMPARE(clipboard->text(), text);
            if (copy == "secret")
                QVERIFY(!compositor.hasSaid("asked for text/plain;charset=utf-8"));
            if (copy == "late") // its pipe is still read, or it would be hurt
                QTRY_VERIFY(compositor.hasSaid("answered") && !compositor.hasSaid("hurt"));
            if (copy == "endless") // not for ever
                QTRY_VERIFY(compositor.hasSaid("hurt"));

            compositor.tell("copy text=https://good.example/");
            QTRY_COMPARE(clipboard->changeCount(), 3);
            QCOMPARE(clipboard->text(), u"https://good.example/"_s);
            QVERIFY2(heartbeat.longestHold() < 50ms,
                     qPrintable(QString::number(heartbeat.longestHold().count())));
            QVERIFY(peakMemoryKiB() - memory < memoryAllowanceKiB);
        }
    }

    void countsEachOfABurst()
    {
        Program compositor = small();
        const auto clipboard = makeReadingClipboard<WaylandClipboard>(m_small);
        QVERIFY(clipboard);
        compositor.tell("copy copies=200");
        QTRY_COMPARE(clipboard->text(), u"https://owner.example/200"_s);
        QCOMPARE(clipboard->changeCount(), 201);
    }

    void countsButNeverAsksUnlessReading()
    {
        Program compositor = small();
        compositor.tell("copy");
        QTRY_VERIFY(compositor.hasSaid("ready"));
        const auto clipboard = makeClipboard<WaylandClipboard>(m_small);
        QTRY_VERIFY(compositor.hasSaid("watched"));
        compositor.tell("copy");
        QTRY_COMPARE(clipboard->changeCount(), 1); // without what was there before
        compositor.tell("mark");
        clipboard->startReading();
        clipboard->setText(u"ours"_s);
        QTRY_COMPARE(clipboard->text(), u"ours"_s);
        QCOMPARE(clipboard->changeCount(), 2);

        compositor.signal(SIGSTOP);
        clipboard->startReading(); // which the compositor does not hear of before
        clipboard->stopReading();
        compositor.signal(SIGCONT);
        compositor.tell("copy");
        QTRY_COMPARE(clipboard->changeCount(), 3);
        QVERIFY(!compositor.hasSaid("asked for text/plain;charset=utf-8"));
        QVERIFY(!compositor.hasSaid("asked for text/plain"));
    }

    void keepsTheTextOfAProgramThatEnds()
    {
        Program compositor = small();
        const auto clipboard = makeReadingClipboard<WaylandClipboard>(m_small);
        QVERIFY(clipboard);
        compositor.tell("copy text=a\nclear"); // what it wrote is still in the pipe
        QTRY_COMPARE(clipboard->text(), u"a"_s);
        compositor.tell("copy text=a"); // as clipboard managers do
        QTRY_COMPARE(compositor.timesSaid("answered"), 2);
        compositor.tell("copy text=b");
        QTRY_COMPARE(clipboard->text(), u"b"_s);
        QCOMPARE(clipboard->changeCount(), 3);
    }

    void givesItsTextToOthers()
    {
        const Rows<QString> rows{{"short", u"https://a.example/ä"_s},
                                 {"more than a pipe holds", u"é"_s.repeated(500'000)}};
        for (const auto &[text] : rows) {
            Program compositor = small();
            const auto clipboard = makeReadingClipboard<WaylandClipboard>(m_small);
            QVERIFY(clipboard);
            const QSignalSpy changed(clipboard.get(), &ClipboardSource::changed);
            clipboard->setText(text);
            QTRY_COMPARE(clipboard->changeCount(), 2);
            QCOMPARE(clipboard->text(), text);
            QCOMPARE(changed.count(), 1);
            compositor.tell("paste");
            QTRY_VERIFY(compositor.hasSaid("pasted " + QByteArray::number(text.toUtf8().size())));
        }
    }

    void countsWhatIsCopiedAtTheSameTime()
    {
        Program compositor = small();
        const auto clipboard = makeReadingClipboard<WaylandClipboard>(m_small);
        QVERIFY(clipboard);
        for (int i = 0; i < 100; ++i) {
            compositor.tell("copy");
            clipboard->setText(QString::number(i));
        }
        QTRY_COMPARE(clipboard->changeCount(), 201);
    }

    void connectsAgain()
    {
        const Rows<QStringList, QByteArray> rows{
            {"by the new name", QStringList{u"ext"_s}, "bound ext"_ba},
            {"by the old name", QStringList{u"zwlr"_s}, "bound zwlr"_ba},
            {"by either", QStringList{u"zwlr"_s, u"ext"_s}, "bound ext"_ba},
        };
        for (const auto &[offers, bound] : rows) {
            Program first = small(offers);
            const auto clipboard = makeReadingClipboard<WaylandClipboard>(m_small);
            QVERIFY(clipboard);
            QCOMPARE(clipboard->limitation(), QString());
            first.end();
            QTRY_COMPARE(clipboard->limitation(), unseen);
            clipboard->setText(u"waits for the compositor"_s);

            Program second = small(offers);
            QTRY_COMPARE(clipboard->text(), u"waits for the compositor"_s);
            QVERIFY(second.hasSaid(bound));
            QCOMPARE(clipboard->limitation(), QString());
            second.tell("copy text=https://good.example/");
            QTRY_COMPARE(clipboard->text(), u"https://good.example/"_s);
            QCOMPARE(clipboard->changeCount(), 3);
        }
    }

    void watchesAgainOnAnotherSeat()
    {
        const Rows<QByteArray, QByteArray> rows{{"taken away", "remove-seat"_ba, "add-seat"_ba},
                                                {"finished", "finish"_ba, ""_ba}};
        for (const auto &[before, after] : rows) {
            Program compositor = small({u"ext"_s, u"seatless"_s});
            QTRY_VERIFY(compositor.hasSaid("ready"));
            const auto clipboard = makeClipboard<WaylandClipboard>(m_small);
            clipboard->startReading();
            clipboard->setText(u"waits for a seat"_s);
            QTRY_VERIFY(compositor.hasSaid("bound ext"));
            compositor.tell("add-seat");
            QTRY_COMPARE(clipboard->text(), u"waits for a seat"_s);

            compositor.tell(before);
            QTRY_COMPARE(compositor.timesSaid("bound ext"), 2);
            compositor.tell(after);
            QTRY_COMPARE(compositor.timesSaid("watched"), 2);
            compositor.tell("copy text=a");
            QTRY_COMPARE(clipboard->text(), u"a"_s);
            QCOMPARE(clipboard->changeCount(), 2);
        }
    }

    void fetchesWhatWasCopiedBefore()
    {
        SwayServer sway;
        QVERIFY(sway.start());
        const QString text = u"https://before.example/"_s;
        const Program copying("wl-copy", {u"--foreground"_s, text}, environment(sway));
        QTRY_COMPARE(Program("wl-paste", {u"--no-newline"_s}, environment(sway)).allOutput(),
                     text.toUtf8());
        const auto clipboard = makeClipboard<WaylandClipboard>(sway.display());
        QTRY_VERIFY(!clipboard->means().isEmpty());
        QSignalSpy fetched(clipboard.get(), &ClipboardSource::fetched);
        clipboard->fetch();
        QVERIFY(fetched.wait());
        QCOMPARE(fetched.first().first().value<std::optional<QString>>(), text);
        QVERIFY(!clipboard->text());
    }

    void isNotHeldByAFrozenCompositor()
    {
        const Program compositor = small();
        auto clipboard = makeReadingClipboard<WaylandClipboard>(m_small);
        QVERIFY(clipboard);
        compositor.signal(SIGSTOP);
        const Heartbeat heartbeat;
        for (int i = 0; i < 2'000; ++i) // more than the socket takes
            clipboard->setText(u"too much"_s);
        auto late = makeClipboard<WaylandClipboard>(m_small);
        QTRY_COMPARE(late->limitation(), unseen);
        QVERIFY(heartbeat.longestHold() < 50ms);
        QElapsedTimer elapsed;
        elapsed.start();
        late.reset();
        QVERIFY(elapsed.elapsed() < 900);

        compositor.signal(SIGCONT);
        QTRY_COMPARE(clipboard->changeCount(), 2'001);
    }

    void choosesWhatTheDesktopOffers()
    {
        const QStringList dataControl = {u"zwlr"_s};
        const Rows<QStringList, bool, QString> rows{
            {"data control", dataControl, false, QString()},
            {"data control and X11", dataControl, true, QString()},
            {"X11 alone", QStringList(), true, halfSeen},
            {"neither", QStringList(), false, unseen},
        };
        for (const auto &[offers, hasX11, limitation] : rows) {
            Program compositor = small(offers);
            QTRY_VERIFY(compositor.hasSaid("ready"));
            XvfbServer server;
            QVERIFY(!hasX11 || server.start());
            qputenv("WAYLAND_DISPLAY", m_small);
            qputenv("DISPLAY", server.display());
            const auto restore = qScopeGuard([] {
                qunsetenv("WAYLAND_DISPLAY");
                qunsetenv("DISPLAY");
            });

            ThreadedClipboard clipboard(std::make_unique<DesktopClipboard>(shortLimits()));
            clipboard.startReading();
            clipboard.setText(u"ours"_s);
            QTRY_COMPARE(clipboard.limitation(), limitation);
            if (limitation != unseen)
                QTRY_COMPARE(clipboard.text(), u"ours"_s);
            QCOMPARE(compositor.hasSaid("watched"), !offers.isEmpty());
        }
    }

    void findsACompositorThatStartsLate()
    {
        qputenv("WAYLAND_DISPLAY", m_small);
        const auto restore = qScopeGuard([] { qunsetenv("WAYLAND_DISPLAY"); });
        ThreadedClipboard clipboard(std::make_unique<DesktopClipboard>(shortLimits()));
        clipboard.startReading();
        clipboard.setText(u"ours"_s);
        QTRY_COMPARE(clipboard.limitation(), unseen);
        const Program compositor = small();
        QTRY_COMPARE(clipboard.text(), u"ours"_s);
        QCOMPARE(clipboard.limitation(), QString());
    }

    void losesNoQuickCopiesOnSway()
    {
        SwayServer sway;
        QVERIFY(sway.start());
        const auto clipboard = makeReadingClipboard<WaylandClipboard>(sway.display());
        QVERIFY(clipboard);
        const TextsTold told(*clipboard);
        QStringList copies;
        for (int i = 0; i < 20; ++i) {
            copies.append(u"https://a.example/%1"_s.arg(i));
            Program copying("wl-copy", {copies.last()}, environment(sway));
            QCOMPARE(copying.allOutput(), QByteArray()); // it ends when the text is copied
            QTest::qWait(20); // the pace is what is tested
        }
        QTRY_COMPARE(clipboard->changeCount(), 21);
        QCOMPARE(told.texts(), copies);
    }

    void sharesWithProgramsOnSway()
    {
        SwayServer sway;
        QVERIFY(sway.start());
        const auto clipboard = makeReadingClipboard<WaylandClipboard>(sway.display());
        QVERIFY(clipboard);
        sway.stop();
        QTRY_COMPARE(clipboard->limitation(), unseen);
        QVERIFY(sway.start());
        QTRY_COMPARE(clipboard->limitation(), QString());

        Program copying("wl-copy", {u"https://a.example/ä"_s}, environment(sway));
        QTRY_COMPARE(clipboard->text(), u"https://a.example/ä"_s);
        QCOMPARE(clipboard->changeCount(), 2);
        clipboard->setText(u"https://ours.example/ä"_s);
        QTRY_COMPARE(clipboard->changeCount(), 3);
        Program pasting("wl-paste", {u"--no-newline"_s}, environment(sway));
        QCOMPARE(pasting.allOutput(), "https://ours.example/ä"_ba);
    }
};

QTEST_GUILESS_MAIN(WaylandClipboardTest)
#include "WaylandClipboardTest.moc"
