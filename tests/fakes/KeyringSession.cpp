// SPDX-License-Identifier: MIT
#include "KeyringSession.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QFile>
#include <QTest>

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

Program::Variables KeyringSession::variables() const
{
    Program::Variables folders;
    for (const QString &name : {u"XDG_RUNTIME_DIR"_s, u"XDG_DATA_HOME"_s, u"XDG_CONFIG_HOME"_s,
                                u"XDG_CACHE_HOME"_s, u"HOME"_s})
        folders.insert(name, QFile::encodeName(m_folder.path()));
    return folders;
}

bool KeyringSession::startBus()
{
    m_bus.emplace("dbus-daemon",
                  QStringList{u"--nofork"_s, u"--nosyslog"_s, u"--print-address"_s,
                              u"--config-file="_s + m_folder.filePath(u"bus.conf"_s)},
                  variables());
    m_address = QString::fromLatin1(m_bus->nextLine());
    qputenv("DBUS_SESSION_BUS_ADDRESS", m_address.toLatin1());
    return QDBusConnection::connectToBus(m_address, busName).isConnected();
}

void KeyringSession::stopBus()
{
    QDBusConnection::disconnectFromBus(busName);
    m_bus.reset();
}

bool KeyringSession::startDaemon(const QStringList &options, const QByteArray &password)
{
    const QStringList arguments{u"--foreground"_s, u"--components=secrets"_s,
                                u"--control-directory="_s + m_folder.path()};
    m_daemon.emplace("gnome-keyring-daemon", arguments + options, variables());
    m_daemon->endInput(password);
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
    if (!m_daemon)
        return;
    m_daemon.reset();
    (void)QTest::qWaitFor([this] { return !isDaemonThere(); });
}
