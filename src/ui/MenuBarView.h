// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

#include <functional>
#include <optional>

class ElidedLabel;
class IconButton;
class InlineSettingsView;
class LinkListView;
class MenuBarViewModel;
class QLabel;
class QProgressBar;
class QStackedWidget;
class Spinner;

/// The menu bar panel. It drops down from the tray icon and goes when the user turns to another
/// window; where there is no tray it is a window like others.
class MenuBarView : public QWidget
{
    Q_OBJECT
public:
    using MakeSettings = std::function<InlineSettingsView *()>;

    /// `model` outlives the view. The settings are made when they are first shown.
    MenuBarView(MenuBarViewModel &model, MakeSettings makeSettings);

    /// Shows the panel at the tray icon, or at the cursor where the tray does not tell where that
    /// is.
    void showAsPanel(const std::optional<QRect> &trayIcon);
    void showAsWindow();

Q_SIGNALS:
    void quitRequested();

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QWidget *makeLinksScreen();
    QWidget *makeSettingsScreen();
    QWidget *makeHeader();
    QWidget *makeNotice();
    QWidget *makeModelLoad();
    QWidget *makePlaceholder();
    QWidget *makeFooter();
    void present();
    void place();
    QSize wantedSize() const;
    void showScreen();
    void refresh();

    MenuBarViewModel &m_model;
    MakeSettings m_makeSettings;
    QStackedWidget *m_screens;
    LinkListView *m_list;
    QWidget *m_settingsHeader = nullptr;
    InlineSettingsView *m_settings = nullptr; ///< null until it is first shown
    ElidedLabel *m_today = nullptr;
    QWidget *m_noticeLine = nullptr;
    QLabel *m_notice = nullptr;
    QWidget *m_modelLoadLine = nullptr;
    QProgressBar *m_modelLoad = nullptr;
    QStackedWidget *m_body = nullptr;
    ElidedLabel *m_count = nullptr;
    IconButton *m_summarize = nullptr;
    Spinner *m_spinner = nullptr;
    bool m_isPanel = false;
    std::optional<QRect> m_trayIcon; ///< as it was when the panel was shown, as is the cursor
    QPoint m_cursor;
};
