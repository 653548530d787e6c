// SPDX-License-Identifier: MIT
#include "DiagnosticLines.h"
#include "FakeClock.h"
#include "SystemClock.h"
#include "Waiting.h"
#include "async/OnPool.h"

#include <QSignalSpy>
#include <QTest>
#include <QThread>

using namespace std::chrono_literals;

namespace
{

/// Counts the frames that are alive.
struct Canary {
    int &alive;
    explicit Canary(int &counter)
        : alive(counter)
    {
        ++alive;
    }
    Canary(const Canary &) = delete;
    Canary &operator=(const Canary &) = delete;
    ~Canary() { --alive; }
};

Task<std::string> nap(Clock &clock, int *alive, std::string name)
{
    const Canary canary(*alive);
    Sleep sleep(clock, 30ms);
    co_await sleep;
    if (name == "bad")
        throw std::runtime_error("no bed");
    co_return name + " slept";
}

Task<> napTwice(Clock &clock, int *alive, QStringList *log)
{
    const Canary canary(*alive);
    const std::string first = co_await nap(clock, alive, "first");
    log->append(QString::fromStdString(first));
    const std::string second = co_await nap(clock, alive, "second");
    log->append(QString::fromStdString(second));
}

Task<> failing(Clock &clock, int *alive)
{
    const std::string text = co_await nap(clock, alive, "bad");
    Q_UNUSED(text)
}

Task<QThread *> workerThread(QThreadPool &pool)
{
    OnPool<QThread *> job(pool, [] { return QThread::currentThread(); });
    QThread *const thread = co_await job;
    co_return thread;
}

Task<> slowJob(QThreadPool &pool, int *alive, std::shared_ptr<int> held)
{
    const Canary canary(*alive);
    OnPool<int> job(pool, [held] {
        QThread::msleep(5);
        return *held;
    });
    const int value = co_await job;
    Q_UNUSED(value)
}

} // namespace

class AsyncTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void runsInOrder()
    {
        FakeClock clock;
        int alive = 0;
        QStringList log;
        Scope scope;
        scope.start(napTwice(clock, &alive, &log));
        clock.advance(59ms);
        QCOMPARE(log, QStringList{QStringLiteral("first slept")});
        clock.advance(1ms);
        QCOMPARE(log.size(), 2);
        QCOMPARE(alive, 0);
        QVERIFY(scope.isEmpty());
    }

    void endsWithItsScopeDuringEachWait()
    {
        for (const auto passed : {0ms, 30ms}) {
            FakeClock clock;
            int alive = 0;
            QStringList log;
            {
                Scope scope;
                scope.start(napTwice(clock, &alive, &log));
                clock.advance(passed);
                QCOMPARE(alive, 2);
            }
            QCOMPARE(alive, 0);
            QCOMPARE(clock.alarmCount(), 0u);
            clock.advance(1h);
            QCOMPARE(log.size(), passed == 0ms ? 0 : 1);
        }
    }

    void logsWhatATaskThrows()
    {
        const DiagnosticLines lines;
        FakeClock clock;
        int alive = 0;
        Scope scope;
        scope.start(failing(clock, &alive));
        clock.advance(30ms);
        QCOMPARE(lines.lines(), QStringList{QStringLiteral("Unexpected error in a task: no bed")});
        QCOMPARE(alive, 0);
    }

    void worksOnThePoolAndResumesHere()
    {
        QThreadPool pool;
        const auto thread = waitFor(workerThread(pool));
        QVERIFY(thread && *thread != QThread::currentThread());
    }

    void dropsTheResultOfAnAbandonedJob()
    {
        QThreadPool pool;
        int alive = 0;
        auto held = std::make_shared<int>(1);
        {
            Scope scope;
            scope.start(slowJob(pool, &alive, held));
            QCOMPARE(alive, 1);
        }
        QCOMPARE(alive, 0);
        pool.waitForDone();
        QCoreApplication::processEvents();
        QCOMPARE(held.use_count(), 1);
    }

    void wakesByTheRealClockNotEarly()
    {
        SystemClock clock;
        const auto begin = clock.elapsed();
        std::chrono::milliseconds waited{0};
        const auto alarm = clock.after(20ms, [&] { waited = clock.elapsed() - begin; });
        QTRY_VERIFY(waited > 0ms);
        QVERIFY(waited >= 20ms);
    }
};

QTEST_GUILESS_MAIN(AsyncTest)
#include "AsyncTest.moc"
