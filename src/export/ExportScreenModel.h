// SPDX-License-Identifier: MIT
#pragma once

#include "Candidates.h"
#include "ExportService.h"
#include "SaveDialog.h"

#include <memory>

/// What both export screens have in common: the selection and the run of an export, from the
/// missing summaries to the clearing of the list. Lives in a shared pointer, because a running
/// export holds its screen. Main thread only.
class ExportScreenModel : public QObject, public std::enable_shared_from_this<ExportScreenModel>
{
    Q_OBJECT
public:
    /// How many links an export would hold now.
    int linkCount() const;

    QString searchText() const { return m_searchText; }
    void setSearchText(const QString &text);
    bool clearAfterExport() const { return m_clearAfterExport; }
    void setClearAfterExport(bool clear);

    bool isSummarizing() const { return m_isSummarizing; }
    /// No other export can be started from this screen.
    bool isExporting() const { return m_isExporting; }

    /// Begins an export, unless one runs.
    void exportLinks();
    /// Closes the screen; a running export goes on.
    void cancel();

Q_SIGNALS:
    /// Some field or the count is another.
    void changed();
    /// The screen is to close: the user cancelled, or the file is written.
    void done();

protected:
    struct Traits {
        LinkOrder order;
        ExportLayout layout;
        QString fileName; ///< the suggested one, without an extension
        bool logsSteps;
    };

    /// `service` outlives the screen.
    ExportScreenModel(ExportService &service, Traits traits);

    virtual DateSpan dates() const = 0;
    virtual ExportFormat format() const = 0;
    virtual ContentType contentType() const = 0;

    /// Sets a field and announces that it is another.
    template <typename T>
    void set(T &field, const T &value)
    {
        if (field == value)
            return;
        field = value;
        Q_EMIT changed();
    }
    Instant now() const;

private:
    static Task<> runHolding(std::shared_ptr<ExportScreenModel> screen);
    Task<> run();
    Task<> writeMissingSummaries();
    Task<ExportResult> exportTo(QString path);
    LinkSelection selection() const;
    Task<> clear(QList<CapturedLink> links);
    void logStep(const QString &line) const;

    ExportService &m_service;
    Traits m_traits;
    LocalizedSearch m_search;
    Candidates m_candidates;
    QString m_searchText;
    bool m_clearAfterExport = false;
    bool m_isSummarizing = false;
    bool m_isExporting = false;
};
