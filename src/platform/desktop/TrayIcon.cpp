// SPDX-License-Identifier: MIT
#include "desktop/TrayIcon.h"

#include "DebugLog.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QMenu>

#include <xcb/xcb.h>

using namespace Qt::StringLiterals;

namespace
{

const QString watcherService = u"org.kde.StatusNotifierWatcher"_s;
const QString watcherPath = u"/StatusNotifierWatcher"_s;

/// Whether an X11 tray of the older kind is there: somebody owns its selection.
bool hasEmbeddingTray()
{
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11 || !x11->connection())
        return false;
    const QByteArray name = "_NET_SYSTEM_TRAY_S0";
    xcb_connection_t *connection = x11->connection();
    const auto atomCookie = xcb_intern_atom(connection, 0, uint16_t(name.size()), name.constData());
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&free)> atom(
        xcb_intern_atom_reply(connection, atomCookie, nullptr), &free);
    if (!atom)
        return false;
    const auto ownerCookie = xcb_get_selection_owner(connection, atom->atom);
    const std::unique_ptr<xcb_get_selection_owner_reply_t, decltype(&free)> owner(
        xcb_get_selection_owner_reply(connection, ownerCookie, nullptr), &free);
    return owner && owner->owner != XCB_NONE;
}

} // namespace

TrayIcon::TrayIcon(const QIcon &icon, const QString &title, QMenu &menu, QObject *parent)
    : QObject(parent)
    , m_image(icon)
    , m_title(title)
    , m_menu(menu)
{
}

TrayIcon::~TrayIcon() = default;

void TrayIcon::show()
{
    auto bus = QDBusConnection::sessionBus();
    if (bus.isConnected()) {
        m_watcher = std::make_unique<QDBusServiceWatcher>(
            watcherService, bus, QDBusServiceWatcher::WatchForRegistration);
        connect(m_watcher.get(), &QDBusServiceWatcher::serviceRegistered, this,
                &TrayIcon::askForHost);
        bus.connect(watcherService, watcherPath, watcherService, u"StatusNotifierHostRegistered"_s,
                    this, SLOT(askForHost()));
    }
    if (bus.isConnected())
        askForHost();
    else if (hasEmbeddingTray())
        place();
}

std::optional<QRect> TrayIcon::geometry() const
{
    const QRect place = m_icon ? m_icon->geometry() : QRect();
    return place.isEmpty() ? std::nullopt : std::optional(place);
}

/// Qt decides once in the life of the process which kind of tray it uses. So it is asked only when
/// there is one: the D-Bus kind with a host, or else the X11 kind.
void TrayIcon::askForHost()
{
    if (m_icon)
        return;
    auto question = QDBusMessage::createMethodCall(watcherService, watcherPath,
                                                   u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    question << watcherService << u"IsStatusNotifierHostRegistered"_s;
    question.setAutoStartService(false);
    const auto pending = QDBusConnection::sessionBus().asyncCall(question);
    auto *answer = new QDBusPendingCallWatcher(pending, this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        const bool hasHost = reply.isValid() && reply.value().variant().toBool();
        if (!m_icon && (hasHost || hasEmbeddingTray()))
            place();
    });
}

void TrayIcon::place()
{
    m_icon = std::make_unique<QSystemTrayIcon>(m_image);
    m_icon->setToolTip(m_title);
    m_icon->setContextMenu(&m_menu);
    connect(m_icon.get(), &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason != QSystemTrayIcon::Context)
                    Q_EMIT activated();
            });
    m_icon->show();
    debugLog(u"Tray icon shown"_s);
}
