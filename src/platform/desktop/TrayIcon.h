// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QRect>
#include <QSystemTrayIcon>

#include <memory>
#include <optional>

class EmbeddingTray;
class QMenu;
class StatusNotifierHost;

struct TrayAppearance {
    /// There are two resources: `:/icons/NAME.svg`, and `:/icons/NAME-symbolic.svg` of one colour,
    /// in whose place comes one that suits the tray. The latter may be installed as well, for trays
    /// that draw icons themselves.
    QString icon;
    QString toolTip;
};

/// The program's icon in the desktop's tray, for as long as there is a tray. Main thread only.
///
/// Qt decides once in the life of the process which kind of tray it uses, when it first shows an
/// icon. So it is asked only when there is a tray, and from then on the other kind does not count.
class TrayIcon : public QObject
{
    Q_OBJECT
public:
    /// `menu` outlives the icon.
    TrayIcon(TrayAppearance appearance, QMenu &menu, QObject *parent = nullptr);
    ~TrayIcon() override;

    void setAppearance(const TrayAppearance &appearance);
    /// Looks for a tray, from now on.
    void show();
    bool isShown() const { return m_icon != nullptr; }
    /// Where the icon is on the screen; absent where the tray does not tell.
    std::optional<QRect> geometry() const;

Q_SIGNALS:
    /// The user clicked the icon, with whichever button does not open the menu.
    void activated();

private:
    enum class Kind { statusNotifier, embedding };

    bool isPresent(Kind kind) const;
    void follow();
    void place();
    void paint();

    TrayAppearance m_appearance;
    QMenu &m_menu;
    std::unique_ptr<StatusNotifierHost> m_host;
    std::unique_ptr<EmbeddingTray> m_embedding; ///< null where Qt does not draw on X11
    std::optional<Kind> m_kind; ///< absent until there is a tray
    std::unique_ptr<QSystemTrayIcon> m_icon;
};
