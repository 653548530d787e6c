// SPDX-License-Identifier: MIT
#include "ApplicationAdaptor.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QScopeGuard>

using namespace Qt::StringLiterals;

namespace
{

constexpr auto tokenVariable = "XDG_ACTIVATION_TOKEN";
const QString tokenKey = u"activation-token"_s;
const QString startupIdKey = u"desktop-startup-id"_s;

} // namespace

void ApplicationAdaptor::Activate(const QVariantMap &platformData)
{
    request(ApplicationAction::open, platformData);
}

void ApplicationAdaptor::Open(const QStringList &, const QVariantMap &platformData)
{
    request(ApplicationAction::open, platformData);
}

void ApplicationAdaptor::ActivateAction(const QString &name, const QVariantList &,
                                        const QVariantMap &platformData, const QDBusMessage &call)
{
    if (const auto action = actionNamed(name))
        return request(*action, platformData);
    call.setDelayedReply(true);
    QDBusConnection::sessionBus().send(
        call.createErrorReply(QDBusError::InvalidArgs, u"There is no action \"%1\""_s.arg(name)));
}

/// Qt takes the token from the environment when it activates a window. It is good for one, and the
/// programs that are started from here must not inherit it.
void ApplicationAdaptor::request(ApplicationAction action, const QVariantMap &platformData)
{
    const auto forget = qScopeGuard([] { qunsetenv(tokenVariable); });
    const QVariant token = platformData.value(tokenKey, platformData.value(startupIdKey));
    qputenv(tokenVariable, token.toString().toUtf8());
    m_perform(action);
}

QVariantMap launchData()
{
    QVariantMap data;
    if (const QString token = qEnvironmentVariable(tokenVariable); !token.isEmpty())
        data.insert(tokenKey, token);
    if (const QString id = qEnvironmentVariable("DESKTOP_STARTUP_ID"); !id.isEmpty())
        data.insert(startupIdKey, id);
    return data;
}

#include "moc_ApplicationAdaptor.cpp"
