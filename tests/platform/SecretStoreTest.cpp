// SPDX-License-Identifier: MIT
#include "FakeSecretStore.h"
#include "Heartbeat.h"
#include "KeyringSession.h"
#include "Rows.h"
#include "SecretServiceStore.h"
#include "Waiting.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDateTime>
#include <QDirIterator>
#include <QTest>
#include <QTimer>

#undef signals // a name in GIO
#include <libsecret/secret.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

const QString serviceName = u"app.strandloom.test"_s;
const QStringList accounts = {u"key"_s, u"address"_s, u"never there"_s};
const QList<Secret> two = {{u"key"_s, "re_canary\xC3\xA4 1"}, {u"address"_s, "me@example.com"}};
const SecretStore::Secrets bothLocked = {{u"key"_s, std::nullopt}, {u"address"_s, std::nullopt}};

SecretStore::Secrets contents(const QList<Secret> &secrets)
{
    SecretStore::Secrets contents;
    for (const Secret &secret : secrets)
        contents.insert(secret.account, secret.value);
    return contents;
}

} // namespace

/// Where the daemon asks the user: one who always says no.
class Prompter : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.keyring.internal.Prompter")
public:
    explicit Prompter(const QString &address)
        : m_bus(QDBusConnection::connectToBus(address, u"prompter"_s))
    {
        m_bus.registerObject(u"/org/gnome/keyring/Prompter"_s, this,
                             QDBusConnection::ExportAllSlots);
        m_bus.registerService(u"org.gnome.keyring.SystemPrompter"_s);
    }
    ~Prompter() override { QDBusConnection::disconnectFromBus(u"prompter"_s); }

    int prompts = 0;

public Q_SLOTS:
    void BeginPrompting(const QDBusObjectPath &callback)
    {
        ++prompts;
        tell(callback, u"PromptReady"_s, {QString(), QVariantMap(), QString()});
    }
    void PerformPrompt(const QDBusObjectPath &callback, const QString &, const QVariantMap &,
                       const QString &)
    {
        tell(callback, u"PromptReady"_s, {u"no"_s, QVariantMap(), QString()});
    }
    void StopPrompting(const QDBusObjectPath &callback) { tell(callback, u"PromptDone"_s, {}); }

private:
    void tell(const QDBusObjectPath &callback, const QString &what, const QVariantList &arguments)
    {
        auto call =
            QDBusMessage::createMethodCall(message().service(), callback.path(),
                                           u"org.gnome.keyring.internal.Prompter.Callback"_s, what);
        call.setArguments(arguments);
        QTimer::singleShot(0, this, [this, call] { m_bus.send(call); }); // after our own reply
    }

    QDBusConnection m_bus;
};

class SecretStoreTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void keepsReplacesAndRemoves()
    {
        const Rows<bool> rows{{"keyring daemon", true}, {"fake", false}};
        for (const auto &[isReal] : rows) {
            KeyringSession session;
            QVERIFY(!isReal || (session.startBus() && session.startUnlocked()));
            SecretServiceStore real(serviceName);
            FakeSecretStore fake;
            SecretStore &store = isReal ? static_cast<SecretStore &>(real) : fake;

            QCOMPARE(read(store), SecretStore::Secrets());
            QVERIFY(!isReal || addItem(SECRET_COLLECTION_DEFAULT, two.first()));
            QVERIFY(*waitFor(store.write(two)));
            QCOMPARE(read(store), contents(two));
            const auto found = waitFor(store.find({u"key"_s, u"none"_s}));
            QVERIFY(found && *found && **found == (SecretStore::Secrets{{u"key"_s, QByteArray()}}));
            const QList<Secret> others = {{u"key"_s, "other"}, {u"address"_s, ""}};
            QVERIFY(*waitFor(store.write(others)));
            QCOMPARE(read(store), contents(others));
            if (isReal)
                QCOMPARE(itemCount(session.address()), 2);
            QVERIFY(*waitFor(store.removeAll()));
            QCOMPARE(read(store), SecretStore::Secrets());
            QVERIFY(*waitFor(store.removeAll()));
        }
    }

    void readsTheNewestOfSeveralKeyrings()
    {
        KeyringSession session;
        QVERIFY(session.startBus() && session.startUnlocked());
        SecretServiceStore store(serviceName);
        for (const char *const keyring :
             {SECRET_COLLECTION_SESSION, SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_SESSION}) {
            const Secret secret = {u"key"_s,
                                   QByteArray::number(QDateTime::currentSecsSinceEpoch())};
            QVERIFY(addItem(keyring, secret));
            QCOMPARE(read(store), contents({secret}));
            QTRY_VERIFY(QByteArray::number(QDateTime::currentSecsSinceEpoch()) > secret.value);
        }
    }

    void outlivesTheDaemonAndItsBus()
    {
        KeyringSession session;
        QVERIFY(session.startBus() && session.startUnlocked());
        SecretServiceStore store(serviceName);
        QVERIFY(*waitFor(store.write(two)));
        session.killDaemon();
        QVERIFY(fault(store) == SecretFault::unavailable);
        QVERIFY(session.startUnlocked());
        QCOMPARE(read(store), contents(two));

        session.killDaemon();
        session.stopBus();
        QVERIFY(fault(store) == SecretFault::unavailable);
        QVERIFY(session.startBus() && session.startUnlocked());
        QCOMPARE(read(store), contents(two));
    }

    void neverPromptsUnlessAllowed()
    {
        const Rows<bool> rows{{"dismissed by the user", true}, {"nobody to ask", false}};
        for (const auto &[hasPrompter] : rows) {
            KeyringSession session;
            QVERIFY(session.startBus() && session.startUnlocked());
            SecretServiceStore store(serviceName);
            QVERIFY(*waitFor(store.write(two)));
            session.killDaemon();
            QVERIFY(session.startLocked());
            const auto prompter =
                hasPrompter ? std::make_unique<Prompter>(session.address()) : nullptr;
            const auto prompts = [&] { return prompter ? prompter->prompts : 0; };

            QCOMPARE(read(store), bothLocked);
            const auto found = waitFor(store.find({u"key"_s}));
            QVERIFY(found && *found && **found == (SecretStore::Secrets{{u"key"_s, std::nullopt}}));
            QCOMPARE(prompts(), 0);
            QCOMPARE(read(store, UnlockPrompt::allowed), bothLocked);
            QCOMPARE(prompts(), hasPrompter ? 1 : 0); // one for both items
            const auto written = waitFor(store.write(two));
            QVERIFY(written && !*written && written->error() == SecretFault::locked);
            const auto removed = waitFor(store.removeAll());
            QVERIFY(removed && !*removed && removed->error() == SecretFault::locked);

            session.killDaemon();
            QVERIFY(session.startUnlocked());
            QCOMPARE(read(store), contents(two)); // nothing is lost
        }
    }

    void givesUpOnADaemonThatHangs()
    {
        KeyringSession session;
        QVERIFY(session.startBus() && session.startUnlocked());
        SecretServiceStore store(serviceName);
        QVERIFY(*waitFor(store.write(two)));
        session.freezeDaemon();
        const Heartbeat heartbeat;
        QElapsedTimer timer;
        timer.start();
        QVERIFY(fault(store) == SecretFault::timedOut);
        QVERIFY(timer.elapsed() < 8'000);
        QVERIFY(heartbeat.longestHold() < 50ms);
        session.thawDaemon();
        QCOMPARE(read(store), contents(two));
    }

    void endsWhileTheDaemonHangs()
    {
        KeyringSession session;
        QVERIFY(session.startBus() && session.startUnlocked());
        auto store = std::make_unique<SecretServiceStore>(serviceName);
        session.freezeDaemon();
        Scope waiter;
        waiter.start(drop(store->read(accounts, UnlockPrompt::never)));
        QElapsedTimer timer;
        timer.start();
        store.reset();
        QVERIFY(timer.elapsed() < 1'000);
        session.thawDaemon();
    }

    void hasNoServiceToTalkTo()
    {
        const Rows<bool> rows{{"no bus", false}, {"no secret service", true}};
        for (const auto &[hasBus] : rows) {
            KeyringSession session;
            QVERIFY(!hasBus || session.startBus());
            SecretServiceStore store(serviceName);
            QVERIFY(fault(store) == SecretFault::unavailable);
            const auto written = waitFor(store.write(two));
            QVERIFY(written && !*written && written->error() == SecretFault::unavailable);
            const auto removed = waitFor(store.removeAll());
            QVERIFY(removed && !*removed && removed->error() == SecretFault::unavailable);
            for (QDirIterator it(session.folder(), QDir::Files, QDirIterator::Subdirectories);
                 it.hasNext();) {
                QFile file(it.next());
                QVERIFY(file.open(QIODevice::ReadOnly));
                QVERIFY2(!file.readAll().contains("re_canary"), qPrintable(file.fileName()));
            }
        }
    }

private:
    static SecretStore::Secrets read(SecretStore &store, UnlockPrompt prompt = UnlockPrompt::never)
    {
        const auto secrets = waitFor(store.read(accounts, prompt));
        return secrets && *secrets ? **secrets : SecretStore::Secrets{{u"failed"_s, std::nullopt}};
    }
    static std::optional<SecretFault> fault(SecretStore &store)
    {
        const auto secrets = waitFor(store.read(accounts, UnlockPrompt::never));
        return secrets && !*secrets ? std::optional(secrets->error()) : std::nullopt;
    }
    static Task<> drop(Task<SecretStore::ReadResult> reading)
    {
        const auto secrets = co_await reading;
        Q_UNUSED(secrets)
    }
    /// As another program does.
    static bool addItem(const char *keyring, const Secret &secret)
    {
        SecretSchema schema = {};
        schema.name = "another.Schema";
        schema.attributes[0] = {"service", SECRET_SCHEMA_ATTRIBUTE_STRING};
        schema.attributes[1] = {"account", SECRET_SCHEMA_ATTRIBUTE_STRING};
        const bool isStored =
            secret_password_store_sync(&schema, keyring, "label", secret.value.constData(), nullptr,
                                       nullptr, "service", serviceName.toUtf8().constData(),
                                       "account", secret.account.toUtf8().constData(), nullptr);
        secret_service_disconnect(); // else it would be remembered beyond its session
        return isStored;
    }
    static int itemCount(const QString &address)
    {
        auto search = QDBusMessage::createMethodCall(
            u"org.freedesktop.secrets"_s, u"/org/freedesktop/secrets"_s,
            u"org.freedesktop.Secret.Service"_s, u"SearchItems"_s);
        QMap<QString, QString> attributes = {{u"service"_s, serviceName}};
        qDBusRegisterMetaType<QMap<QString, QString>>();
        search.setArguments({QVariant::fromValue(attributes)});
        const auto reply = QDBusConnection::connectToBus(address, u"counter"_s).call(search);
        QDBusConnection::disconnectFromBus(u"counter"_s);
        return int(qdbus_cast<QList<QDBusObjectPath>>(reply.arguments().value(0)).size());
    }
};

QTEST_GUILESS_MAIN(SecretStoreTest)
#include "SecretStoreTest.moc"
