// SPDX-License-Identifier: MIT
#include "StatusNotifierHost.h"

#include "DebugLog.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

using namespace Qt::StringLiterals;

namespace
{

const QString service = u"org.kde.StatusNotifierWatcher"_s;
const QString path = u"/StatusNotifierWatcher"_s;
constexpr int answerLimit = 2'000; // ms

QDBusMessage question()
{
    auto message = QDBusMessage::createMethodCall(service, path,
                                                  u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    message << service << u"IsStatusNotifierHostRegistered"_s;
    message.setAutoStartService(false);
    return message;
}

bool isYes(const QDBusReply<QDBusVariant> &answer)
{
    return answer.isValid() && answer.value().variant().toBool();
}

} // namespace

StatusNotifierHost::StatusNotifierHost(QObject *parent)
    : QObject(parent)
{
    auto bus = QDBusConnection::sessionBus();
    m_isKnown = !bus.isConnected();
    if (m_isKnown)
        return;
    auto *watch =
        new QDBusServiceWatcher(service, bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watch, &QDBusServiceWatcher::serviceOwnerChanged, this,
            &StatusNotifierHost::watcherChanged);
    for (const auto &signal :
         {u"StatusNotifierHostRegistered"_s, u"StatusNotifierHostUnregistered"_s}) {
        if (!bus.connect(service, path, service, signal, this, SLOT(ask())))
            debugLog(u"Failed to listen to the tray: "_s + signal);
    }
    ask();
}

void StatusNotifierHost::ask()
{
    delete m_question;
    m_question = new QDBusPendingCallWatcher(
        QDBusConnection::sessionBus().asyncCall(question(), answerLimit), this);
    connect(m_question, &QDBusPendingCallWatcher::finished, this, [this] {
        m_question->deleteLater();
        set(isYes(std::exchange(m_question, nullptr)->reply()));
    });
}

void StatusNotifierHost::watcherChanged(const QString &, const QString &before, const QString &now)
{
    if (!before.isEmpty())
        set(false); // its hosts are to be shown anew
    if (!now.isEmpty())
        ask();
}

void StatusNotifierHost::set(bool isPresent)
{
    const bool isNews = !m_isKnown || isPresent != m_isPresent;
    m_isKnown = true;
    m_isPresent = isPresent;
    if (isNews)
        Q_EMIT changed();
}

bool hasStatusNotifierHost()
{
    return isYes(QDBusConnection::sessionBus().call(question(), QDBus::Block, answerLimit));
}
