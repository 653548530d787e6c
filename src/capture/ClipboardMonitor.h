// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"
#include "TitleFetcher.h"
#include "async/Scope.h"

#include <QObject>
#include <QStringList>

#include <chrono>

class ClipboardSource;
class Clock;
class HttpClient;
class ModelContext;
class Preferences;
class QThreadPool;

/// Turns every web address that is copied from now on into a stored link, and fetches its page's
/// title. Driven by the clipboard's change events, so it costs nothing while nobody copies. Main
/// thread only.
class ClipboardMonitor : public QObject
{
    Q_OBJECT
public:
    /// How long the same address counts as one copy.
    static constexpr std::chrono::seconds duplicateThreshold{5};

    /// What the monitor works with; all of it outlives the monitor. `pages` has one thread.
    struct Dependencies {
        ModelContext &modelContext;
        ClipboardSource &clipboard;
        HttpClient &http;
        QThreadPool &pages;
        const Preferences &preferences;
        Clock &clock;
    };

    /// Takes what is on the clipboard now as seen, and deletes links that are older than the user
    /// wants them kept.
    explicit ClipboardMonitor(const Dependencies &dependencies, QObject *parent = nullptr);

    void startMonitoring();
    void stopMonitoring();
    bool isPaused() const { return m_isPaused; }
    /// While paused no copy is even read. What was copied meanwhile is not captured afterwards
    /// either. To be called while monitoring.
    void setPaused(bool isPaused);
    /// To be called when the excluded domains have changed.
    void loadExcludedDomains();
    /// Captures the clipboard's text if it is new, an address, not excluded and not yet stored.
    void checkClipboard();

private:
    void autoPruneOldLinks();
    bool isRapidDuplicate(const QString &url) const;
    bool isStored(const QString &url) const;
    void capture(const QString &url);
    void remember(const QString &url);

    Dependencies m_dependencies;
    TitleFetcher m_titles;
    bool m_isPaused = false;
    qint64 m_lastChangeCount;
    std::optional<QString> m_lastCopiedURL;
    std::optional<Instant> m_lastCopiedTime;
    QStringList m_excludedDomains;
    QMetaObject::Connection m_watch;
    Scope m_tasks;
};
