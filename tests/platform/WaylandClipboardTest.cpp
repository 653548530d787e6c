#include "clipboard/WaylandClipboard.h"

#include "Heartbeat.h"
#include "PeakMemory.h"
#include "Program.h"
#include "SwayServer.h"
#include "TextsTold.h"
#include "XvfbServer.h"
#include "clipboard/DesktopClipboard.h"
#include "clipboard/ThreadedClipboard.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

const QString unseen = u"Strandloom cannot watch the clipboard here: the compositor offers no "
                       "data-control interface and no X server answers. Links are not recorded."_s;
const QString halfSeen = u"This desktop shows Strandloom only what is copied in X11 programs. "
                         "Links copied elsewhere are not recorded."_s;

/// The real ones are too long for a test.
ClipboardLimits shortLimits()
{
    ClipboardLimits limits;
    limits.step = 300ms;
    limits.total = 900ms;
    limits.greeting = 500ms;
    limits.firstPause = 50ms;
    return limits;
}

std::unique_ptr<ThreadedClipboard> makeClipboard(const QByteArray &display)
{
    return std::make_unique<ThreadedClipboard>(
        std::make_unique<WaylandClipboard>(display, shortLimits()));
}

/// Connected, reading, and at count 1. Null when that takes too long.
std::unique_ptr<ThreadedClipboard> makeReadingClipboard(const QByteArray &display)
{
    auto clipboard = makeClipboard(display);
    clipboard->startReading();
    clipboard->setText(u"first"_s);
    const bool isReady = QTest::qWaitFor([&] { return clipboard->text() == u"first"_s; }, 10'000);
    return isReady ? std::move(clipboard) : nullptr;
}

} // namespace

class WaylandClipboardTest : public QObject
{
    Q_OBJECT
private:
    Program compositor(const QStringList &offers = {u"ext"_s}) const
    {
        return Program(SMALL_COMPOSITOR, offers, {u"XDG_RUNTIME_DIR"_s, m_folder.path().toUtf8()});
    }

    QTemporaryDir m_folder;
    QByteArray m_small; // where the small compositor listens

private Q_SLOTS:
    void initTestCase()
    {
        std::signal(SIGPIPE, SIG_IGN);
        qunsetenv("WAYLAND_DISPLAY");
        qunsetenv("DISPLAY");
        m_small = m_folder.filePath(u"small"_s).toUtf8();
    }

    void survivesFaultyPrograms_data()
    {
        QTest::addColumn<QByteArray>("copy");
        QTest::addColumn<std::optional<QString>>("text");
        const auto row = [](const char *name, const QByteArray &copy,
                            const std::optional<QString> &text = {}) {
            QTest::newRow(name) << copy << text;
        };
        row("no fault", "text=https://a.example/ä", u"https://a.example/ä"_s);
        row("never writes", "silent");
        row("ends before it writes", "dies");
        row("writes when it is too late", "late");
        row("stalls amid the text", "stalls");
        row("writes without end", "endless");
        row("writes without end, just in time", "drips");
        row("more than fits", "bytes=1048577");
        row("as much as fits", "bytes=1048576 text=a", u"a"_s.leftJustified(1 << 20, u'x'));
        row("a picture", "type=image/png");
        row("an old type", "type=STRING text=\xe9", u"é"_s);
        row("not UTF-8", "text=\xe9", u"é"_s);
        row("a thousand types", "thousand-types text=many", u"many"_s);
        row("no secret type first", "type=text/plain text=b", u"b"_s);
        row("a secret", "secret");
    }

    void survivesFaultyPrograms()
    {
        QFETCH(QByteArray, copy);
        QFETCH(std::optional<QString>, text);
        Program compositor = this->compositor();
        const auto clipboard = makeReadingClipboard(m_small);
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

    void countsEachOfABurst()
    {
        Program compositor = this->compositor();
        const auto clipboard = makeReadingClipboard(m_small);
        QVERIFY(clipboard);
        compositor.tell("copy copies=200");
        QTRY_COMPARE(clipboard->text(), u"https://owner.example/200"_s);
        QCOMPARE(clipboard->changeCount(), 201);
    }

    void countsButNeverAsksBeforeReading()
    {
        Program compositor = this->compositor();
        compositor.tell("copy");
        QTRY_VERIFY(compositor.hasSaid("ready"));
        const auto clipboard = makeClipboard(m_small);
        QTRY_VERIFY(compositor.hasSaid("watched"));
        compositor.tell("copy");
        QTRY_COMPARE(clipboard->changeCount(), 1); // without what was there before
        compositor.tell("mark");
        clipboard->startReading();
        clipboard->setText(u"ours"_s);
        QTRY_COMPARE(clipboard->text(), u"ours"_s);
        QCOMPARE(clipboard->changeCount(), 2);
        QVERIFY(!compositor.hasSaid("asked for text/plain;charset=utf-8"));
        QVERIFY(!compositor.hasSaid("asked for text/plain"));
    }

    void keepsTheTextOfAProgramThatEnds()
    {
        Program compositor = this->compositor();
        const auto clipboard = makeReadingClipboard(m_small);
        QVERIFY(clipboard);
        compositor.tell("copy text=a\nclear"); // what it wrote is still in the pipe
        QTRY_COMPARE(clipboard->text(), u"a"_s);
        compositor.tell("copy text=a"); // as clipboard managers do
        QTRY_COMPARE(compositor.timesSaid("answered"), 2);
        compositor.tell("copy text=b");
        QTRY_COMPARE(clipboard->text(), u"b"_s);
        QCOMPARE(clipboard->changeCount(), 3);
    }

    void givesItsTextToOthers_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("short") << u"https://a.example/ä"_s;
        QTest::newRow("more than a pipe holds") << u"é"_s.repeated(500'000);
    }

    void givesItsTextToOthers()
    {
        QFETCH(QString, text);
        Program compositor = this->compositor();
        const auto clipboard = makeReadingClipboard(m_small);
        QVERIFY(clipboard);
        const QSignalSpy changed(clipboard.get(), &ClipboardSource::changed);
        clipboard->setText(text);
        QTRY_COMPARE(clipboard->changeCount(), 2);
        QCOMPARE(clipboard->text(), text);
        QCOMPARE(changed.count(), 1);
        compositor.tell("paste");
        QTRY_VERIFY(compositor.hasSaid("pasted " + QByteArray::number(text.toUtf8().size())));
    }

    void countsWhatIsCopiedAtTheSameTime()
    {
        Program compositor = this->compositor();
        const auto clipboard = makeReadingClipboard(m_small);
        QVERIFY(clipboard);
        for (int i = 0; i < 100; ++i) {
            compositor.tell("copy");
            clipboard->setText(QString::number(i));
        }
        QTRY_COMPARE(clipboard->changeCount(), 201);
    }

    void connectsAgain_data()
    {
        QTest::addColumn<QStringList>("offers");
        QTest::addColumn<QByteArray>("bound");
        QTest::newRow("by the new name") << QStringList{u"ext"_s} << "bound ext"_ba;
        QTest::newRow("by the old name") << QStringList{u"zwlr"_s} << "bound zwlr"_ba;
        QTest::newRow("by either") << QStringList{u"zwlr"_s, u"ext"_s} << "bound ext"_ba;
    }

    void connectsAgain()
    {
        QFETCH(QStringList, offers);
        QFETCH(QByteArray, bound);
        auto first = std::make_unique<Program>(compositor(offers));
    }
};

QTEST_GUILESS_MAIN(WaylandClipboardTest)
#include "WaylandClipboardTest.moc"
