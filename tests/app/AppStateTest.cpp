// SPDX-License-Identifier: MIT
#include "AppState.h"

#include "DiagnosticLines.h"
#include "ModelContainer.h"
#include "Services.h"
#include "SystemClock.h"
#include "Waiting.h"

#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class AppStateTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void startsOnceAndInItsOrder()
    {
        const QTemporaryDir folder;
        for (const char *const name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "STRANDLOOM_INFO"})
            qputenv(name, folder.path().toUtf8());
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
        SystemClock clock;
        auto container = ModelContainer::open(folder.path(), clock);
        QVERIFY(container);
        ModelContext &context = (*container)->mainContext();
        context.insert({QUuid::createUuid(), u"https://old.example"_s, {}, {}, clock.now() - 960h});
        Services services(context, clock);
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
    }
};

QTEST_MAIN(AppStateTest)
#include "AppStateTest.moc"
