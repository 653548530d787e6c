// SPDX-License-Identifier: MIT
#include "KeyringSession.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDir>
#include <QFile>
#include <QTest>

#include <csignal>
#include <sys/prctl.h>

using namespace Qt::StringLiterals;

namespace
{

const QString busName = u"keyring-session"_s;

// A bus that starts no services by itself.
constexpr auto busConfiguration = R"(<busconfig>
<type>session</type><listen>unix:dir=%1</listen><auth>EXTERNAL</auth>
<policy context="default">
<allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/>
</policy>
</busconfig>)";

void prepare(QProcess &process, const QString &folder)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString &name : {u"XDG_RUNTIME_DIR"_s, u"XDG_DATA_HOME"_s, u"XDG_CONFIG_HOME"_s,
                                u"XDG_CACHE_HOME"_s, u"HOME"_s})
        environment.insert(name, folder);
    process.setProcessEnvironment(environment);
    process.setStandardErrorFile(folder + u"/errors.log");
    process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
}

void stop(QProcess &process)
{
    if (process.state() == QProcess::NotRunning)
        return;
    process.kill();
    process.waitForFinished();
}

} // namespace

KeyringSession::KeyringSession()
{
    QFile file(m_folder.filePath(u"bus.conf"_s));
    if (file.open(QIODevice::WriteOnly))
        file.write(QString::fromLatin1(busConfiguration).arg(m_folder.path()).toUtf8());
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
}

KeyringSession::~KeyringSession()
{
    killDaemon();
    stopBus();
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
}

bool KeyringSession::startBus()
{
    prepare(m_bus, m_folder.path());
    m_bus.start(u"dbus-daemon"_s,
                {u"--nofork"_s, u"--nosyslog"_s, u"--print-address"_s,
                 u"--config-file="_s + m_folder.filePath(u"bus.conf"_s)});
    if (!m_bus.waitForReadyRead(10'000))
        return false;
    m_address = QString::fromLatin1(m_bus.readLine().trimmed());
    qputenv("DBUS_SESSION_BUS_ADDRESS", m_address.toLatin1());
    return QDBusConnection::connectToBus(m_address, busName).isConnected();
}

void KeyringSession::stopBus()
{
    QDBusConnection::disconnectFromBus(busName);
    stop(m_bus);
}

bool KeyringSession::startDaemon(const QList<QByteArray> &options, const QByteArray &password)
{
    QStringList arguments = {u"--foreground"_s, u"--components=secrets"_s,
                             u"--control-directory="_s + m_folder.path()};
    for (const QByteArray &option : options)
        arguments.append(QString::fromLatin1(option));
    prepare(m_daemon, m_folder.path());
    m_daemon.setStandardOutputFile(QProcess::nullDevice());
    m_daemon.start(u"gnome-keyring-daemon"_s, arguments);
    m_daemon.write(password);
    m_daemon.closeWriteChannel();
    return QTest::qWaitFor([this] { return isDaemonThere(); }, 10'000);
}

bool KeyringSession::isDaemonThere() const
{
    return QDBusConnection(busName).interface()->isServiceRegistered(u"org.freedesktop.secrets"_s);
}

bool KeyringSession::unlock()
{
    const auto call = [](const QString &interface, const QString &method,
                         const QVariantList &arguments) {
        auto message = QDBusMessage::createMethodCall(
            u"org.freedesktop.secrets"_s, u"/org/freedesktop/secrets"_s, interface, method);
        message.setArguments(arguments);
        return QDBusConnection(busName).call(message);
    };
    const QDBusMessage session = call(u"org.freedesktop.Secret.Service"_s, u"OpenSession"_s,
                                      {u"plain"_s, QVariant::fromValue(QDBusVariant(QString()))});
    QDBusArgument password;
    password.beginStructure();
    password << session.arguments().value(1).value<QDBusObjectPath>() << QByteArray()
             << QByteArray("password") << u"text/plain"_s;
    password.endStructure();
    const QDBusObjectPath keyring(u"/org/freedesktop/secrets/collection/login"_s);
    const QDBusMessage answer = call(u"org.gnome.keyring.InternalUnsupportedGuiltRiddenInterface"_s,
                                     u"UnlockWithMasterPassword"_s,
                                     {QVariant::fromValue(keyring), QVariant::fromValue(password)});
    return answer.type() == QDBusMessage::ReplyMessage;
}

void KeyringSession::killDaemon()
{
    if (m_daemon.state() == QProcess::NotRunning)
        return;
    stop(m_daemon);
    (void)QTest::qWaitFor([this] { return !isDaemonThere(); });
}

void KeyringSession::freezeDaemon()
{
    ::kill(pid_t(m_daemon.processId()), SIGSTOP);
}

void KeyringSession::thawDaemon()
{
    ::kill(pid_t(m_daemon.processId()), SIGCONT);
}
