// SPDX-License-Identifier: MIT
#include "X11Clipboard.h"

#include "Heartbeat.h"
#include "PeakMemory.h"
#include "Program.h"
#include "RealClipboard.h"
#include "Rows.h"
#include "TextsTold.h"
#include "XvfbServer.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryFile>
#include <QTest>

#include <csignal>
#include <map>
#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class X11ClipboardTest : public QObject
{
    Q_OBJECT
private:
    Program::Variables display() const { return {{u"DISPLAY"_s, m_server.display()}}; }
    Program owner(const QStringList &arguments) const
    {
        return Program(FAULTY_CLIPBOARD_OWNER, arguments, display());
    }
    Program manager(const QStringList &arguments = {}) const
    {
        return Program(SMALL_CLIPBOARD_MANAGER, arguments, display());
    }
    /// What `xclip` reads, as an unrelated program.
    QByteArray pasted() const
    {
        return Program("xclip",
                       {u"-selection"_s, u"clipboard"_s, u"-o"_s, u"-t"_s, u"UTF8_STRING"_s},
                       display())
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

    void survivesFaultyOwners()
    {
        const Rows<QStringList, std::optional<QString>> rows{
            {"no fault", {u"text=https://a.example/ä"_s}, u"https://a.example/ä"_s},
            {"never answers", {u"silent"_s}, {}},
            {"never gives the text", {u"no-text"_s}, {}},
            {"answers when it is too late", {u"pause=450"_s}, {}},
            {"answers each question just in time",
             {u"incr"_s, u"pause=200"_s, u"increments=9"_s},
             {}},
            {"stalls amid increments", {u"incr"_s, u"stalls"_s, u"increments=2"_s}, {}},
            {"increments without end", {u"incr"_s, u"endless"_s, u"bytes=60000"_s}, {}},
            {"announces 100 MB", {u"incr"_s, u"endless"_s, u"announced=100000000"_s}, {}},
            {"more than fits, at once", {u"bytes=1048577"_s}, {}},
            {"as much as fits",
             {u"bytes=1048576"_s, u"text=a"_s},
             u"a"_s.leftJustified(1 << 20, u'x')},
            {"increments", {u"incr"_s, u"text=ab"_s, u"increments=3"_s}, u"ababab"_s},
            {"a picture", {u"image"_s}, {}},
            {"refuses to tell types", {u"refuses-types"_s, u"text=old"_s}, u"old"_s},
            {"a thousand types", {u"thousand-types"_s, u"text=many"_s}, u"many"_s},
            {"not UTF-8", {u"latin1"_s, u"text=é"_s}, u"é"_s},
            {"a C string's end", {u"text=c"_s, u"bytes=1"_s}, u"c"_s},
            {"a secret", {u"secret"_s}, {}},
            {"empty", {u"text="_s}, u""_s},
        };
        for (const auto &[arguments, text] : rows) {
            const auto clipboard = makeReadingClipboard<X11Clipboard>(m_server.display());
            QVERIFY(clipboard);
            const long memory = peakMemoryKiB();
            const Heartbeat heartbeat;

            Program faulty = owner(arguments);
            QTRY_COMPARE(clipboard->changeCount(), 2);
            QCOMPARE(clipboard->text(), text);
            QSignalSpy fetched(clipboard.get(), &ClipboardSource::fetched);
            clipboard->fetch();
            QVERIFY(fetched.wait());
            QCOMPARE(fetched.first().first().value<std::optional<QString>>(), text);
            if (arguments.contains(u"secret"_s))
                QVERIFY(!faulty.hasSaid("asked for text"));
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
    }

    void countsEachOfAFlood()
    {
        const auto clipboard = makeReadingClipboard<X11Clipboard>(m_server.display());
        QVERIFY(clipboard);
        const long memory = peakMemoryKiB();
        const Program flood = owner({u"flood=300000"_s});
        QTRY_COMPARE(clipboard->text(), u"https://owner.example/300000"_s);
        QCOMPARE(clipboard->changeCount(), 300'001);
        QVERIFY(peakMemoryKiB() - memory < memoryAllowanceKiB);
    }

    /// What it writes is taken away up to its end, or it would wait for that for ever.
    void letsAnOwnerOfTooMuchServeOthers()
    {
        const auto clipboard = makeReadingClipboard<X11Clipboard>(m_server.display());
        QVERIFY(clipboard);
        QTemporaryFile file;
        QVERIFY(file.open() && file.resize(3'000'000));
        const Program owner(
            "xclip", {u"-quiet"_s, u"-selection"_s, u"clipboard"_s, file.fileName()}, display());
        QTRY_COMPARE(clipboard->changeCount(), 2);
        (void)pasted(); // waits for its turn; xclip mixes up two that read at the same time
        QCOMPARE(pasted().size(), 3'000'000);
    }

    void losesNoQuickCopies()
    {
        const auto clipboard = makeReadingClipboard<X11Clipboard>(m_server.display());
        QVERIFY(clipboard);
        const TextsTold told(*clipboard);
        const Program quick = owner({u"copies=10"_s, u"interval=100"_s});
        QTRY_COMPARE(clipboard->changeCount(), 11);
        QStringList texts = told.texts();
        QCOMPARE(texts.removeDuplicates(), 0);
        QCOMPARE(texts.size(), 10);
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

    void tellsCopiesFromRestoredTexts()
    {
        const QStringList secret = {u"own resume"_s, u"a copy secret"_s};
        const QStringList known = {u"own resume"_s, u"a copy text=A"_s, u"a end"_s};
        const QString keeper = u" keeper-types"_s;
        const QStringList bridged = {u"own resume"_s, u"mutter copy secret"_s};
        // The manager, what is done, of which the first word says by whom, and the texts told.
        const Rows<QString, QStringList, QStringList> rows{
            {"a link with fewer types after a secret",
             {},
             secret + QStringList{u"a copy text=L"_s},
             {u"L"_s}},
            {"a link with fewer types after a pause",
             {},
             {u"own resume"_s, u"a copy more-types text=A"_s, u"own pause"_s,
              u"a copy more-types text=P"_s, u"own resume"_s, u"a copy text=L"_s},
             {u"A"_s, u"L"_s}},
            {"the same with fewer types",
             {},
             {u"own resume"_s, u"a copy more-types text=A"_s, u"a copy text=A"_s},
             {u"A"_s, u"A"_s}},
            {"a link as soon as a secret's owner has gone",
             {},
             secret + QStringList{u"a end"_s, u"b copy text=L"_s},
             {u"L"_s}},
            {"a pick as the first copy", u"named"_s, {u"own resume"_s, u"manager L"_s}, {u"L"_s}},
            {"a pick after a secret", u"named"_s, secret + QStringList{u"manager L"_s}, {u"L"_s}},
            {"restored", u"named"_s, known, {u"A"_s}},
            {"restored by an unnamed manager", u"unnamed"_s, known, {u"A"_s}},
            {"restored secret", u"named"_s, secret + QStringList{u"a end"_s}},
            {"restored secret, unlike a copy",
             u"unnamed"_s,
             secret + QStringList{u"a end"_s},
             {u"https://secret.example/"_s}},
            {"restored, copied before reading",
             u"named"_s,
             {u"a copy text=P"_s, u"own resume"_s, u"a end"_s},
             {}},
            {"kept",
             {},
             {u"own resume"_s, u"mutter copy text=A"_s, u"mutter copy text=A"_s + keeper},
             {u"A"_s}},
            {"kept secret", {}, bridged + QStringList{u"mutter copy text=S"_s + keeper}, {}},
            {"another program's link after a secret",
             {},
             bridged + QStringList{u"mutter copy text=L"_s},
             {u"L"_s}},
            {"a keeper's types elsewhere",
             {},
             secret + QStringList{u"a copy text=L"_s + keeper},
             {u"L"_s}},
        };
        for (const auto &[manager, steps, told] : rows) {
            const auto restore = qScopeGuard([] { qunsetenv("WAYLAND_DISPLAY"); });
            std::map<QString, std::unique_ptr<Program>> programs;
            const auto start = [&](const QString &who, const char *path,
                                   const QStringList &arguments) {
                programs[who] = std::make_unique<Program>(path, arguments, display());
                QTRY_VERIFY(programs[who]->hasSaid("ready"));
            };
            if (!manager.isEmpty())
                start(u"manager"_s, SMALL_CLIPBOARD_MANAGER, {manager});
            for (const QString &who : {u"a"_s, u"b"_s})
                start(who, FAULTY_CLIPBOARD_OWNER, {u"waits"_s});
            if (steps.last().startsWith(u"mutter"_s)) {
                start(u"mutter"_s, FAULTY_CLIPBOARD_OWNER,
                      {u"waits"_s, u"manages-windows"_s, u"called=Mutter"_s});
                qputenv("WAYLAND_DISPLAY", "wayland-0");
            }
            const auto timesManagerSaid = [&](const char *words) {
                return manager.isEmpty() ? 0 : programs[u"manager"_s]->timesSaid(words);
            };

            auto worker = std::make_unique<X11Clipboard>(m_server.display(), shortLimits());
            int startings = 0;
            const QObject listener;
            connect(worker.get(), &ClipboardWorker::readingStarted, &listener,
                    [&] { ++startings; });
            const auto clipboard = std::make_unique<ThreadedClipboard>(std::move(worker));
            clipboard->setText(u"connected"_s);
            QTRY_COMPARE(clipboard->changeCount(), 1);
            QTRY_VERIFY(manager.isEmpty() || timesManagerSaid("kept") == 1);
            const TextsTold heard(*clipboard);
            bool isReading = false;
            for (const QString &step : steps) {
                const QString who = step.section(u' ', 0, 0);
                const QString what = step.section(u' ', 1);
                const qint64 count = clipboard->changeCount();
                const int kept = timesManagerSaid("kept");
                const int given = timesManagerSaid("gave text");
                if (what == u"resume"_s) {
                    const int before = startings;
                    clipboard->startReading();
                    QTRY_COMPARE(startings, before + 1); // a busy machine takes its time
                    isReading = true;
                } else if (what == u"pause"_s) {
                    clipboard->stopReading();
                    isReading = false;
                } else if (what == u"end"_s) {
                    programs.erase(who);
                    if (!manager.isEmpty())
                        QTRY_COMPARE(timesManagerSaid("gave text"), given + int(isReading));
                } else if (who == u"manager"_s) {
                    programs[who]->tell(what.toUtf8());
                    QTRY_COMPARE(timesManagerSaid("gave text"), given + 1);
                } else if (isReading && what != u"copy secret"_s) {
                    const int answers = programs[who]->timesSaid("gave text");
                    programs[who]->tell(what.toUtf8());
                    const int readers = manager.isEmpty() ? 1 : 2;
                    QTRY_COMPARE(programs[who]->timesSaid("gave text"), answers + readers);
                } else {
                    programs[who]->tell(what.toUtf8());
                    QTRY_COMPARE(clipboard->changeCount(), count + 1);
                    if (!manager.isEmpty())
                        QTRY_COMPARE(timesManagerSaid("kept"), kept + 1);
                }
            }
            const Program last = owner({u"text=last"_s});
            QTRY_VERIFY(heard.texts().contains(u"last"_s));
            QCOMPARE(heard.texts(), told + QStringList{u"last"_s});
        }
    }

    void givesItsTextToOthers()
    {
        const Rows<QString> rows{{"short", u"https://a.example/ä"_s},
                                 {"in increments", u"é"_s.repeated(500'000)}};
        for (const auto &[text] : rows) {
            const auto clipboard = makeReadingClipboard<X11Clipboard>(m_server.display());
            QVERIFY(clipboard);
            const QSignalSpy changed(clipboard.get(), &ClipboardSource::changed);
            clipboard->setText(text);
            QTRY_COMPARE(clipboard->changeCount(), 2);
            QCOMPARE(clipboard->text(), text);
            QCOMPARE(changed.count(), 1);
            QCOMPARE(pasted(), text.toUtf8());
        }
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
        m_server.signal(SIGSTOP);
        const auto thaw = qScopeGuard([this] { m_server.signal(SIGCONT); });
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

    void tellsWhatABridgeHides()
    {
        const Rows<QString, QString> rows{{"shares all", u"GNOME Shell"_s, QString()},
                                          {"shares some", u"wlroots wm"_s, halfSeen},
                                          {"does not say", QString(), halfSeen}};
        for (const auto &[windowManager, limitation] : rows) {
            Program manager =
                owner({u"waits"_s, u"manages-windows"_s, u"called="_s + windowManager});
            QTRY_VERIFY(manager.hasSaid("ready"));
            qputenv("WAYLAND_DISPLAY", "wayland-0");
            const auto restore = qScopeGuard([] { qunsetenv("WAYLAND_DISPLAY"); });
            const auto clipboard = makeReadingClipboard<X11Clipboard>(m_server.display());
            QVERIFY(clipboard);
            QCOMPARE(clipboard->limitation(), limitation);
        }
    }
};

QTEST_GUILESS_MAIN(X11ClipboardTest)
#include "X11ClipboardTest.moc"
