// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

#include <functional>
#include <optional>

class Caption;
class ElidedLabel;
class IconButton;
class InlineSettingsView;
class LinkListView;
class MenuBarViewModel;
class QDialog;
class QProgressBar;
class QPushButton;
class QStackedWidget;
class SearchBar;
class Spinner;

/// The menu bar panel. It drops down from the tray icon and goes when the user turns to another
/// window; where there is no tray it is a window like others. A dialog of the panel stays when the
/// panel goes, so that what it asks for can be looked up, and brings the panel back when answered.
class MenuBarView : public QWidget
{
    Q_OBJECT
public:
    using MakeSettings = std::function<InlineSettingsView *()>;

    /// `model` outlives the view. The settings are made each time they are shown.
    MenuBarView(MenuBarViewModel &model, MakeSettings makeSettings);

    /// Shows the panel at the tray icon, or at the cursor where the tray does not tell where that
    /// is.
    void showAsPanel(const std::optional<QRect> &trayIcon);
    void showAsWindow();

Q_SIGNALS:
    void quitRequested();

protected:
    bool event(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;
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
    void focusLinks();
    void place();
    QDialog *ownDialog() const;
    void followFocus(const QWindow *focused);
    QSize wantedSize() const;
    void showScreen();
    void refresh();
    void search(const QString &text);

    MenuBarViewModel &m_model;
    MakeSettings m_makeSettings;
    QStackedWidget *m_screens;
    LinkListView *m_list;
    SearchBar *m_search;
    QWidget *m_settingsHeader = nullptr;
    InlineSettingsView *m_settings = nullptr; ///< null while it is not shown
    ElidedLabel *m_today = nullptr;
    QWidget *m_noticeLine = nullptr;
    Caption *m_notice = nullptr;
    QPushButton *m_resume = nullptr;
    QWidget *m_modelLoadLine = nullptr;
    QProgressBar *m_modelLoad = nullptr;
    QStackedWidget *m_body = nullptr;
    ElidedLabel *m_count = nullptr;
    IconButton *m_summarize = nullptr;
    Spinner *m_spinner = nullptr;
    bool m_isPanel = false;
    const void *m_focused = nullptr; ///< the window of ours that has the focus, or had
    bool m_isRounded = false; ///< as a panel, where the desktop can
    std::optional<QRect> m_trayIcon; ///< as it was when the panel was shown, as is the cursor
    QPoint m_cursor;
};
