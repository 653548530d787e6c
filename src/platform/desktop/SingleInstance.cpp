// SPDX-License-Identifier: MIT
#include "SingleInstance.h"

#include "ApplicationAdaptor.h"
#include "DebugLog.h"
#include "UnixSignal.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QFile>
#include <QLockFile>
#include <QStandardPaths>
#include <QThread>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

const QString applicationInterface = u"org.freedesktop.Application"_s;

/// How long the running instance may take to answer, and to end.
constexpr auto patience = 5s;

QString lockPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + u"/strandloom.lock";
}

/// Real-time signals, which by default nobody else sends.
int signalFor(ApplicationAction action)
{
    return SIGRTMIN + int(action);
}

QString programOf(qint64 process)
{
    const QString file = QFile::symLinkTarget(u"/proc/%1/exe"_s.arg(process)).section(u'/', -1);
    return file.endsWith(u" (deleted)") ? file.section(u' ', 0, -2) : file; // replaced by an update
}

/// Whose lock file it is; absent when nobody holds it. The number in a file that was left behind
/// may have become another program's.
std::optional<pid_t> lockOwner(const QLockFile &file)
{
    qint64 owner = 0;
    QString host, program;
    if (!file.getLockInfo(&owner, &host, &program) || programOf(owner) != program)
        return std::nullopt;
    return pid_t(owner);
}

bool isRunningOnBus()
{
    const auto bus = QDBusConnection::sessionBus();
    return bus.interface()->isServiceRegistered(SingleInstance::serviceName).value();
}

Expected<void, QString> tellOnBus(ApplicationAction action, const QVariantMap &launchData)
{
    const bool opens = action == ApplicationAction::open;
    auto call = QDBusMessage::createMethodCall(SingleInstance::serviceName,
                                               SingleInstance::objectPath, applicationInterface,
                                               opens ? u"Activate"_s : u"ActivateAction"_s);
    call.setAutoStartService(false);
    if (!opens)
        call << QString(nameOf(action)) << QVariantList();
    call << launchData;
    const auto answer = QDBusConnection::sessionBus().call(
        call, QDBus::Block, int(std::chrono::milliseconds(patience).count()));
    if (answer.type() == QDBusMessage::ErrorMessage)
        return Unexpected{QString(u"the program does not answer: "_s + answer.errorMessage())};
    return {};
}

/// A start right after must not take one that is about to end for the program.
template <typename IsRunning>
Expected<void, QString> waitForEnd(IsRunning isRunning)
{
    for (const QDeadlineTimer limit(patience); isRunning(); QThread::msleep(10)) {
        if (limit.hasExpired())
            return Unexpected{QString(u"the program does not end"_s)};
    }
    return {};
}

} // namespace

SingleInstance::SingleInstance(QObject *parent)
    : QObject(parent)
{
    new ApplicationAdaptor(this, [this](ApplicationAction action) { Q_EMIT requested(action); });
}

SingleInstance::~SingleInstance()
{
    if (m_lockFile)
        return;
    auto bus = QDBusConnection::sessionBus();
    bus.unregisterService(serviceName);
    bus.unregisterObject(objectPath);
}

SingleInstance::Role SingleInstance::claim(ApplicationAction action, const QVariantMap &launchData)
{
    return QDBusConnection::sessionBus().isConnected() ? claimOnBus(action, launchData)
                                                       : claimLockFile(action);
}

SingleInstance::Role SingleInstance::claimOnBus(ApplicationAction action,
                                                const QVariantMap &launchData)
{
    auto bus = QDBusConnection::sessionBus();
    bus.registerObject(objectPath, this, QDBusConnection::ExportAdaptors);
    const auto reply =
        bus.interface()->registerService(serviceName, QDBusConnectionInterface::DontQueueService,
                                         QDBusConnectionInterface::DontAllowReplacement);
    if (reply.value() == QDBusConnectionInterface::ServiceRegistered)
        return Role::first;
    if (const auto told = tellOnBus(action, launchData); !told)
        debugLog(u"Failed to activate the running instance: "_s + told.error());
    return Role::second;
}

SingleInstance::Role SingleInstance::claimLockFile(ApplicationAction action)
{
    // Whoever finds the file locked calls its owner at once, which would end one that cannot hear.
    for (const ApplicationAction call : applicationActions) {
        auto &signal = m_calls.emplace_back(std::make_unique<UnixSignal>(signalFor(call)));
        connect(signal.get(), &UnixSignal::arrived, this, [this, call] { Q_EMIT requested(call); });
    }
    m_lockFile = std::make_unique<QLockFile>(lockPath());
    m_lockFile->setStaleLockTime(0); // only a dead owner makes the lock stale
    if (m_lockFile->tryLock())
        return Role::first;
    if (const auto owner = lockOwner(*m_lockFile))
        ::kill(*owner, signalFor(action));
    return Role::second;
}

Expected<void, QString> SingleInstance::tell(ApplicationAction action)
{
    const QLockFile file(lockPath());
    const bool hasBus = QDBusConnection::sessionBus().isConnected();
    const auto isRunning = [&] { return hasBus ? isRunningOnBus() : lockOwner(file).has_value(); };
    if (!isRunning())
        return Unexpected{QString(u"the program is not running"_s)};
    if (hasBus) {
        if (auto told = tellOnBus(action, {}); !told)
            return told;
    } else if (const auto owner = lockOwner(file)) {
        ::kill(*owner, signalFor(action));
    }
    return action == ApplicationAction::quit ? waitForEnd(isRunning) : Expected<void, QString>();
}
