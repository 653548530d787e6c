// SPDX-License-Identifier: MIT
#include "TrayIcon.h"

#include "DebugLog.h"
#include "DrawnIcon.h"
#include "EmbeddingTray.h"
#include "StatusNotifierHost.h"

#include <QGuiApplication>
#include <QMenu>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace
{

/// Seen as well on black as on white: most trays do not tell what they are like.
const QColor middle(0x77, 0x77, 0x77);

/// For a tray that draws icons by their names, and follows its own theme in that. One that does not
/// know the name draws nothing, so it is told only where it is installed.
QIcon namedIcon(const QString &icon)
{
    const QString name = icon + u"-symbolic"_s;
    const QString installed = QStandardPaths::locate(
        QStandardPaths::GenericDataLocation, u"icons/hicolor/symbolic/apps/"_s + name + u".svg"_s);
    return drawnIcon(u":/icons/"_s + icon + u".svg"_s, {}, installed.isEmpty() ? QString() : name);
}

QIcon tintedIcon(const QString &icon, const QColor &color)
{
    return drawnIcon(u":/icons/"_s + icon + u"-symbolic.svg"_s, color);
}

} // namespace

TrayIcon::TrayIcon(TrayAppearance appearance, QMenu &menu, QObject *parent)
    : QObject(parent)
    , m_appearance(std::move(appearance))
    , m_menu(menu)
{
}

TrayIcon::~TrayIcon() = default;

void TrayIcon::setAppearance(const TrayAppearance &appearance)
{
    m_appearance = appearance;
    if (m_icon)
        paint();
}

void TrayIcon::show()
{
    m_host = std::make_unique<StatusNotifierHost>();
    connect(m_host.get(), &StatusNotifierHost::changed, this, &TrayIcon::follow);
    if (qGuiApp->nativeInterface<QNativeInterface::QX11Application>()) {
        m_embedding = std::make_unique<EmbeddingTray>();
        connect(m_embedding.get(), &EmbeddingTray::changed, this, [this] {
            if (m_kind == Kind::embedding)
                m_icon.reset(); // it went with its tray, even if there is another
            follow();
        });
    }
    follow();
}

bool TrayIcon::isPresent(Kind kind) const
{
    return kind == Kind::statusNotifier ? m_host->isPresent()
                                        : m_embedding && m_embedding->isPresent();
}

void TrayIcon::follow()
{
    if (!m_host->isKnown())
        return; // the newer kind is asked first, as Qt does
    if (!m_kind && isPresent(Kind::statusNotifier))
        m_kind = Kind::statusNotifier;
    else if (!m_kind && isPresent(Kind::embedding))
        m_kind = Kind::embedding;

    const bool hasTray = m_kind && isPresent(*m_kind);
    if (hasTray && !m_icon)
        place();
    else if (!hasTray)
        m_icon.reset();
}

void TrayIcon::place()
{
    m_icon = std::make_unique<QSystemTrayIcon>();
    paint();
    m_icon->setContextMenu(&m_menu);
    connect(m_icon.get(), &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason != QSystemTrayIcon::Context)
                    Q_EMIT activated();
            });
    m_icon->show();
    debugLog(u"Tray icon shown"_s);
}

void TrayIcon::paint()
{
    m_icon->setIcon(m_kind == Kind::embedding
                        ? tintedIcon(m_appearance.icon, m_embedding->foreground().value_or(middle))
                        : namedIcon(m_appearance.icon));
    m_icon->setToolTip(m_appearance.toolTip);
}

std::optional<QRect> TrayIcon::geometry() const
{
    const QRect place = m_icon ? m_icon->geometry() : QRect();
    return place.isEmpty() ? std::nullopt : std::optional(place);
}
