// SPDX-License-Identifier: MIT
#include "EmailScheduler.h"

#include "Calendar.h"
#include "DiagnosticLines.h"
#include "MailDesk.h"
#include "Preferences.h"
#include "Waiting.h"

#include <QDateTime>
#include <QFileInfo>
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

/// What the clocks show, such as "2026-11-19T08:00:00", which sorts as it passes.
QString shown(Instant instant)
{
    const time_t seconds = std::chrono::system_clock::to_time_t(instant);
    tm civil = {};
    localtime_r(&seconds, &civil);
    char text[20] = {};
    (void)std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &civil);
    return QString::fromLatin1(text);
}

/// When the clocks first show `hour` or later on `date`, found by looking at every half hour;
/// absent where the calendar skips the date.
std::optional<Instant> firstMoment(QDate date, int hour)
{
    const Instant noon = instantOf(QDateTime(date, QTime(12, 0), Qt::UTC));
    const QString day = date.toString(Qt::ISODate);
    const QString slot = day + u"T%1"_s.arg(hour, 2, 10, QChar(u'0'));
    for (Instant moment = noon - 28h; moment < noon + 28h; moment += 30min) {
        const QString clocks = shown(moment);
        if (clocks.startsWith(day) && clocks >= slot)
            return moment;
    }
    return std::nullopt;
}

/// A machine with a digest at eight, a recipient and one link. The first panel is not yet opened.
struct Machine : MailDesk {
    explicit Machine(const QString &dateAndTime = u"2026-11-19T07:00:00"_s,
                     const QByteArray &zone = "Europe/Berlin")
        : preferences(folder.filePath(u"settings.ini"_s))
    {
        enterZone(zone);
        listen();
        preferences.set(keys::emailDigestEnabled, true);
        preferences.set(keys::emailAddress, u"you@example.com"_s);
        addLink(u"https://a.de"_s);
        clock.setWallClock(local(dateAndTime));
        boot();
    }

    /// The provider answers from here on; the same mail again it takes for the first.
    void listen()
    {
        web.answerWith([this](const HttpRequest &request) -> HttpReply {
            receive(request);
            return answer;
        });
    }
    void receive(const HttpRequest &request)
    {
        if (names.contains(request.headers.last().value))
            return;
        names.append(request.headers.last().value);
        sends.append(shown(clock.now()));
    }
    void boot()
    {
        service = std::make_unique<EmailService>(
            EmailService::Dependencies{web, keys, *summaries, context(), clock, pool, info});
        scheduler = std::make_unique<EmailScheduler>(
            EmailScheduler::Dependencies{*service, keys, preferences, clock});
    }
    void shutDown()
    {
        scheduler.reset();
        service.reset();
    }
    /// As the first opening of the panel does.
    void open()
    {
        scheduler->setModelContext(&context());
        scheduler->scheduleNextEmail();
        scheduler->checkAndSendIfNeeded();
    }
    void start()
    {
        (void)QTest::qWaitFor([this] { return keys.isKnown(); });
        open();
        settle();
    }
    /// Runs until whatever was to be sent is sent and the next send is aimed at.
    void settle()
    {
        const auto isBusy = [this] { return clock.alarmCount() == 0 || service->isSending(); };
        QElapsedTimer timer;
        timer.start();
        for (int idleTurns = 0; idleTurns < 10 && timer.elapsed() < 10'000;
             idleTurns = isBusy() ? 0 : idleTurns + 1)
            (void)waitFor(keys.apiKey(UnlockPrompt::never)); // which takes a turn of the loop
    }
    /// Lets time pass with the machine awake.
    void live(std::chrono::minutes time)
    {
        for (auto passed = 0min; passed < time; ++passed) {
            const auto before = web.requests().size();
            clock.advance(1min);
            if (web.requests().size() != before || clock.alarmCount() == 0)
                settle();
        }
    }
    /// Lets the wall clock jump, by a suspend or by somebody's hand.
    void jump(std::chrono::minutes time) { clock.setWallClock(clock.now() + time); }

    Preferences preferences;
    HttpReply answer = HttpResponse{200, {}, false};
    QStringList sends; ///< when mails have gone out
    QList<QByteArray> names; ///< under which the provider knows them
    std::unique_ptr<EmailScheduler> scheduler;
};

/// One look at the clock in the life of a machine.
struct Step {
    enum Kind { look, lookAndCrash, shutDown, start };
    Kind kind;
    Instant wall;
    QByteArray zone;
};

enum class Habit { alwaysOn, asleepAtTheHour, asleepPastMidnight, offAtTheHour, crashesSending };
enum class Mishap { none, clockBack, clockForward };

struct Place {
    QString name;
    QByteArray zone;
    QDate from;
    QByteArray destination = {}; ///< on the third day, an hour before the send
};

/// A week of a machine.
class Week
{
public:
    Week(int hour, Habit habit, const Place &place, Mishap mishap)
        : m_zone(place.zone)
    {
        enterZone(m_zone);
        m_wall = *firstMoment(place.from, 0);
        add(Step::start, m_wall + 10min);
        for (int day = 0; day < 7; ++day) {
            auto due = firstMoment(place.from.addDays(day), hour);
            if (!due)
                continue;
            if (day == 3 && mishap == Mishap::clockForward) {
                add(Step::look, *due - 61min);
                add(Step::look, *due + 59min);
            }
            if (day == 3 && !place.destination.isEmpty()) {
                add(Step::look, *due - 62min);
                m_zone = place.destination;
                enterZone(m_zone);
                add(Step::look, *due - 60min);
                due = firstMoment(place.from.addDays(day), hour);
            }
            live(habit, *due);
            if (day == 3 && mishap == Mishap::clockBack)
                setBack(*due);
        }
    }

    const QList<Step> &steps() const { return m_steps; }

private:
    void live(Habit habit, Instant due)
    {
        switch (habit) {
        case Habit::alwaysOn:
            add(Step::look, due - 5min);
            add(Step::look, due + 1min);
            add(Step::look, due + 4h);
            break;
        case Habit::asleepAtTheHour:
            add(Step::look, due - 30min);
            add(Step::look, due + 3h);
            break;
        case Habit::asleepPastMidnight:
            add(Step::look, due - 30min);
            add(Step::look, startOfDay(due) + 24h + 30min);
            break;
        case Habit::offAtTheHour:
            add(Step::shutDown, due - 30min);
            add(Step::start, due + 2h);
            break;
        case Habit::crashesSending:
            add(Step::look, due - 5min);
            add(Step::lookAndCrash, due + 1min);
            add(Step::start, due + 2min);
            break;
        }
    }
    void setBack(Instant due)
    {
        const Instant wall = std::exchange(m_wall, m_wall - 2h);
        m_steps.append({Step::look, m_wall, m_zone});
        add(Step::look, due + 1min); // once more, when it lies ahead again
        add(Step::look, wall);
    }
    /// Nothing where it is later already.
    void add(Step::Kind kind, Instant wall)
    {
        const bool changesPower = kind == Step::start || kind == Step::shutDown;
        if (wall <= m_wall && !changesPower)
            return;
        m_wall = std::max(wall, m_wall + 1min);
        m_steps.append({kind, m_wall, m_zone});
    }

    QByteArray m_zone;
    Instant m_wall;
    QList<Step> m_steps;
};

/// The rule again, by what the clocks show: when they pass the hour of a day for the first time
/// since the program has started, be it in one leap with later days, a mail goes out; and one at
/// the start, when the hour has passed and none is known to have gone out that day.
class Reader
{
public:
    explicit Reader(int hour)
        : m_hour(u"T%1:00:00"_s.arg(hour, 2, 10, QChar(u'0')))
    {
    }

    bool expectsMail(const Step &step)
    {
        enterZone(step.zone);
        const QString before = std::exchange(m_clocks, shown(step.wall));
        if (step.kind == Step::shutDown)
            return false;
        const auto day = step.kind == Step::start ? dayMissed() : dayPassed(before);
        if (!day)
            return false;
        m_passed.insert(*day);
        if (step.kind == Step::lookAndCrash)
            m_halfSent = *day;
        else
            m_lastSent = step.wall;
        return step.kind != Step::start || m_halfSent != *day; // which the provider has already
    }

private:
    std::optional<QString> dayMissed()
    {
        m_passed.clear();
        const QString today = m_clocks.left(10);
        const bool isSent = shown(m_lastSent).startsWith(today);
        return m_clocks >= today + m_hour && !isSent ? std::optional(today) : std::nullopt;
    }
    std::optional<QString> dayPassed(const QString &before) const
    {
        const QDate first = QDate::fromString(before.left(10), Qt::ISODate);
        for (QDate date = first; date <= first.addDays(3); date = date.addDays(1)) {
            const QString day = date.toString(Qt::ISODate);
            const bool isPassed = before < day + m_hour && day + m_hour <= m_clocks;
            if (isPassed && !m_passed.contains(day) && firstMoment(date, 0))
                return day;
        }
        return std::nullopt;
    }

    const QString m_hour;
    QString m_clocks;
    QString m_halfSent; ///< the day whose mail the program did not live to record
    Instant m_lastSent;
    QSet<QString> m_passed;
};

} // namespace

class EmailSchedulerTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        if (QFileInfo(u"/dev/shm"_s).isWritable())
            qputenv("TMPDIR", "/dev/shm"); // thousands of preferences are written
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
        const Machine machine(now, zone);
        const auto next = machine.scheduler->nextSendDate(hour);
        QTEST(next ? shown(*next) : QString(), "next");
    }

    void mailsForEverySlotOnce_data()
    {
        QTest::addColumn<int>("hour");
        QTest::addColumn<Habit>("habit");
        for (const int hour : {1, 8, 20, 23}) {
            const char *const habits[] = {"always on", "asleep at the hour", "asleep past midnight",
                                          "off at the hour", "crashes during the send"};
            for (int habit = 0; habit < 5; ++habit)
                QTest::addRow("%d:00, %s", hour, habits[habit]) << hour << Habit(habit);
        }
    }
    void mailsForEverySlotOnce()
    {
        QFETCH(int, hour);
        QFETCH(Habit, habit);
        const Place places[] = {
            {u"UTC"_s, "UTC", QDate(2026, 5, 1)},
            {u"spring in Berlin"_s, "Europe/Berlin", QDate(2026, 3, 26)},
            {u"autumn in Berlin"_s, "Europe/Berlin", QDate(2026, 10, 22)},
            {u"half an hour's change"_s, "Australia/Lord_Howe", QDate(2026, 10, 1)},
            {u"skipped day"_s, "Pacific/Apia", QDate(2011, 12, 27)},
            {u"flight east"_s, "Europe/Berlin", QDate(2026, 5, 1), "Asia/Tokyo"},
            {u"flight west"_s, "Europe/Berlin", QDate(2026, 5, 1), "America/New_York"},
        };
        const QString mishaps[] = {{}, u", clock set back"_s, u", clock put forward"_s};
        Machine machine;
        machine.preferences.set(keys::emailSendHour, hour);
        for (const Place &place : places) {
            for (int mishap = 0; mishap < 3; ++mishap) {
                const Week week(hour, habit, place, Mishap(mishap));
                const QString difference = firstDifference(machine, week, hour);
                const QString where = place.name + mishaps[mishap];
                QVERIFY2(difference.isEmpty(), qPrintable(where + u": "_s + difference));
            }
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
        const QString nineteenth = u"2026-11-19T08:00:00"_s;
        const QString twentieth = u"2026-11-20T08:00:00"_s;
        row("awake for two days", [](Machine &m) { m.live(48h); }, {nineteenth, twentieth});
        row("clock a day back, after the send",
            [](Machine &m) {
                m.live(26h);
                m.jump(-24h);
                m.live(48h);
            },
            {nineteenth, twentieth, u"2026-11-21T08:00:00"_s});
        row("clock years ahead, and set right",
            [](Machine &m) {
                m.jump(24h * 1000);
                m.live(1min);
                m.jump(-24h * 1000);
                m.live(26h);
            },
            {u"2029-08-15T08:01:00"_s, twentieth});
        row("asleep over two sends, woken before the hour",
            [](Machine &m) {
                m.jump(47h);
                m.live(3h);
            },
            {u"2026-11-21T06:01:00"_s, u"2026-11-21T08:00:00"_s});
        row("hour moved later by the user, after the send",
            [](Machine &m) {
                m.live(2h);
                m.preferences.set(keys::emailSendHour, 10);
                m.scheduler->scheduleNextEmail();
                m.live(24h);
            },
            {nineteenth, u"2026-11-19T10:00:00"_s});
        row("no links at the hour",
            [](Machine &m) {
                QVERIFY(m.context().removeAll());
                m.live(90min);
                m.addLink(u"https://late.de"_s); // which takes a second
                m.live(24h);
            },
            {u"2026-11-20T08:00:01"_s});
        row("no recipient",
            [](Machine &m) {
                m.preferences.set(keys::emailAddress, QString());
                m.live(48h);
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
        row("mail removed, and set up again",
            [](Machine &m) {
                m.keys.removeConfiguration();
                QVERIFY(!m.scheduler->isScheduled());
                m.clock.advance(24h);
                QVERIFY(*waitFor(m.keys.saveConfiguration(MailDesk::key, u"me@b.example"_s)));
                m.live(24h);
            },
            {twentieth});
    }
    void followsTheWallClock()
    {
        using Events = std::function<void(Machine &)>;
        QFETCH(Events, events);
        Machine machine;
        machine.start();
        events(machine);
        QTEST(machine.sends, "sends");
    }

    void catchesUpWhenTheKeyringCanBeRead_data()
    {
        QTest::addColumn<bool>("isLocked");
        QTest::newRow("locked at first") << true;
        QTest::newRow("absent at first") << false;
    }
    void catchesUpWhenTheKeyringCanBeRead()
    {
        QFETCH(bool, isLocked);
        Machine machine(u"2026-11-19T09:30:00"_s);
        machine.secrets.isLocked = isLocked;
        if (!isLocked)
            machine.secrets.fault = SecretFault::unavailable;
        const DiagnosticLines diagnostics;
        machine.open();
        (void)waitFor(machine.keys.apiKey(UnlockPrompt::never));
        QVERIFY(diagnostics.lines().filter(u"Scheduled email failed"_s).isEmpty());
        QCOMPARE(machine.scheduler->isScheduled(), isLocked);
        machine.clock.advance(1min);
        QVERIFY(machine.web.requests().isEmpty());

        for (int time = 0; time < 2; ++time) {
            machine.secrets.change();
            machine.settle();
            machine.clock.advance(1min);
            QCOMPARE(machine.sends, QStringList{u"2026-11-19T09:31:00"_s});
        }
        QVERIFY(machine.scheduler->isScheduled());
        QCOMPARE(machine.secrets.prompts, 0);
    }

    void triesAgainUnderAnotherNameWhenRefused_data()
    {
        QTest::addColumn<HttpReply>("answer");
        QTest::addColumn<int>("names");
        QTest::newRow("refused") << HttpReply(HttpResponse{500, {}, false}) << 2;
        QTest::newRow("refused in words")
            << HttpReply(HttpResponse{422, R"({"message":"no"})", false}) << 2;
        QTest::newRow("no answer")
            << HttpReply(Unexpected{HttpError{HttpError::Kind::timedOut, {}}}) << 1;
    }
    void triesAgainUnderAnotherNameWhenRefused()
    {
        Machine machine(u"2026-11-19T09:30:00"_s);
        QFETCH(HttpReply, answer);
        machine.answer = answer;
        machine.start();
        QVERIFY(!machine.preferences.date(keys::lastEmailSentDate));
        machine.shutDown();
        machine.boot();
        machine.start();
        QCOMPARE(machine.web.requests().size(), 2);
        QTEST(int(machine.names.size()), "names");
    }

    void hidesWhatWasSentAndNothingElse()
    {
        Machine machine(u"2026-11-19T07:59:00"_s);
        machine.start();
        machine.preferences.set(keys::clearAfterEmail, true);
        const QList<CapturedLink> sent = machine.visible();
        machine.web.answerWith([&machine](const HttpRequest &) -> HttpReply {
            machine.addLink(u"https://meanwhile.de"_s);
            return HttpResponse{200, {}, false};
        });
        machine.live(1min);
        QTRY_COMPARE(machine.visible().size(), 1);
        QCOMPARE(machine.visible().first().url, u"https://meanwhile.de"_s);
        const auto hidden = machine.context().link(sent.first().id);
        QVERIFY(hidden && !hidden->isVisible && !hidden->isExported);
    }

private:
    /// Where the mails of a week are others than the rule has it; empty where they are the same.
    static QString firstDifference(Machine &machine, const Week &week, int hour)
    {
        machine.shutDown();
        machine.names.clear();
        machine.preferences.set(keys::lastEmailSentDate, Instant());
        Reader reader(hour);
        for (const Step &step : week.steps()) {
            const auto before = machine.sends.size();
            take(machine, step);
            const bool isExpected = reader.expectsMail(step);
            if (machine.sends.size() - before != (isExpected ? 1 : 0))
                return shown(step.wall) + (isExpected ? u" no mail"_s : u" a mail too many"_s);
        }
        return {};
    }
    static void take(Machine &machine, const Step &step)
    {
        enterZone(step.zone);
        switch (step.kind) {
        case Step::shutDown:
            machine.shutDown();
            break;
        case Step::start:
            machine.shutDown();
            machine.clock.setWallClock(step.wall);
            machine.boot();
            machine.start();
            break;
        case Step::look:
            machine.clock.setWallClock(step.wall - 1min);
            machine.live(1min);
            break;
        case Step::lookAndCrash:
            machine.web.answerWith({});
            machine.clock.setWallClock(step.wall - 1min);
            machine.clock.advance(1min);
            (void)QTest::qWaitFor(
                [&] { return machine.clock.alarmCount() + machine.web.waiting(); });
            if (machine.web.waiting() > 0)
                machine.receive(machine.web.requests().last());
            machine.shutDown();
            machine.listen();
            break;
        }
    }
};

QTEST_GUILESS_MAIN(EmailSchedulerTest)
#include "EmailSchedulerTest.moc"
