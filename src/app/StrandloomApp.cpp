// SPDX-License-Identifier: MIT
#include "StrandloomApp.h"

#include "AppState.h"
#include "ApplicationAdaptor.h"
#include "AtomicFile.h"
#include "DebugLog.h"
#include "DrawnIcon.h"
#include "ExitCode.h"
#include "ExportView.h"
#include "ExportViewModel.h"
#include "Foreground.h"
#include "LinksAdaptor.h"
#include "MenuBarView.h"
#include "MenuBarViewModel.h"
#include "ModelContainer.h"
#include "ModelContext.h"
#include "Printable.h"
#include "Services.h"
#include "SingleInstance.h"
#include "SystemClock.h"
#include "TrayIcon.h"
#include "UnixSignal.h"
#include "UnsavedFile.h"
#include "UpdateView.h"
#include "commands/Terminal.h"
#include "settings/InlineSettingsView.h"
#include "settings/SettingsView.h"
#include "style/LoomStyle.h"

#include <QApplication>
#include <QMenu>
#include <QMessageBox>
#include <QScopeGuard>

#include <csignal>
#include <cstdio>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

/// How long a desktop may take to bring up its tray before the user gets a window instead.
constexpr auto trayPatience = 5s;

/// Of the links, so that the panel need not wait for it: when nobody waits for the tray any more.
constexpr auto countDelay = 3s;

/// A command line that writes lets go of the store sooner.
constexpr auto storePatience = 5s;

TrayAppearance trayAppearance(bool isPaused)
{
    return isPaused ? TrayAppearance{u"app.strandloom-paused"_s,
                                     StrandloomApp::tr("Strandloom (capturing is paused)")}
                    : TrayAppearance{u"app.strandloom"_s, u"Strandloom"_s};
}

/// Called before the first window, since a start in the background needs no icon for one.
void setWindowIcon()
{
    if (QApplication::windowIcon().isNull())
        QApplication::setWindowIcon(drawnIcon(u":/icons/app.strandloom.svg"_s));
}

int dieOfStoreError(const StoreError &error)
{
    const QString message = u"Could not create ModelContainer: "_s + description(error);
    std::fprintf(stderr, "%s\n",
                 qPrintable(printable(message))); // first: there may be nobody at the screen
    setWindowIcon();
    QMessageBox box(QMessageBox::Critical, u"Strandloom"_s, message, QMessageBox::Close);
    box.exec();
    return int(ExitCode::nothing);
}

} // namespace

StrandloomApp::StrandloomApp(Services &services, SingleInstance &instance, const Start &start)
    : m_services(services)
    , m_appState(std::make_unique<AppState>(services))
    , m_trayMenu(std::make_unique<QMenu>())
    , m_tray(std::make_unique<TrayIcon>(trayAppearance(false), *m_trayMenu))
{
    buildTrayMenu();
    connect(m_tray.get(), &TrayIcon::activated, this, &StrandloomApp::togglePanel);
    connect(&instance, &SingleInstance::requested, this, &StrandloomApp::perform);
    connect(qApp, &QCoreApplication::aboutToQuit, m_appState.get(), &AppState::stop);
    m_colorScheme.follow();
    m_tray->show();
    if (start.action != ApplicationAction::open)
        perform(start.action);
    else if (!start.isInBackground)
        m_trayPatience = m_services.clock.after(trayPatience, [this] { openWithoutTray(); });
    // Once the main loop runs, which is after all that the user waits for.
    QMetaObject::invokeMethod(this, &StrandloomApp::setUpUpdates, Qt::QueuedConnection);
    m_appState->checkStore(ModelContainer::defaultFolder(), services.modelContext.wasLeftOpen());
    m_counting = services.clock.after(countDelay, [&services] { services.modelContext.counts(); });
    debugLog(u"Started"_s);
}

StrandloomApp::~StrandloomApp()
{
    delete m_export;
    delete m_settings;
}

void StrandloomApp::perform(ApplicationAction action)
{
    switch (action) {
    case ApplicationAction::open:
        return openPanel();
    case ApplicationAction::settings:
        return openSettings();
    case ApplicationAction::exportLinks:
        return openExport();
    case ApplicationAction::quit:
        return QCoreApplication::quit();
    case ApplicationAction::pause:
        return m_appState->setCapturingPaused(true);
    case ApplicationAction::resume:
        return m_appState->setCapturingPaused(false);
    }
}

void StrandloomApp::buildTrayMenu()
{
    // Some trays show nothing but the menu, so it begins with what a click does elsewhere.
    m_trayMenu->addAction(tr("Open Strandloom"), this, &StrandloomApp::openPanel);
    m_trayMenu->addSeparator();
    QAction *const pause = m_trayMenu->addAction(tr("Pause Capturing"));
    pause->setCheckable(true);
    connect(pause, &QAction::toggled, m_appState.get(), &AppState::setCapturingPaused);
    connect(m_appState.get(), &AppState::isCapturingPausedChanged, this, [this, pause] {
        pause->setChecked(m_appState->isCapturingPaused());
        m_tray->setAppearance(trayAppearance(m_appState->isCapturingPaused()));
    });
    m_trayMenu->addSeparator();
    m_trayMenu->addAction(tr("Settings…"), this, &StrandloomApp::openSettings);
    m_trayMenu->addAction(tr("Export Links…"), this, &StrandloomApp::openExport);
    m_trayMenu->addSeparator();
    m_trayMenu->addAction(tr("Quit Strandloom"), qApp, &QCoreApplication::quit);
}

void StrandloomApp::openWithoutTray()
{
    if (!m_tray->isShown() && !m_panel)
        openPanel();
}

void StrandloomApp::openPanel()
{
    if (bringDialogToFront())
        return;
    m_appState->initialize();
    if (m_tray->isShown())
        panel().showAsPanel(m_tray->geometry());
    else
        panel().showAsWindow();
}

void StrandloomApp::togglePanel()
{
    if (m_panel && isInView(*m_panel) && !openDialog())
        m_panel->hide();
    else
        openPanel();
}

MenuBarView &StrandloomApp::panel()
{
    if (!m_panel) {
        const MenuBarViewModel::Dependencies dependencies{
            m_services.modelContext, *m_services.clipboard, m_services.urlOpener,
            m_services.summaries,    m_services.http,       m_services.pages,
            m_services.clock};
        m_panelModel = std::make_unique<MenuBarViewModel>(dependencies);
        connect(m_appState.get(), &AppState::modelLoadChanged, this, &StrandloomApp::showModelLoad);
        showModelLoad();
        connect(m_appState.get(), &AppState::isStoreDamagedChanged, this,
                &StrandloomApp::showNotice);
        connect(m_appState.get(), &AppState::isCapturingPausedChanged, this,
                &StrandloomApp::showNotice);
        showNotice();
        connect(m_panelModel.get(), &MenuBarViewModel::resumeRequested, m_appState.get(),
                [this] { m_appState->setCapturingPaused(false); });
        const auto makeSettings = [this] { return new InlineSettingsView(settingsDependencies()); };
        setWindowIcon();
        m_panel = std::make_unique<MenuBarView>(*m_panelModel, makeSettings);
        connect(m_panel.get(), &MenuBarView::quitRequested, qApp, &QCoreApplication::quit);
    }
    return *m_panel;
}

void StrandloomApp::openSettings()
{
    if (bringDialogToFront())
        return;
    if (!m_settings)
        m_settings = new SettingsView(settingsDependencies());
    setWindowIcon();
    bringToFront(*m_settings);
}

void StrandloomApp::openExport()
{
    if (bringDialogToFront())
        return;
    if (!m_export)
        m_export = new ExportView(std::make_shared<ExportViewModel>(m_services.exports));
    setWindowIcon();
    bringToFront(*m_export);
}

SettingsDependencies StrandloomApp::settingsDependencies()
{
    return {m_services.modelContext,
            m_services.preferences,
            m_services.keys,
            m_services.manualSend,
            m_services.scheduler,
            m_services.exports,
            m_services.updates,
            m_services.urlOpener,
            m_services.info,
            m_services.clock,
            [this](bool launches) { m_services.loginItem.setLaunchAtLogin(launches); }};
}

void StrandloomApp::setUpUpdates()
{
    UpdateController &controller = *m_services.updateController;
    connect(&controller, &UpdateController::statusChanged, this, &StrandloomApp::showUpdateStatus);
    m_services.updates.start(controller);
}

void StrandloomApp::showUpdateStatus(const UpdateStatus &status)
{
    if (!m_update)
        m_update = std::make_unique<UpdateView>(m_services.urlOpener);
    setWindowIcon();
    m_update->present(status);
}

void StrandloomApp::showNotice()
{
    if (m_appState->isStoreDamaged())
        m_panelModel->setNotice(
            tr("The store is damaged. Export your links and restore a backup."));
    m_panelModel->setPaused(m_appState->isCapturingPaused());
}

void StrandloomApp::showModelLoad()
{
    m_panelModel->setModelLoad(m_appState->isModelLoading()
                                   ? std::optional(m_appState->modelLoadProgress())
                                   : std::nullopt);
}

int runStrandloom(int argc, char **argv, const Start &start)
{
    const QVariantMap launch = launchData(); // before Qt takes it
    QApplication application(argc, argv);
    LoomStyle::use();
    Q_INIT_RESOURCE(appicons);
    application.setApplicationName(u"strandloom"_s);
    application.setApplicationVersion(QStringLiteral(STRANDLOOM_VERSION));
    application.setDesktopFileName(u"app.strandloom"_s);
    application.setQuitOnLastWindowClosed(false);
    UnixSignal terminated(SIGTERM), interrupted(SIGINT);
    for (UnixSignal *const end : {&terminated, &interrupted})
        QObject::connect(end, &UnixSignal::arrived, &application, &QCoreApplication::quit);

    SingleInstance instance;
    const auto role = instance.claim(start.action, launch);
    if (!role)
        return fail(role.error(), ExitCode::notRunning);
    if (*role == SingleInstance::Role::second)
        return int(ExitCode::done);

    SystemClock clock;
    const auto container =
        ModelContainer::open(ModelContainer::defaultFolder(), clock, storePatience);
    if (!container)
        return dieOfStoreError(container.error());
    removeStaleDrafts(ModelContainer::defaultFolder()); // of a restore that was killed
    const auto unsaved = qScopeGuard([&container] { // when all who might still write are gone
        keepUnsavedLinks((*container)->mainContext(), ModelContainer::defaultFolder());
    });
    Services services((*container)->mainContext(), clock);
    StrandloomApp strandloom(services, instance, start);
    LinksAdaptor links({services.modelContext, services.http, services.pages, services.clock},
                       &instance);
    return QApplication::exec();
}
