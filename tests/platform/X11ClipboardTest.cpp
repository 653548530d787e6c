// SPDX-License-Identifier: MIT
#include "X11Clipboard.h"

#include "Heartbeat.h"
#include "PeakMemory.h"
#include "Program.h"
#include "RealClipboard.h"
#include "TextsTold.h"
#include "X11Connection.h"
#include "XvfbServer.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class X11ClipboardTest : public QObject
{
    Q_OBJECT
private:
    Program owner(const QStringList &arguments) const
    {
        return Program(FAULTY_CLIPBOARD_OWNER, arguments, {u"DISPLAY"_s, m_server.display()});
    }
    Program manager(const QStringList &arguments = {}) const
    {
        return Program(SMALL_CLIPBOARD_MANAGER, arguments, {u"DISPLAY"_s, m_server.display()});
    }
    /// What `xclip` reads, as an unrelated program.
    QByteArray pasted() const
    {
        return Program("xclip",
                       {u"-selection"_s, u"clipboard"_s, u"-o"_s, u"-t"_s, u"UTF8_STRING"_s},
                       {u"DISPLAY"_s, m_server.display()})
            .allOutput();
    }

    XvfbServer m_server;

private Q_SLOTS:
    void initTestCase()
    {
        std::signal(SIGPIPE, SIG_IGN);
        qunsetenv("WAYLAND_DISPLAY");
        QVERIFY(m_server.start());
    }

    void readsTheCopyMadeWhileAnotherIsRead()
    {
        const auto clipboard = makeReadingClipboard<X11Clipboard>(m_server.display());
        QVERIFY(clipboard);
        const Program owner = this->owner({u"copies-while-answering"_s});
        QTRY_COMPARE(clipboard->text(), u"https://owner.example/2"_s);
    }

    void survivesFaultyOwners_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<std::optional<QString>>("text");
        const auto row = [](const char *name, const QStringList &arguments,
                            const std::optional<QString> &text = {}) {
            QTest::newRow(name) << arguments << text;
        };
        row("no fault", {u"text=https://a.example/ä"_s}, u"https://a.example/ä"_s);
        row("never answers", {u"silent"_s});
        row("never gives the text", {u"no-text"_s});
        row("answers when it is too late", {u"pause=450"_s});
        row("answers each question just in time", {u"incr"_s, u"pause=200"_s, u"increments=9"_s});
        row("stalls amid increments", {u"incr"_s, u"stalls"_s, u"increments=2"_s});
        row("increments without end", {u"incr"_s, u"endless"_s, u"bytes=60000"_s});
        row("announces 100 MB", {u"incr"_s, u"endless"_s, u"announced=100000000"_s});
        row("more than fits, at once", {u"bytes=1048577"_s});
        row("as much as fits", {u"bytes=1048576"_s, u"text=a"_s},
            u"a"_s.leftJustified(1 << 20, u'x'));
        row("increments", {u"incr"_s, u"text=ab"_s, u"increments=3"_s}, u"ababab"_s);
        row("a picture", {u"image"_s});
        row("refuses to tell types", {u"refuses-types"_s, u"text=old"_s}, u"old"_s);
        row("a thousand types", {u"thousand-types"_s, u"text=many"_s}, u"many"_s);
        row("not UTF-8", {u"latin1"_s, u"text=é"_s}, u"é"_s);
        row("a C string's end", {u"text=c"_s, u"bytes=1"_s}, u"c"_s);
        row("a secret", {u"secret"_s});
        row("empty", {u"text="_s}, u""_s);
    }

    void survivesFaultyOwners()
    {
        QFETCH(QStringList, arguments);
        QFETCH(std::optional<QString>, text);
        const auto clipboard = makeReadingClipboard<X11Clipboard>(m_server.display());
        QVERIFY(clipboard);
        const long memory = peakMemoryKiB();
        const Heartbeat heartbeat;

        Program faulty = owner(arguments);
        QTRY_COMPARE(clipboard->changeCount(), 2);
        QCOMPARE(clipboard->text(), text);
        if (arguments.contains(u"secret"_s))
            QVERIFY(!faulty.hasSaid("asked for text"));
        if (arguments.contains(u"announced=100000000"_s))
            QVERIFY(!faulty.hasSaid("gave an increment"));
        if (arguments.contains(u"pause=450"_s))
            QTRY_VERIFY(faulty.hasSaid("answered"));

        Program good = owner({u"text=https://good.example/"_s});
        QTRY_COMPARE(clipboard->changeCount(), 3);
        QCOMPARE(clipboard->text(), u"https://good.example/"_s);
        QVERIFY(faulty.isRunning());
        QVERIFY2(heartbeat.longestHold() < 50ms,
                 qPrintable(QString::number(heartbeat.longestHold().count())));
        QVERIFY(peakMemoryKiB() - memory < memoryAllowanceKiB);
    }

    void countsEachOfABurst()
    {
        const auto clipboard = makeReadingClipboard<X11Clipboard>(m_server.display());
        QVERIFY(clipboard);
        const Program burst = owner({u"copies=200"_s});
        QTRY_COMPARE(clipboard->text(), u"https://owner.example/200"_s);
        QCOMPARE(clipboard->changeCount(), 201);
    }

    void losesNoQuickCopies()
    {
        const auto clipboard = makeReadingClipboard<X11Clipboard>(m_server.display());
        QVERIFY(clipboard);
        const TextsTold told(*clipboard);
        const Program quick = owner({u"copies=20"_s, u"interval=20"_s});
        QTRY_COMPARE(clipboard->changeCount(), 21);
        QStringList texts = told.texts();
        QCOMPARE(texts.removeDuplicates(), 0);
        QCOMPARE(texts.size(), 20);
    }

    void countsButNeverAsksBeforeReading()
    {
        const auto clipboard = makeClipboard<X11Clipboard>(m_server.display());
        clipboard->setText(u"mine"_s);
        QTRY_COMPARE(clipboard->changeCount(), 1);
        Program early = owner({});
        QTRY_COMPARE(clipboard->changeCount(), 2);
        clipboard->startReading();
        clipboard->setText(u"ours"_s);
        QTRY_COMPARE(clipboard->text(), u"ours"_s);
        QCOMPARE(clipboard->changeCount(), 3);
        QVERIFY(!early.hasSaid("asked"));
    }

    void countsAnOwnerThatDiesAtOnce()
    {
        const auto clipboard = makeReadingClipboard<X11Clipboard>(m_server.display());
        QVERIFY(clipboard);
        const Program hasty = owner({u"dies"_s});
        QTRY_COMPARE(clipboard->changeCount(), 2);
        QCOMPARE(clipboard->text(), std::nullopt);
    }

    void takesARestoredTextForNoCopy_data()
    {
        QTest::addColumn<QString>("manager");
        QTest::addColumn<QString>("argument");
        QTest::addColumn<bool>("isReadingBefore");
        QTest::newRow("known") << u"named"_s << u"text=https://a.example/"_s << true;
        QTest::newRow("by an unnamed manager")
            << u"unnamed"_s << u"text=https://a.example/"_s << true;
        QTest::newRow("secret") << u"named"_s << u"secret"_s << true;
        QTest::newRow("secret, by an unnamed manager") << u"unnamed"_s << u"secret"_s << true;
        QTest::newRow("copied before reading")
            << u"named"_s << u"text=https://a.example/"_s << false;
    }

    void takesARestoredTextForNoCopy()
    {
        QFETCH(QString, manager);
        QFETCH(QString, argument);
        QFETCH(bool, isReadingBefore);
        Program keeper = this->manager({manager});
        QTRY_VERIFY(keeper.hasSaid("ready"));
        const auto clipboard = makeClipboard<X11Clipboard>(m_server.display());
        clipboard->setText(u"connected"_s);
        QTRY_COMPARE(clipboard->changeCount(), 1);
        QTRY_VERIFY(keeper.hasSaid("kept"));
        if (isReadingBefore)
            clipboard->startReading();
        const TextsTold told(*clipboard);

        Program leaver = owner({argument});
        QTRY_COMPARE(clipboard->changeCount(), 2);
        QTRY_COMPARE(keeper.timesSaid("kept"), 2);
        if (!isReadingBefore)
            clipboard->startReading();
        leaver.end();
        QTRY_VERIFY(keeper.hasSaid("restored"));

        const Program next = owner({u"text=https://next.example/"_s});
        QTRY_COMPARE(clipboard->text(), u"https://next.example/"_s);
        QCOMPARE(told.texts().size(), isReadingBefore && argument != u"secret"_s ? 2 : 1);
        if (isReadingBefore)
            QCOMPARE(clipboard->changeCount(), 3);
    }

    void takesFewerTypesOfTheSameTextForNoCopy()
    {
        const auto clipboard = makeReadingClipboard<X11Clipboard>(m_server.display());
        QVERIFY(clipboard);
        Program bridge = owner({u"copies=2"_s, u"interval=300"_s, u"sheds-types"_s, u"text=a"_s});
        QTRY_COMPARE(bridge.timesSaid("answered"), 4);
        const Program next = owner({u"text=b"_s});
        QTRY_COMPARE(clipboard->text(), u"b"_s);
        QCOMPARE(clipboard->changeCount(), 3);
    }

    void tellsATextOnceThatTheManagerGrabs()
    {
        Program keeper = manager({u"grabs"_s});
        QTRY_VERIFY(keeper.hasSaid("ready"));
        const auto clipboard = makeReadingClipboard<X11Clipboard>(m_server.display());
        QVERIFY(clipboard);
        const TextsTold told(*clipboard);
        const Program first = owner({u"text=a"_s});
        QTRY_COMPARE(keeper.timesSaid("kept"), 2);
        QTRY_VERIFY(told.texts().contains(u"a"_s));
        const Program second = owner({u"text=b"_s});
        QTRY_VERIFY(told.texts().contains(u"b"_s));
        QCOMPARE(told.texts(), QStringList({u"a"_s, u"b"_s}));
    }

    void givesItsTextToOthers_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("short") << u"https://a.example/ä"_s;
        QTest::newRow("in increments") << u"é"_s.repeated(500'000);
    }

    void givesItsTextToOthers()
    {
        QFETCH(QString, text);
        const auto clipboard = makeReadingClipboard<X11Clipboard>(m_server.display());
        QVERIFY(clipboard);
        const QSignalSpy changed(clipboard.get(), &ClipboardSource::changed);
        clipboard->setText(text);
        QTRY_COMPARE(clipboard->changeCount(), 2);
        QCOMPARE(clipboard->text(), text);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(pasted(), text.toUtf8());
    }

    void leavesItsTextToTheManager()
    {
        Program keeper = manager();
        QTRY_VERIFY(keeper.hasSaid("ready"));
        auto clipboard = makeReadingClipboard<X11Clipboard>(m_server.display());
        QVERIFY(clipboard);
        QTRY_VERIFY(keeper.hasSaid("kept"));
        clipboard.reset();
        QCOMPARE(pasted(), "first"_ba);
    }

    void endsInTimeBesideADeafManager()
    {
        Program keeper = manager({u"deaf"_s});
        QTRY_VERIFY(keeper.hasSaid("ready"));
        auto clipboard = makeReadingClipboard<X11Clipboard>(m_server.display());
        QVERIFY(clipboard);
        QElapsedTimer elapsed;
        elapsed.start();
        clipboard.reset();
        QVERIFY(elapsed.elapsed() >= 500 && elapsed.elapsed() < 900);
    }

    void connectsAgain()
    {
        const auto clipboard = makeReadingClipboard<X11Clipboard>(m_server.display());
        QVERIFY(clipboard);
        m_server.stop();
        QTRY_COMPARE(clipboard->limitation(), unseen);
        clipboard->setText(u"waits for the server"_s);
        QVERIFY(m_server.start());
        QTRY_COMPARE(clipboard->text(), u"waits for the server"_s);
        QCOMPARE(clipboard->limitation(), QString());
        const Program good = owner({u"text=https://good.example/"_s});
        QTRY_COMPARE(clipboard->text(), u"https://good.example/"_s);
        QCOMPARE(clipboard->changeCount(), 3);
    }

    void isNotHeldByAFrozenServer()
    {
        m_server.freeze();
        const auto thaw = qScopeGuard([this] { m_server.thaw(); });
        const Heartbeat heartbeat;
        auto clipboard = makeClipboard<X11Clipboard>(m_server.display());
        clipboard->setText(u"text"_s);
        QTRY_COMPARE_WITH_TIMEOUT(clipboard->limitation(), unseen, 10'000);
        QVERIFY(heartbeat.longestHold() < 50ms);
        QElapsedTimer elapsed;
        elapsed.start();
        clipboard.reset();
        QVERIFY(elapsed.elapsed() < 1'500);
    }

    void tellsWhatABridgeHides_data()
    {
        QTest::addColumn<QByteArray>("windowManager");
        QTest::addColumn<QString>("limitation");
        QTest::newRow("shares all") << "GNOME Shell"_ba << QString();
        QTest::newRow("shares some") << "wlroots wm"_ba << halfSeen;
        QTest::newRow("does not say") << QByteArray() << halfSeen;
    }

    void tellsWhatABridgeHides()
    {
        QFETCH(QByteArray, windowManager);
        QFETCH(QString, limitation);
        const auto connection = X11Connection::open(m_server.display());
        QVERIFY(connection);
        const xcb_window_t window = connection->makeWindow();
        const X11Atoms &atoms = connection->atoms();
        xcb_change_property(connection->xcb(), XCB_PROP_MODE_REPLACE, connection->rootWindow(),
                            atoms.wmCheck, XCB_ATOM_WINDOW, 32, 1, &window);
        xcb_change_property(connection->xcb(), XCB_PROP_MODE_REPLACE, window, atoms.wmName,
                            atoms.utf8String, 8, quint32(windowManager.size()),
                            windowManager.constData());
        connection->synchronize();

        qputenv("WAYLAND_DISPLAY", "wayland-0");
        const auto restore = qScopeGuard([] { qunsetenv("WAYLAND_DISPLAY"); });
        const auto clipboard = makeReadingClipboard<X11Clipboard>(m_server.display());
        QVERIFY(clipboard);
        QCOMPARE(clipboard->limitation(), limitation);
    }
};

QTEST_GUILESS_MAIN(X11ClipboardTest)
#include "X11ClipboardTest.moc"
