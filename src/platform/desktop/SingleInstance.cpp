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
#include <QStandardPaths>
#include <QThread>

#include <cerrno>
#include <csignal>
#include <dlfcn.h>
#include <fcntl.h>
#include <limits>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

const QString applicationInterface = u"org.freedesktop.Application"_s;

/// How long the running instance may take to answer, and to end.
constexpr auto patience = 5s;

QByteArray lockPath()
{
    return QFile::encodeName(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation)
                             + u"/strandloom.lock");
}

struct flock wholeFile()
{
    struct flock place = {};
    place.l_type = F_WRLCK;
    place.l_whence = SEEK_SET;
    return place;
}

/// Real-time signals, which by default nobody else sends.
int signalFor(ApplicationAction action)
{
    return SIGRTMIN + int(action);
}

/// Who holds the lock, in the kernel's word: a file that was left behind names nobody.
std::optional<pid_t> lockOwner()
{
    const int file = open(lockPath().constData(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return std::nullopt;
    struct flock place = wholeFile();
    const bool isHeld = fcntl(file, F_GETLK, &place) == 0 && place.l_type != F_UNLCK;
    close(file);
    return isHeld ? std::optional(place.l_pid) : std::nullopt;
}

bool isRunningOnBus()
{
    const auto bus = QDBusConnection::sessionBus();
    return bus.interface()->isServiceRegistered(SingleInstance::serviceName).value();
}

/// Qt cannot take up reading again that libdbus has interrupted because of more than 63 MiB of
/// messages: one such message from anybody, and nobody could reach the program any more.
void neverInterruptReading()
{
    using SetLimit = void (*)(void *connection, long bytes);
    const auto setLimit =
        reinterpret_cast<SetLimit>(dlsym(RTLD_DEFAULT, "dbus_connection_set_max_received_size"));
    if (setLimit)
        setLimit(QDBusConnection::sessionBus().internalPointer(), std::numeric_limits<long>::max());
    else
        debugLog(u"The limit of libdbus stays as it is"_s);
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

Expected<void, QString> tellBySignal(pid_t owner, ApplicationAction action)
{
    if (owner > 0 && ::kill(owner, signalFor(action)) == 0)
        return {};
    return Unexpected{QString(u"the running program cannot be reached"_s)};
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
    if (m_lockFile >= 0) {
        close(m_lockFile); // while the signals of those who find it locked are still heard
        return;
    }
    auto bus = QDBusConnection::sessionBus();
    bus.unregisterService(serviceName);
    bus.unregisterObject(objectPath);
}

SingleInstance::Claim SingleInstance::claim(ApplicationAction action, const QVariantMap &launchData)
{
    return QDBusConnection::sessionBus().isConnected() ? claimOnBus(action, launchData)
                                                       : claimLockFile(action);
}

SingleInstance::Claim SingleInstance::claimOnBus(ApplicationAction action,
                                                 const QVariantMap &launchData)
{
    neverInterruptReading();
    auto bus = QDBusConnection::sessionBus();
    bus.registerObject(objectPath, this, QDBusConnection::ExportAdaptors);
    while (true) {
        const auto reply = bus.interface()->registerService(
            serviceName, QDBusConnectionInterface::DontQueueService,
            QDBusConnectionInterface::DontAllowReplacement);
        if (!reply.isValid())
            return Unexpected{reply.error().message()};
        if (reply.value() == QDBusConnectionInterface::ServiceRegistered)
            return Role::first;
        const auto told = tellOnBus(action, launchData);
        if (told)
            return Role::second;
        if (isRunningOnBus())
            return Unexpected{told.error()};
        // It was about to end: this is the program now.
    }
}

SingleInstance::Claim SingleInstance::claimLockFile(ApplicationAction action)
{
    // Whoever finds the file locked calls its owner at once, which would end one that cannot hear.
    for (const ApplicationAction call : applicationActions) {
        auto &signal = m_calls.emplace_back(std::make_unique<UnixSignal>(signalFor(call)));
        connect(signal.get(), &UnixSignal::arrived, this, [this, call] { Q_EMIT requested(call); });
    }
    const QByteArray path = lockPath();
    m_lockFile = open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    const auto cannotLock = [&path] {
        const QString reason = qt_error_string();
        return Unexpected{QString(QFile::decodeName(path) + u": " + reason)};
    };
    if (m_lockFile < 0)
        return cannotLock();
    struct flock place = wholeFile();
    while (fcntl(m_lockFile, F_SETLK, &place) != 0) {
        if (errno != EACCES && errno != EAGAIN)
            return cannotLock();
        const auto owner = lockOwner();
        if (!owner)
            continue; // it has just ended
        const auto told = tellBySignal(*owner, action);
        return told ? Claim(Role::second) : Unexpected{told.error()};
    }
    return Role::first;
}

Expected<void, QString> SingleInstance::tell(ApplicationAction action)
{
    const bool hasBus = QDBusConnection::sessionBus().isConnected();
    const auto isRunning = [&] { return hasBus ? isRunningOnBus() : lockOwner().has_value(); };
    if (!isRunning())
        return Unexpected{QString(u"the program is not running"_s)};
    const auto told =
        hasBus ? tellOnBus(action, {}) : tellBySignal(lockOwner().value_or(0), action);
    if (!told)
        return told;
    return action == ApplicationAction::quit ? waitForEnd(isRunning) : Expected<void, QString>();
}

#include "moc_SingleInstance.cpp"
