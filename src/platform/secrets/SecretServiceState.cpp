// SPDX-License-Identifier: MIT
#include "SecretServiceState.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVariant>

using namespace Qt::StringLiterals;

namespace
{

QDBusMessage ask(const QString &path, const QString &interface, const QString &method,
                 const QVariantList &arguments)
{
    auto question =
        QDBusMessage::createMethodCall(u"org.freedesktop.secrets"_s, path, interface, method);
    question.setArguments(arguments);
    return QDBusConnection::sessionBus().call(question);
}

} // namespace

SecretServiceState secretServiceState()
{
    const QString service = u"org.freedesktop.Secret.Service"_s;
    const QDBusReply<QDBusObjectPath> keyring =
        ask(u"/org/freedesktop/secrets"_s, service, u"ReadAlias"_s, {u"default"_s});
    if (!keyring.isValid())
        return SecretServiceState::absent;
    if (keyring.value().path() == u"/")
        return SecretServiceState::unlocked; // the first secret makes a keyring
    const QDBusReply<QDBusVariant> isLocked =
        ask(keyring.value().path(), u"org.freedesktop.DBus.Properties"_s, u"Get"_s,
            {u"org.freedesktop.Secret.Collection"_s, u"Locked"_s});
    return isLocked.isValid() && !isLocked.value().variant().toBool() ? SecretServiceState::unlocked
                                                                      : SecretServiceState::locked;
}
