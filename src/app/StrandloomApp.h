// SPDX-License-Identifier: MIT
#pragma once

#include "ApplicationAction.h"
#include "ColorScheme.h"

#include <QObject>
#include <QPointer>

#include <memory>

class Alarm;
class AppState;
class ExportView;
class MenuBarView;
class MenuBarViewModel;
class QMenu;
class SettingsView;
class SingleInstance;
class TrayIcon;
class UpdateView;
struct Services;
struct SettingsDependencies;
struct UpdateStatus;

/// What the user asked for by starting the program.
struct Start {
    ApplicationAction action = ApplicationAction::open; ///< or `settings` or `exportLinks`
    bool isInBackground = false; ///< where there is no tray, no window opens either
};

/// The application: the tray item with its panel and the two windows, over one store and one set of
/// services. Main thread only.
class StrandloomApp : public QObject
{
    Q_OBJECT
public:
    /// Both outlive the application.
    StrandloomApp(Services &services, SingleInstance &instance, const Start &start);
    ~StrandloomApp() override;

    void perform(ApplicationAction action);
    // While a dialog of ours is open, these bring it to the front and do nothing else.
    /// Shows the panel; the first time starts capturing.
    void openPanel();
    /// What a click on the tray icon does.
    void togglePanel();
    /// These two start nothing.
    void openSettings();
    void openExport();

private:
    void buildTrayMenu();
    void openWithoutTray();
    void setUpUpdates();
    void showUpdateStatus(const UpdateStatus &status);
    void showModelLoad();
    void showNotice();
    MenuBarView &panel();
    SettingsDependencies settingsDependencies();

    Services &m_services;
    ColorScheme m_colorScheme;
    std::unique_ptr<AppState> m_appState;
    std::unique_ptr<QMenu> m_trayMenu;
    std::unique_ptr<TrayIcon> m_tray;
    std::unique_ptr<Alarm> m_trayPatience;
    std::unique_ptr<Alarm> m_counting;
    std::unique_ptr<MenuBarViewModel> m_panelModel; ///< made at the first opening, as is the panel
    std::unique_ptr<MenuBarView> m_panel;
    std::unique_ptr<UpdateView> m_update; ///< made when there is first something to tell
    QPointer<SettingsView> m_settings; ///< null while it is closed
    QPointer<ExportView> m_export; ///< null while it is closed
};

/// The program itself; returns the exit code.
int runStrandloom(int argc, char **argv, const Start &start);
