// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

class Preferences;
class UpdateController;

/// Keeps the user's wish for automatic updates and what looks for updates in step. Main thread
/// only.
class UpdaterManager : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool autoInstallUpdates READ autoInstallUpdates WRITE setAutoInstallUpdates NOTIFY
                   autoInstallUpdatesChanged)
public:
    /// `preferences` outlives the manager.
    explicit UpdaterManager(Preferences &preferences, QObject *parent = nullptr);

    bool autoInstallUpdates() const { return m_autoInstallUpdates; }
    /// Checks nothing by itself.
    void setAutoInstallUpdates(bool automatic);

    /// To be called when launching has finished: from now on `controller`, which outlives the
    /// manager, does the work. It checks at once, in the background, if the user wants automatic
    /// updates.
    void start(UpdateController &controller);
    /// The user asked. Does nothing before `start`.
    void checkForUpdates();

Q_SIGNALS:
    void autoInstallUpdatesChanged();

private:
    void applySwitches();

    Preferences &m_preferences;
    bool m_autoInstallUpdates;
    UpdateController *m_updaterController = nullptr;
};
