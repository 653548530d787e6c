// SPDX-License-Identifier: MIT
#include "AppState.h"

#include "DiagnosticLines.h"
#include "FakeClock.h"
#include "ModelContainer.h"
#include "Services.h"
#include "Waiting.h"

#include <QFile>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

/// A home of its own, without a session bus.
struct Home {
    Home()
    {
        for (const char *const name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "STRANDLOOM_INFO"})
            qputenv(name, folder.path().toUtf8());
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    }

    QTemporaryDir folder;
    FakeClock clock;
    std::unique_ptr<ModelContainer> container =
        std::move(*ModelContainer::open(folder.path(), clock));
};

} // namespace

class AppStateTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void startsOnceAndInItsOrder()
    {
        Home home;
        ModelContext &context = home.container->mainContext();
        context.insert(
            {QUuid::createUuid(), u"https://old.example"_s, {}, {}, home.clock.now() - 960h});
        Services services(context, home.clock);
        services.preferences.set(preferenceKeys::autoPruneDays, 30);
        services.preferences.set(preferenceKeys::emailDigestEnabled, true);
        QVERIFY(*waitFor(services.keys.saveConfiguration(u"re_canary7890abcdef12"_s, u"a@b.de"_s)));

        AppState state(services);
        const DiagnosticLines diagnostics;
        state.initialize();
        const auto *const monitor = state.clipboardMonitor();
        const QStringList lines = diagnostics.lines();
        QCOMPARE(lines.value(0), u"Auto-pruned 1 old links"_s); // as capturing starts
        QVERIFY(lines.value(1).startsWith(u"Scheduling email for"_s));
        state.initialize();
        QCOMPARE(state.clipboardMonitor(), monitor);
        QCOMPARE(diagnostics.lines(), lines);
        QTRY_VERIFY(diagnostics.lines().contains( // for which the keyring is needed
            u"Failed to read the email configuration: There is no secret service"_s));
    }

    void looksThroughTheStoreWhenThatIsDue_data()
    {
        QTest::addColumn<std::optional<std::chrono::hours>>("sinceLastTime");
        QTest::addColumn<bool>("wasLeftOpen");
        QTest::addColumn<bool>("isDue");
        using Since = std::optional<std::chrono::hours>;
        QTest::newRow("never before") << Since() << false << true;
        QTest::newRow("six days later") << Since(6 * 24h) << false << false;
        QTest::newRow("a week later") << Since(7 * 24h) << false << true;
        QTest::newRow("the clock was ahead") << Since(-1h) << false << true;
        QTest::newRow("after a crash") << Since(1h) << true << true;
    }
    void looksThroughTheStoreWhenThatIsDue()
    {
        QFETCH(std::optional<std::chrono::hours>, sinceLastTime);
        QFETCH(bool, wasLeftOpen);
        QFETCH(bool, isDue);
        Home home;
        Services services(home.container->mainContext(), home.clock);
        const auto lastTime = [&services] {
            return services.preferences.date(preferenceKeys::lastStoreCheckDate);
        };
        if (sinceLastTime)
            services.preferences.set(preferenceKeys::lastStoreCheckDate,
                                     home.clock.now() - *sinceLastTime);
        AppState state(services);
        state.checkStore(home.folder.path(), wasLeftOpen);
        QCOMPARE(home.clock.alarmCount(), std::size_t(isDue));
        home.clock.advance(10min);
        services.storeChecks.waitForDone();
        QTRY_COMPARE(lastTime() == home.clock.now(), isDue);

        QFile store(home.folder.filePath(u"strandloom.sqlite"_s));
        QVERIFY(store.open(QFile::ReadWrite) && store.resize(store.size() / 2));
        state.checkStore(home.folder.path(), true);
        home.clock.advance(10min);
        QTRY_VERIFY(state.isStoreDamaged());
        QVERIFY(lastTime() < home.clock.now()); // so it is looked through after the next start
    }
};

QTEST_MAIN(AppStateTest)
#include "AppStateTest.moc"
