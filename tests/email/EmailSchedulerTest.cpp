// SPDX-License-Identifier: MIT
#include "EmailScheduler.h"

#include "Calendar.h"
#include "DiagnosticLines.h"
#include "MailDesk.h"
#include "Preferences.h"
#include "Waiting.h"

#include <QDateTime>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTest>

#include <ctime>
#include <functional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
namespace keys = preferenceKeys;

namespace
{

void enterZone(const QByteArray &zone)
{
    qputenv("TZ", zone);
    tzset();
}

Instant local(const QString &dateAndTime)
{
    return instantOf(QDateTime::fromString(dateAndTime, Qt::ISODate));
}

QString shown(Instant instant)
{
    return dateTimeOf(instant).toString(Qt::ISODate);
}

/// A machine with a digest at eight, a recipient and one link. The first panel is not yet opened.
struct Machine : MailDesk {
    Machine(const QByteArray &zone, const QString &dateAndTime)
        : preferences(folder.filePath(u"settings.ini"_s))
    {
        enterZone(zone);
        web.answerWith([this](const HttpRequest &) -> HttpReply {
            sends.append(clock.now());
            return answer;
        });
        preferences.set(keys::emailDigestEnabled, true);
        preferences.set(keys::emailAddress, u"you@example.com"_s);
        addLink(u"https://a.de"_s);
        clock.setWallClock(local(dateAndTime));
        scheduler = std::make_unique<EmailScheduler>(
            EmailScheduler::Parts{*service, keys, preferences, clock});
    }

    /// As the first opening of the panel does.
    void start()
    {
        (void)QTest::qWaitFor([this] { return keys.isConfigured(); });
        scheduler->setModelContext(&context());
        scheduler->scheduleNextEmail();
        scheduler->checkAndSendIfNeeded();
        for (int turn = 0; turn < 2; ++turn) // behind that of a send, which may begin a turn later
            (void)waitFor(keys.apiKey(UnlockPrompt::never));
        settle();
    }
    /// Runs until whatever was sent is sent, which is when the next send is aimed at.
    void settle()
    {
        QElapsedTimer timer;
        timer.start();
        while ((clock.alarmCount() == 0 || service->isSending()) && timer.elapsed() < 5'000)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    /// Lets time pass with the machine awake.
    void live(std::chrono::milliseconds time)
    {
        for (std::chrono::milliseconds passed = 0s; passed < time; passed += 1s) {
            clock.advance(1s);
            settle();
        }
    }
    /// Lets the wall clock jump, by a suspend or by somebody's hand.
    void jumpTo(Instant instant) { clock.setWallClock(instant); }
    void jump(std::chrono::hours time) { jumpTo(clock.now() + time); }
    qsizetype sendsOn(QDate date) const
    {
        return std::count_if(sends.begin(), sends.end(),
                             [date](Instant send) { return dateTimeOf(send).date() == date; });
    }
    QStringList sendTimes() const
    {
        QStringList times;
        for (const Instant &send : sends)
            times.append(shown(send));
        return times;
    }

    Preferences preferences;
    HttpReply answer = HttpResponse{200, {}, false};
    QList<Instant> sends;
    std::unique_ptr<EmailScheduler> scheduler;
};

/// When the clocks first show `hour` or later on `date`, found by looking at every half hour;
/// absent where the calendar skips the date.
std::optional<Instant> firstMoment(QDate date, int hour)
{
    const Instant noon = instantOf(QDateTime(date, QTime(12, 0), Qt::UTC));
    for (Instant moment = noon - 28h; moment < noon + 28h; moment += 30min) {
        const time_t seconds = std::chrono::system_clock::to_time_t(moment);
        tm shown = {};
        localtime_r(&seconds, &shown);
        const QDate shownDate(shown.tm_year + 1900, shown.tm_mon + 1, shown.tm_mday);
        if (shownDate == date && shown.tm_hour >= hour)
            return moment;
    }
    return std::nullopt;
}

} // namespace

class EmailSchedulerTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        if (QFileInfo(u"/dev/shm"_s).isWritable())
            qputenv("TMPDIR", "/dev/shm"); // hundreds of thousands of preferences are written
    }

    void findsTheNextSendDate_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<QString>("now");
        QTest::addColumn<int>("hour");
        QTest::addColumn<QString>("next");
        const auto row = [](const char *name, const char *zone, const char *now, int hour,
                            const char *next) {
            QTest::newRow(name) << QByteArray(zone) << QString::fromLatin1(now) << hour
                                << QString::fromLatin1(next);
        };
        const char *const berlin = "Europe/Berlin";
        row("a minute before", berlin, "2026-11-21T07:59:00", 8, "2026-11-21T08:00:00");
        row("exactly then", berlin, "2026-11-21T08:00:00", 8, "2026-11-22T08:00:00");
        row("last hour", berlin, "2026-12-31T23:30:00", 23, "2027-01-01T23:00:00");
        row("over the spring change", berlin, "2026-03-28T09:00:00", 8, "2026-03-29T08:00:00");
        row("an hour that is skipped", berlin, "2026-03-28T09:00:00", 2, "2026-03-29T03:00:00");
        row("an hour that comes twice", berlin, "2026-10-24T09:00:00", 2, "2026-10-25T02:00:00");
        row("midnight is skipped", "Asia/Beirut", "2026-03-28T09:00:00", 1, "2026-03-29T01:00:00");
        row("the day is skipped", "Pacific/Apia", "2011-12-29T09:00:00", 8, "2011-12-31T08:00:00");
        row("half an hour", "Australia/Lord_Howe", "2026-10-03T09:00:00", 2, "2026-10-04T02:30:00");
        row("no such hour", berlin, "2026-11-21T07:59:00", 99, "");
    }
    void findsTheNextSendDate()
    {
        QFETCH(QByteArray, zone);
        QFETCH(int, hour);
        enterZone(zone);
        QFETCH(QString, now);
        const Machine machine(zone, now);
        const auto next = machine.scheduler->nextSendDate(hour);
        QTEST(next ? shown(*next) : QString(), "next");
    }

    void sendsOncePerDay_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<QDate>("from");
        QTest::addColumn<int>("hour");
        const auto row = [](const char *zone, QDate from, int hour) {
            QTest::newRow(zone) << QByteArray(zone) << from << hour;
        };
        row("Europe/Berlin", QDate(2000, 1, 1), 2);
        row("America/New_York", QDate(2000, 1, 1), 0);
        row("Asia/Beirut", QDate(2000, 1, 1), 1);
        row("Pacific/Apia", QDate(2000, 1, 1), 8);
        row("Australia/Lord_Howe", QDate(2000, 1, 1), 2);
        row("America/Sao_Paulo", QDate(1995, 1, 1), 1);
        row("Africa/Casablanca", QDate(2000, 1, 1), 23);
        row("Asia/Kathmandu", QDate(1975, 1, 1), 5);
    }
    /// Each day the machine is awake at the hour, sleeps over it, sleeps the day through or has its
    /// clock set back after it.
    void sendsOncePerDay()
    {
        QFETCH(QByteArray, zone);
        QFETCH(QDate, from);
        QFETCH(int, hour);
        enterZone(zone);
        Machine machine(zone, QDateTime(from, QTime(0, 30)).toString(Qt::ISODate));
        machine.preferences.set(keys::emailSendHour, hour);
        machine.start();
        QRandomGenerator random(7);
        const int realHour = hour == 0 ? 8 : hour;
        for (QDate date = from; date < from.addDays(10'000); date = date.addDays(1)) {
            const auto due = firstMoment(date, realHour);
            const int kind = random.bounded(8);
            if (!due || kind == 0)
                continue; // no such day, or asleep: tomorrow is a day of its own
            machine.sends.clear();
            if (kind == 1) {
                machine.jumpTo(*due + std::chrono::seconds(random.bounded(1'800)));
                machine.live(1min);
                QVERIFY(machine.sends.value(0) >= *due);
            } else {
                machine.jumpTo(*due - 90s);
                machine.live(3min);
                // Awake since the day before, or late for a day that was slept through.
                QVERIFY(machine.sends.value(0) <= *due);
            }
            if (kind == 2) {
                machine.jump(-1h);
                machine.live(2min);
                machine.jumpTo(*due - 90s);
                machine.live(3min);
            }
            QVERIFY2(machine.sendsOn(date) == 1,
                     qPrintable(date.toString() + u": " + machine.sendTimes().join(u", "_s)));
        }
    }

    /// What happens to the machine, and when it then sends.
    void followsTheWallClock_data()
    {
        QTest::addColumn<std::function<void(Machine &)>>("events");
        QTest::addColumn<QStringList>("sends");
        using Events = std::function<void(Machine &)>;
        const auto row = [](const char *name, const Events &events, const QStringList &sends) {
            QTest::newRow(name) << events << sends;
        };
        const auto at = [](const char *time) { return local(QString::fromLatin1(time)); };
        const QString nineteenth = u"2026-11-19T08:00:00"_s;
        const QString twentieth = u"2026-11-20T08:00:00"_s;
        row("awake for two days", [](Machine &m) { m.live(48h); }, {nineteenth, twentieth});
        row("clock forward an hour, over the time",
            [=](Machine &m) {
                m.live(30min);
                m.jump(1h);
                m.live(24h);
            },
            {u"2026-11-19T08:30:00"_s, twentieth});
        row("clock back an hour, after the send",
            [](Machine &m) {
                m.live(90min);
                m.jump(-1h);
                m.live(25h);
            },
            {nineteenth, twentieth});
        row("clock back an hour, before the send",
            [](Machine &m) {
                m.live(30min);
                m.jump(-1h);
                m.live(24h);
            },
            {nineteenth});
        row("clock forward a day, before the send",
            [](Machine &m) {
                m.live(30min);
                m.jump(24h);
                m.live(24h);
            },
            {u"2026-11-20T07:30:00"_s});
        row("clock back a day, after the send",
            [](Machine &m) {
                m.live(26h);
                m.jump(-24h);
                m.live(48h);
            },
            {nineteenth, twentieth, u"2026-11-21T08:00:00"_s});
        row("asleep over three sends, woken before the hour",
            [=](Machine &m) {
                m.jumpTo(at("2026-11-21T06:30:00"));
                m.live(48h);
            },
            {u"2026-11-21T06:30:00"_s, u"2026-11-22T08:00:00"_s});
        row("asleep over three sends, woken after the hour",
            [=](Machine &m) {
                m.jumpTo(at("2026-11-21T10:30:00"));
                m.live(24h);
            },
            {u"2026-11-21T10:30:00"_s, u"2026-11-22T08:00:00"_s});
        row("hour moved later by the user, after the send",
            [](Machine &m) {
                m.live(2h);
                m.preferences.set(keys::emailSendHour, 10);
                m.scheduler->scheduleNextEmail();
                m.live(24h);
            },
            {nineteenth, u"2026-11-19T10:00:00"_s});
        row("hour moved later, then asleep",
            [=](Machine &m) {
                m.live(2h);
                m.preferences.set(keys::emailSendHour, 12);
                m.scheduler->scheduleNextEmail();
                m.jumpTo(at("2026-11-19T11:00:00"));
                m.live(24h);
            },
            {nineteenth, u"2026-11-19T12:00:00"_s});
        row("travelled west, after the send",
            [](Machine &m) {
                m.live(2h);
                enterZone("America/New_York"); // 03:00 of the same day
                m.live(30h);
            },
            {u"2026-11-19T02:00:00"_s, twentieth});
        row("travelled east, over the time",
            [](Machine &m) {
                enterZone("Asia/Tokyo"); // 15:00
                m.live(24h);
            },
            {u"2026-11-20T08:00:00"_s});
        row("no links at the hour",
            [](Machine &m) {
                QVERIFY(m.context().removeAll());
                m.live(90min);
                m.addLink(u"https://late.de"_s);
                m.live(24h);
            },
            {twentieth});
        row("no recipient",
            [](Machine &m) {
                m.preferences.set(keys::emailAddress, QString());
                m.live(48h);
            },
            {});
        row("hour ninety-nine",
            [](Machine &m) {
                m.preferences.set(keys::emailSendHour, 99);
                m.scheduler->scheduleNextEmail();
                QVERIFY(m.scheduler->isScheduled()); // as it was
                m.clock.advance(48h);
            },
            {});
        row("switched off",
            [](Machine &m) {
                m.preferences.set(keys::emailDigestEnabled, false);
                m.scheduler->scheduleNextEmail();
                QVERIFY(!m.scheduler->isScheduled());
                m.clock.advance(48h);
            },
            {});
        row("no store",
            [](Machine &m) {
                m.scheduler->setModelContext(nullptr);
                m.clock.advance(48h);
                QVERIFY(m.scheduler->isScheduled());
                QCOMPARE(m.clock.alarmCount(), 0u);
            },
            {});
        row("refused, and tried again the next day",
            [](Machine &m) {
                m.answer = HttpResponse{500, {}, false};
                m.live(48h);
                QVERIFY(!m.preferences.date(keys::lastEmailSentDate));
            },
            {nineteenth, twentieth});
    }
    void followsTheWallClock()
    {
        using Events = std::function<void(Machine &)>;
        QFETCH(Events, events);
        QFETCH(QStringList, sends);
        Machine machine("Europe/Berlin", u"2026-11-19T07:00:00"_s);
        machine.start();
        events(machine);
        QStringList times = machine.sendTimes();
        for (int i = 0; i < times.size() && i < sends.size(); ++i) {
            const auto late = local(times[i]) - local(sends[i]);
            if (sends[i].endsWith(u"00:00"_s) || late < 0s || late > 1min)
                continue;
            times[i] = sends[i]; // after a jump a look at the clock may be a minute away
        }
        QCOMPARE(times, sends);
    }

    void catchesUpAtTheStart_data()
    {
        QTest::addColumn<QString>("now");
        QTest::addColumn<QString>("lastSent");
        QTest::addColumn<int>("sends");
        QTest::newRow("missed today") << u"2026-11-19T09:30:00"_s << u""_s << 1;
        QTest::newRow("sent yesterday")
            << u"2026-11-19T09:30:00"_s << u"2026-11-18T23:59:00"_s << 1;
        QTest::newRow("sent today") << u"2026-11-19T09:30:00"_s << u"2026-11-19T08:00:00"_s << 0;
        QTest::newRow("not yet due") << u"2026-11-19T07:59:00"_s << u""_s << 0;
    }
    void catchesUpAtTheStart()
    {
        QFETCH(QString, now);
        QFETCH(QString, lastSent);
        QFETCH(int, sends);
        Machine machine("Europe/Berlin", now);
        if (!lastSent.isEmpty())
            machine.preferences.set(keys::lastEmailSentDate, local(lastSent));
        machine.start();
        QCOMPARE(machine.sends.size(), sends);
        if (sends > 0)
            QTRY_COMPARE(machine.preferences.date(keys::lastEmailSentDate), local(now));
        QVERIFY(machine.scheduler->isScheduled());
    }

    void catchesUpWhenTheKeyringIsLate()
    {
        Machine machine("Europe/Berlin", u"2026-11-19T09:30:00"_s);
        machine.scheduler->setModelContext(&machine.context()); // before the keyring has answered
        machine.scheduler->scheduleNextEmail();
        machine.scheduler->checkAndSendIfNeeded();
        QVERIFY(!machine.scheduler->isScheduled());
        QTRY_COMPARE(machine.sends.size(), 1);
        machine.settle();
        QVERIFY(machine.scheduler->isScheduled());
        machine.keys.refresh();
        machine.live(1h);
        QCOMPARE(machine.sends.size(), 1);
    }

    void hidesWhatWasSentAndNothingElse()
    {
        Machine machine("Europe/Berlin", u"2026-11-19T07:59:59"_s);
        machine.start();
        machine.preferences.set(keys::clearAfterEmail, true);
        const QList<CapturedLink> sent = machine.visible();
        machine.web.answerWith([&machine](const HttpRequest &) -> HttpReply {
            machine.addLink(u"https://meanwhile.de"_s);
            return HttpResponse{200, {}, false};
        });
        machine.live(1s);
        QCOMPARE(machine.visible().size(), 1);
        QCOMPARE(machine.visible().first().url, u"https://meanwhile.de"_s);
        const auto hidden = machine.context().link(sent.first().id);
        QVERIFY(hidden && !hidden->isVisible && !hidden->isExported);
    }
};

QTEST_GUILESS_MAIN(EmailSchedulerTest)
#include "EmailSchedulerTest.moc"
