// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"
#include "async/Scope.h"

#include <QList>
#include <QObject>
#include <QProperty>

#include <memory>

class Clock;
class LocalMLService;
class ModelContext;
class WebContentExtractor;

struct SummaryProgress {
    int done = 0;
    int total = 0;

    bool operator==(const SummaryProgress &) const = default;
};

/// Writes the summaries of links, page by page. Main thread only.
class SummaryService : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isSummarizing READ isSummarizing NOTIFY isSummarizingChanged)
    Q_PROPERTY(std::optional<SummaryProgress> currentProgress READ currentProgress NOTIFY
                   currentProgressChanged)
    Q_PROPERTY(QString lastError READ lastError NOTIFY lastErrorChanged)
    Q_PROPERTY(bool isModelReady READ isModelReady CONSTANT)
    Q_PROPERTY(bool isModelLoading READ isModelLoading CONSTANT)
    Q_PROPERTY(double modelLoadProgress READ modelLoadProgress CONSTANT)
public:
    /// All outlive the service.
    SummaryService(ModelContext &context, LocalMLService &mlService, WebContentExtractor &extractor,
                   Clock &clock, QObject *parent = nullptr);

    /// A batch is running.
    bool isSummarizing() const { return m_isSummarizing; }
    /// Of the batches that run together, 0 ≤ done ≤ total; absent when none runs.
    std::optional<SummaryProgress> currentProgress() const { return m_currentProgress; }
    /// Why the last batch could not begin; empty when it could.
    QString lastError() const { return m_lastError; }
    // A batch never changes what is shown of the model: who follows it watches `LocalMLService`.
    bool isModelReady() const { return false; }
    bool isModelLoading() const { return false; }
    double modelLoadProgress() const { return 0.0; }

    /// The summary of one link, which is not stored; a title that is missing is. Absent when that
    /// failed or the link is gone.
    Task<std::optional<QString>> summarize(LinkId id);
    /// Writes the summaries that are missing at the call, one link after the other, in a batch.
    /// Once awaited it goes on to its end, even when this wait is abandoned.
    Task<> summarizeAll(QList<LinkId> ids);

Q_SIGNALS:
    void isSummarizingChanged();
    void currentProgressChanged();
    void lastErrorChanged();

private:
    Task<> summarizeSelected(QList<LinkId> ids);
    Task<> runBatch(QList<LinkId> ids);
    void addProgress(const SummaryProgress &progress);
    QList<LinkId> withoutSummary(const QList<LinkId> &ids) const;

    ModelContext &m_context;
    LocalMLService &m_mlService;
    WebContentExtractor &m_extractor;
    Clock &m_clock;
    int m_batches = 0; ///< that run
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(SummaryService, bool, m_isSummarizing, false,
                                         &SummaryService::isSummarizingChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SummaryService, std::optional<SummaryProgress>, m_currentProgress,
                               &SummaryService::currentProgressChanged)
    Q_OBJECT_BINDABLE_PROPERTY(SummaryService, QString, m_lastError,
                               &SummaryService::lastErrorChanged)
    Scope m_tasks;
};
