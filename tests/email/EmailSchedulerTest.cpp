// SPDX-License-Identifier: MIT
#include "EmailScheduler.h"

#include "Calendar.h"
#include "DiagnosticLines.h"
#include "MailDesk.h"
#include "Rows.h"
#include "Waiting.h"

#include <QDateTime>
#include <QTest>

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

/// What the clocks show.
QString shown(Instant instant)
{
    return dateTimeOf(instant).toString(Qt::ISODate);
}

/// A machine with a digest at eight, a recipient and one link. The first panel is not yet opened.
struct Machine : MailDesk {
    explicit Machine(const QString &dateAndTime = u"2026-11-19T07:00:00"_s,
                     const QByteArray &zone = "Europe/Berlin")
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
            EmailService::Dependencies{web, keys, summaries, context(), clock, pages, info});
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
        open();
        (void)QTest::qWaitFor([this] { return keys.isKnown(); });
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
    void jumpTo(const QString &dateAndTime) { clock.setWallClock(local(dateAndTime)); }
    void mailAt(int hour)
    {
        preferences.set(keys::emailSendHour, hour);
        scheduler->scheduleNextEmail();
    }
    void restart()
    {
        shutDown();
        boot();
        start();
    }

    HttpReply answer = HttpResponse{200, {}, false};
    QStringList sends; ///< when mails have gone out
    QList<QByteArray> names; ///< under which the provider knows them
    std::unique_ptr<EmailScheduler> scheduler;
};

} // namespace

class EmailSchedulerTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void findsTheNextSendDate()
    {
        const char *const berlin = "Europe/Berlin";
        const Rows<QByteArray, QString, int, QString> rows{
            {"a minute before", berlin, u"2026-11-21T07:59:00"_s, 8, u"2026-11-21T08:00:00"_s},
            {"exactly then", berlin, u"2026-11-21T08:00:00"_s, 8, u"2026-11-22T08:00:00"_s},
            {"last hour", berlin, u"2026-12-31T23:30:00"_s, 23, u"2027-01-01T23:00:00"_s},
            {"midnight is skipped", "Asia/Beirut", u"2026-03-28T09:00:00"_s, 1,
             u"2026-03-29T01:00:00"_s},
            {"half an hour", "Australia/Lord_Howe", u"2026-10-03T09:00:00"_s, 2,
             u"2026-10-04T02:30:00"_s},
            {"no such hour", berlin, u"2026-11-21T07:59:00"_s, 99, u""_s},
        };
        for (const auto &[zone, now, hour, wanted] : rows) {
            enterZone(zone);
            const Machine machine(now, zone);
            const auto next = machine.scheduler->nextSendDate(hour);
            QCOMPARE(next ? shown(*next) : QString(), wanted);
        }
    }

    /// What happens to the machine, and when it then sends.
    void followsTheWallClock()
    {
        using Events = std::function<void(Machine &)>;
        const QString nineteenth = u"2026-11-19T08:00:00"_s;
        const QString twentieth = u"2026-11-20T08:00:00"_s;
        const Rows<Events, QStringList> rows{
            {"awake for two days", [](Machine &m) { m.live(48h); }, {nineteenth, twentieth}},
            {"clock a day back, after the send",
             [](Machine &m) {
                 m.live(26h);
                 m.jump(-24h);
                 m.live(48h);
             },
             {nineteenth, twentieth, u"2026-11-21T08:00:00"_s}},
            {"clock years ahead, and set right",
             [](Machine &m) {
                 m.jump(24h * 1000);
                 m.live(1min);
                 m.jump(-24h * 1000);
                 m.live(26h);
             },
             {u"2029-08-15T08:01:00"_s, twentieth}},
            {"asleep over two sends, woken before the hour",
             [](Machine &m) {
                 m.jump(47h);
                 m.live(3h);
             },
             {u"2026-11-21T06:01:00"_s, u"2026-11-21T08:00:00"_s}},
            {"hour moved later by the user, after the send",
             [](Machine &m) {
                 m.live(2h);
                 m.mailAt(10);
                 m.live(24h);
             },
             {nineteenth, u"2026-11-19T10:00:00"_s}},
            {"asleep past midnight",
             [](Machine &m) {
                 m.jump(17h + 30min);
                 m.live(8h);
             },
             {u"2026-11-20T00:31:00"_s, twentieth}},
            {"clock over the hour, and set right",
             [](Machine &m) {
                 m.jump(2h);
                 m.live(1min);
                 m.jump(-2h);
                 m.live(24h);
             },
             {u"2026-11-19T09:01:00"_s}},
            {"off at the hour, and restarted after the late mail",
             [](Machine &m) {
                 m.jump(3h);
                 m.restart();
                 m.restart();
                 QCOMPARE(m.web.requests().size(), 1);
                 m.live(24h);
             },
             {u"2026-11-19T10:00:00"_s, twentieth}},
            {"killed before the provider's answer",
             [](Machine &m) {
                 m.web.answerWith({});
                 m.clock.advance(1h);
                 QTRY_COMPARE(m.web.waiting(), 1);
                 m.receive(m.web.requests().last());
                 m.listen();
                 m.restart();
                 m.live(24h);
             },
             {nineteenth, twentieth}},
            {"flown east over the hour",
             [](Machine &m) {
                 enterZone("Asia/Tokyo");
                 m.live(24h);
             },
             {u"2026-11-19T15:01:00"_s, twentieth}},
            {"flown west after the send",
             [](Machine &m) {
                 m.live(2h);
                 enterZone("America/New_York");
                 m.live(30h);
             },
             {nineteenth, twentieth}},
            {"an hour that is skipped",
             [](Machine &m) {
                 m.mailAt(2);
                 m.jumpTo(u"2026-03-28T12:00:00"_s);
                 m.live(40h);
             },
             {u"2026-03-29T03:00:00"_s, u"2026-03-30T02:00:00"_s}},
            {"an hour that comes twice",
             [](Machine &m) {
                 m.mailAt(2);
                 m.jumpTo(u"2026-10-24T12:00:00"_s);
                 m.live(40h);
             },
             {u"2026-10-25T02:00:00"_s, u"2026-10-26T02:00:00"_s}},
            {"a day that is skipped",
             [](Machine &m) {
                 enterZone("Pacific/Apia");
                 m.jumpTo(u"2011-12-29T12:00:00"_s);
                 m.live(48h);
             },
             {u"2011-12-31T08:00:00"_s, u"2012-01-01T08:00:00"_s}},
            {"an hour before midnight, asleep, and the clock set back",
             [](Machine &m) {
                 m.mailAt(23);
                 m.jump(18h);
                 m.live(1min);
                 m.jump(-3h);
                 m.live(25h);
             },
             {u"2026-11-20T01:01:00"_s, u"2026-11-20T23:00:00"_s}},
            {"midnight, which has never meant midnight",
             [](Machine &m) {
                 m.mailAt(0);
                 m.live(24h);
             },
             {nineteenth}},
            {"no links at the hour",
             [](Machine &m) {
                 QVERIFY(m.context().removeAll());
                 m.live(90min);
                 m.addLink(u"https://late.de"_s); // which takes a second
                 m.live(24h);
             },
             {u"2026-11-20T08:00:01"_s}},
            {"no recipient",
             [](Machine &m) {
                 m.preferences.set(keys::emailAddress, QString());
                 m.live(48h);
             }},
            {"switched off",
             [](Machine &m) {
                 m.preferences.set(keys::emailDigestEnabled, false);
                 m.scheduler->scheduleNextEmail();
                 QVERIFY(!m.scheduler->isScheduled());
                 m.clock.advance(48h);
             }},
            {"mail removed, and set up again",
             [](Machine &m) {
                 m.keys.removeConfiguration();
                 QVERIFY(!m.scheduler->isScheduled());
                 m.clock.advance(24h);
                 QVERIFY(*waitFor(m.keys.saveConfiguration(MailDesk::key, u"me@b.example"_s)));
                 m.live(24h);
             },
             {twentieth}},
        };
        for (const auto &[events, sends] : rows) {
            Machine machine;
            machine.start();
            events(machine);
            QCOMPARE(machine.sends, sends);
        }
    }

    void catchesUpWhenTheKeyringCanBeRead()
    {
        const Rows<bool> rows{{"locked at first", true}, {"absent at first", false}};
        for (const auto &[isLocked] : rows) {
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
    }

    void triesAgainUnderAnotherNameWhenRefused()
    {
        const Rows<HttpReply, int> rows{
            {"refused", HttpReply(HttpResponse{500, {}, false}), 2},
            {"refused in words", HttpReply(HttpResponse{422, R"({"message":"no"})", false}), 2},
            {"no answer", HttpReply(Unexpected{HttpError{HttpError::Kind::timedOut, {}}}), 1},
        };
        for (const auto &[answer, names] : rows) {
            Machine machine(u"2026-11-19T09:30:00"_s);
            machine.answer = answer;
            machine.start();
            QVERIFY(!machine.preferences.date(keys::lastEmailSentDate));
            machine.restart();
            QCOMPARE(machine.web.requests().size(), 2);
            QCOMPARE(int(machine.names.size()), names);
        }
    }

    void hidesWhatWasSentAndNothingElse()
    {
        Machine machine(u"2026-11-19T07:59:00"_s);
        machine.start();
        machine.preferences.set(keys::clearAfterEmail, true);
        const LinkId sent = inStoreOrder(machine.context()).first().id;
        machine.web.answerWith([&machine](const HttpRequest &) -> HttpReply {
            machine.addLink(u"https://meanwhile.de"_s);
            return HttpResponse{200, {}, false};
        });
        machine.live(1min);
        QTRY_COMPARE(machine.visible(), QStringList{u"https://meanwhile.de"_s});
        const auto hidden = machine.context().link(sent);
        QVERIFY(hidden && !hidden->isVisible && !hidden->isExported);
    }
};

QTEST_GUILESS_MAIN(EmailSchedulerTest)
#include "EmailSchedulerTest.moc"
