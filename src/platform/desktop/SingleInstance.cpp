// SPDX-License-Identifier: MIT
#include "desktop/SingleInstance.h"

#include "DebugLog.h"
#include "desktop/ApplicationAdaptor.h"
#include "desktop/UnixSignal.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QLockFile>
#include <QStandardPaths>

#include <csignal>

using namespace Qt::StringLiterals;

namespace
{

const QString applicationInterface = u"org.freedesktop.Application"_s;

QVariantMap platformData()
{
    QVariantMap data;
    if (const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN"); !token.isEmpty())
        data.insert(u"activation-token"_s, token);
    if (const QString id = qEnvironmentVariable("DESKTOP_STARTUP_ID"); !id.isEmpty())
        data.insert(u"desktop-startup-id"_s, id);
    return data;
}

} // namespace

SingleInstance::SingleInstance(QObject *parent)
    : QObject(parent)
{
    auto *application = new ApplicationAdaptor(this);
    connect(application, &ApplicationAdaptor::activationRequested, this,
            &SingleInstance::activated);
}

SingleInstance::~SingleInstance()
{
    if (m_lockFile)
        return;
    auto bus = QDBusConnection::sessionBus();
    bus.unregisterService(serviceName);
    bus.unregisterObject(objectPath);
}

SingleInstance::Role SingleInstance::claim()
{
    return QDBusConnection::sessionBus().isConnected() ? claimOnBus() : claimLockFile();
}

SingleInstance::Role SingleInstance::claimOnBus()
{
    auto bus = QDBusConnection::sessionBus();
    bus.registerObject(objectPath, this, QDBusConnection::ExportAdaptors);
    const auto reply =
        bus.interface()->registerService(serviceName, QDBusConnectionInterface::DontQueueService,
                                         QDBusConnectionInterface::DontAllowReplacement);
    if (reply.value() == QDBusConnectionInterface::ServiceRegistered)
        return Role::first;

    auto activate = QDBusMessage::createMethodCall(serviceName, objectPath, applicationInterface,
                                                   u"Activate"_s);
    activate << platformData();
    const auto answer = bus.call(activate, QDBus::Block, 5000);
    if (answer.type() == QDBusMessage::ErrorMessage)
        debugLog(u"Failed to activate the running instance: " + answer.errorMessage());
    return Role::second;
}

SingleInstance::Role SingleInstance::claimLockFile()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    m_lockFile = std::make_unique<QLockFile>(folder + u"/strandloom.lock");
    m_lockFile->setStaleLockTime(0); // only a dead owner makes the lock stale
    if (m_lockFile->tryLock()) {
        m_activation = std::make_unique<UnixSignal>(SIGUSR1);
        connect(m_activation.get(), &UnixSignal::arrived, this, &SingleInstance::activated);
        return Role::first;
    }
    qint64 owner = 0;
    QString host, program;
    if (m_lockFile->getLockInfo(&owner, &host, &program))
        ::kill(pid_t(owner), SIGUSR1);
    return Role::second;
}
