// SPDX-License-Identifier: MIT
#pragma once

#include "async/Scope.h"

#include <QObject>
#include <QProperty>

#include <memory>
#include <optional>

class ClipboardMonitor;
struct Services;

/// What starts once, at the first opening of the panel, and runs until the process ends. Main
/// thread only.
class AppState : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isModelLoading READ isModelLoading NOTIFY modelLoadChanged)
    Q_PROPERTY(double modelLoadProgress READ modelLoadProgress NOTIFY modelLoadChanged)
    Q_PROPERTY(bool isCapturingPaused READ isCapturingPaused WRITE setCapturingPaused NOTIFY
                   isCapturingPausedChanged)
    Q_PROPERTY(bool isStoreDamaged READ isStoreDamaged NOTIFY isStoreDamagedChanged)
    Q_PROPERTY(std::optional<QString> modelLoadError READ modelLoadError NOTIFY modelLoadChanged)
public:
    /// `services` outlives the state.
    explicit AppState(Services &services, QObject *parent = nullptr);
    ~AppState() override;

    bool isModelLoading() const { return m_isModelLoading; }
    /// Of the running or last load, from 0 to 1.
    double modelLoadProgress() const { return m_modelLoadProgress; }
    /// Why the last load failed, in words for people.
    std::optional<QString> modelLoadError() const { return m_modelLoadError; }

    /// False as well while nobody has looked.
    bool isStoreDamaged() const { return m_isStoreDamaged; }
    /// Reads all of the store in `folder` some minutes later, beside everything else, when a week
    /// has passed since it was last found sound, or the program before did not come to its end.
    void checkStore(const QString &folder, bool wasLeftOpen);

    /// Starts capturing and the daily digest, prunes old links and loads the model. Does nothing
    /// from the second call on.
    void initialize();
    /// Ends capturing for good.
    void stop();

    bool isCapturingPaused() const { return m_isCapturingPaused; }
    /// May be called before `initialize`, which then captures nothing until this is undone. Not
    /// remembered from one start to the next.
    void setCapturingPaused(bool isPaused);

    /// Null until `initialize`.
    ClipboardMonitor *clipboardMonitor() const { return m_clipboardMonitor.get(); }

Q_SIGNALS:
    void modelLoadChanged();
    void isCapturingPausedChanged();
    void isStoreDamagedChanged();

private:
    void startScheduler();
    void performAutoPrune();
    Task<> initializeAIModel();
    bool isCheckDue() const;
    Task<> findDamage(QString folder);

    Services &m_services;
    bool m_isInitialized = false;
    std::unique_ptr<ClipboardMonitor> m_clipboardMonitor;
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppState, bool, m_isStoreDamaged, false,
                                         &AppState::isStoreDamagedChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppState, bool, m_isCapturingPaused, false,
                                         &AppState::isCapturingPausedChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppState, bool, m_isModelLoading, false,
                                         &AppState::modelLoadChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppState, double, m_modelLoadProgress, 0.0,
                                         &AppState::modelLoadChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppState, std::optional<QString>, m_modelLoadError,
                               &AppState::modelLoadChanged)
    Scope m_tasks;
};
