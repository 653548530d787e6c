#pragma once

#include <QObject>

#include <memory>

class ClipboardMonitor;
class ModelContext;
struct Services;

/// What starts once, at the first opening of the panel, and runs until the process ends. Main
/// thread only.
class AppState : public QObject
{
    Q_OBJECT
public:
    /// `services` outlives the state.
    explicit AppState(Services &services, QObject *parent = nullptr);
    ~AppState() override;

    /// Starts capturing and prunes old links. Does nothing from the second call on.
    void initialize(ModelContext &modelContext);
    /// Ends capturing for good.
    void stop();

    /// Null until `initialize`.
    ClipboardMonitor *clipboardMonitor() const { return m_clipboardMonitor.get(); }

private:
    void performAutoPrune(ModelContext &modelContext);

    Services &m_services;
    bool m_isInitialized = false;
    std::unique_ptr<ClipboardMonitor> m_clipboardMonitor;
};
