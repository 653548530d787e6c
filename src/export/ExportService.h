// SPDX-License-Identifier: MIT
#pragma once

#include "ExportFile.h"
#include "LinkCursor.h"
#include "LinkSelection.h"
#include "async/Scope.h"

#include <QThreadPool>

class Clock;
class SaveDialog;

/// Carries exports out, their files written one after the other on a thread of its own. What has
/// begun goes on when its screen closes. When the service goes, exports end, with every file
/// whole. Main thread only.
class ExportService
{
public:
    using Links = ModelContext::Links;
    struct Dependencies {
        ModelContext &modelContext;
        SaveDialog &saveDialog;
        /// Writes the missing summaries of links; returns when it has tried all.
        std::function<Task<>(QList<LinkId>)> summarizeAll;
        Clock &clock;
        QString locale; ///< for dates and searches
    };

    /// All of `dependencies` outlives the service.
    explicit ExportService(Dependencies dependencies);
    ~ExportService();

    const Dependencies &dependencies() const { return m_dependencies; }
    /// Runs `task` to its end, or to that of the service.
    void start(Task<> task) { m_tasks.start(std::move(task)); }

    /// The visible links that `selection` accepts, in `order`. The main loop goes on meanwhile.
    Task<Links> selected(LinkOrder order, LinkSelection selection);
    /// Writes a file as `exportToFile` does.
    Task<ExportResult> write(ExportDocument document, ExportFormat format, QString path);

private:
    Dependencies m_dependencies;
    std::stop_source m_stop;
    QThreadPool m_pool;
    Scope m_tasks;
};
