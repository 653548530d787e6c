// SPDX-License-Identifier: MIT
#include "desktop/StatusNotifierHost.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

using namespace Qt::StringLiterals;

namespace
{

const QString service = u"org.kde.StatusNotifierWatcher"_s;
const QString path = u"/StatusNotifierWatcher"_s;
constexpr int answerLimit = 2'000; // ms

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
         {u"StatusNotifierHostRegistered"_s, u"StatusNotifierHostUnregistered"_s})
        bus.connect(service, path, service, signal, this, SLOT(ask()));
    ask();
}

void StatusNotifierHost::ask()
{
    auto question = QDBusMessage::createMethodCall(service, path,
                                                   u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    question << service << u"IsStatusNotifierHostRegistered"_s;
    question.setAutoStartService(false);
    delete m_question;
    m_question = new QDBusPendingCallWatcher(
        QDBusConnection::sessionBus().asyncCall(question, answerLimit), this);
    connect(m_question, &QDBusPendingCallWatcher::finished, this, [this] {
        const QDBusPendingReply<QDBusVariant> reply = *m_question;
        m_question->deleteLater();
        m_question = nullptr;
        set(reply.isValid() && reply.value().variant().toBool());
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
