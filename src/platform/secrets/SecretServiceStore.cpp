// SPDX-License-Identifier: MIT
#include "SecretServiceStore.h"

#include "DebugLog.h"
#include "SecretsModule.h"
#include "Utf8.h"
#include "async/OnPool.h"

#include <QDBusConnection>

#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

Expected<const SecretsModule *, SecretFault> secretsModule()
{
    const auto module = loadModule<SecretsModule>();
    if (module)
        return *module;
    debugLog(u"The keyring is not available: " + readUtf8(module.error()));
    return Unexpected{SecretFault::notLoaded};
}

} // namespace

SecretServiceStore::SecretServiceStore(const QString &serviceName)
    : m_serviceName(serviceName.toUtf8())
    , m_thread(std::make_unique<QThreadPool>())
{
    m_thread->setMaxThreadCount(1);
    watch();
}

SecretServiceStore::~SecretServiceStore()
{
    m_thread->clear();
    if (!m_thread->waitForDone(int(std::chrono::milliseconds(100ms).count())))
        (void)m_thread.release(); // a prompt may be up for hours: it ends with the process
}

/// Without a bus there is nothing to watch.
void SecretServiceStore::watch()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.connect({}, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s, u"NameOwnerChanged"_s,
                {u"org.freedesktop.secrets"_s}, {}, this,
                SLOT(noteOwner(QString, QString, QString)));
    // Whatever happens to a keyring is told as one of this interface's signals.
    bus.connect({}, {}, u"org.freedesktop.Secret.Service"_s, {}, this, SIGNAL(changed()));
}

void SecretServiceStore::noteOwner(const QString &, const QString &, const QString &now)
{
    if (!now.isEmpty())
        Q_EMIT changed();
}

Task<SecretStore::ReadResult> SecretServiceStore::read(QStringList accounts, UnlockPrompt prompt)
{
    OnPool<ReadResult> job(*m_thread, [name = m_serviceName, accounts, prompt]() -> ReadResult {
        const auto module = secretsModule();
        if (!module)
            return Unexpected{module.error()};
        return (*module)->read(name, accounts, prompt, SecretPart::value);
    });
    ReadResult secrets = co_await job;
    co_return secrets;
}

Task<SecretStore::ReadResult> SecretServiceStore::find(QStringList accounts)
{
    OnPool<ReadResult> job(*m_thread, [name = m_serviceName, accounts]() -> ReadResult {
        const auto module = secretsModule();
        if (!module)
            return Unexpected{module.error()};
        return (*module)->read(name, accounts, UnlockPrompt::never, SecretPart::presence);
    });
    ReadResult secrets = co_await job;
    co_return secrets;
}

Task<SecretStore::Result> SecretServiceStore::write(QList<Secret> secrets)
{
    OnPool<Result> job(*m_thread, [name = m_serviceName, secrets]() -> Result {
        const auto module = secretsModule();
        return module ? (*module)->write(name, secrets) : Unexpected{module.error()};
    });
    const Result written = co_await job;
    co_return written;
}

Task<SecretStore::Result> SecretServiceStore::removeAll()
{
    OnPool<Result> job(*m_thread, [name = m_serviceName]() -> Result {
        const auto module = secretsModule();
        return module ? (*module)->removeAll(name) : Unexpected{module.error()};
    });
    const Result removed = co_await job;
    co_return removed;
}
