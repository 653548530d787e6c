// SPDX-License-Identifier: MIT
#pragma once

#include <QIcon>
#include <QObject>
#include <QRect>
#include <QSystemTrayIcon>

#include <memory>
#include <optional>

class QDBusServiceWatcher;
class QMenu;

/// The program's icon in the desktop's tray, put there as soon as there is a tray. Main thread
/// only.
class TrayIcon : public QObject
{
    Q_OBJECT
public:
    /// `menu` outlives the icon.
    TrayIcon(const QIcon &icon, const QString &title, QMenu &menu, QObject *parent = nullptr);
    ~TrayIcon() override;

    /// Looks for a tray, now and whenever one may have come up.
    void show();
    bool isShown() const { return m_icon != nullptr; }
    /// Where the icon is on the screen; absent where the tray does not tell.
    std::optional<QRect> geometry() const;

Q_SIGNALS:
    /// The user clicked the icon, with whichever button does not open the menu.
    void activated();

private Q_SLOTS:
    void askForHost();

private:
    void place();

    QIcon m_image;
    QString m_title;
    QMenu &m_menu;
    std::unique_ptr<QDBusServiceWatcher> m_watcher;
    std::unique_ptr<QSystemTrayIcon> m_icon;
};
