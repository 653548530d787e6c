// SPDX-License-Identifier: MIT
#include "ExportScreenModel.h"

#include "Clock.h"
#include "DebugLog.h"
#include "async/YieldToLoop.h"

#include <QScopeGuard>

using namespace Qt::StringLiterals;

namespace
{

/// Links, between which the main loop goes on.
constexpr qsizetype hiddenAtOnce = 500;

} // namespace

ExportScreenModel::ExportScreenModel(ExportService &service, Traits traits)
    : m_service(service)
    , m_traits(std::move(traits))
    , m_search(service.dependencies().locale)
    , m_candidates(service.dependencies().modelContext, m_search)
{
    connect(&m_candidates, &Candidates::changed, this, &ExportScreenModel::changed);
}

int ExportScreenModel::linkCount() const
{
    return m_candidates.count(selection());
}

void ExportScreenModel::setSearchText(const QString &text)
{
    set(m_searchText, text);
}

void ExportScreenModel::setClearAfterExport(bool clear)
{
    set(m_clearAfterExport, clear);
}

void ExportScreenModel::exportLinks()
{
    if (m_isExporting)
        return;
    logStep(u"Export button clicked, links to export: "_s + QString::number(linkCount()));
    set(m_isExporting, true);
    m_service.start(runHolding(shared_from_this()));
}

void ExportScreenModel::cancel()
{
    Q_EMIT done();
}

Task<> ExportScreenModel::runHolding(std::shared_ptr<ExportScreenModel> screen)
{
    co_await screen->run();
}

Task<> ExportScreenModel::run()
{
    const auto idle = qScopeGuard([this] { set(m_isExporting, false); });
    co_await writeMissingSummaries();

    const SaveRequest request{m_traits.fileName + u'.' + fileExtension(format()), contentType()};
    const std::optional<QString> path =
        co_await m_service.dependencies().saveDialog.chooseFile(request);
    logStep(u"Save panel response: "_s + (path ? u'1' : u'0'));
    if (!path)
        co_return;

    const ExportResult exported = co_await exportTo(*path);
    if (!exported) {
        debugLog(u"Export failed: "_s + description(exported.error()));
        co_return;
    }
    Q_EMIT done();
}

Task<> ExportScreenModel::writeMissingSummaries()
{
    const LinkSelection wanted = selection();
    const auto links = co_await m_service.selected(m_traits.order, wanted);
    if (!links)
        co_return; // the export itself will tell

    QList<LinkId> missing;
    for (const CapturedLink &link : *links) {
        if (!link.summary)
            missing.append(link.id);
    }
    if (missing.isEmpty())
        co_return;

    debugLog(u"Generating summaries for "_s + QString::number(missing.size()) + u" links..."_s);
    set(m_isSummarizing, true);
    const auto summarized = qScopeGuard([this] { set(m_isSummarizing, false); });
    co_await m_service.dependencies().summarizeAll(missing);
}

/// The selection is taken once: what is written is what is cleared.
Task<ExportResult> ExportScreenModel::exportTo(QString path)
{
    const LinkSelection wanted = selection();
    const auto links = co_await m_service.selected(m_traits.order, wanted);
    if (!links)
        co_return Unexpected{
            ExportError{ExportError::Kind::cannotRead, description(links.error())}};

    const ExportDocument document{*links, m_traits.layout, now(), m_service.dependencies().locale};
    const ExportFormat fileFormat = format();
    const ExportResult written = co_await m_service.write(document, fileFormat, path);
    if (!written)
        co_return written;
    logStep(u"Export successful to: "_s + path);
    if (m_clearAfterExport)
        co_await clear(*links);
    co_return written;
}

LinkSelection ExportScreenModel::selection() const
{
    return {dates(), m_searchText, m_search};
}

Task<> ExportScreenModel::clear(QList<CapturedLink> links)
{
    for (qsizetype done = 0; done < links.size(); done += hiddenAtOnce) {
        QList<LinkId> ids;
        for (const CapturedLink &link : links.mid(done, hiddenAtOnce))
            ids.append(link.id);
        if (const auto hidden = m_service.dependencies().modelContext.hideExported(ids); !hidden)
            debugLog(u"Failed to clear the list after an export: "_s + description(hidden.error()));
        YieldToLoop yield;
        co_await yield;
    }
}

void ExportScreenModel::logStep(const QString &line) const
{
    if (m_traits.logsSteps)
        debugLog(line);
}

Instant ExportScreenModel::now() const
{
    return m_service.dependencies().clock.now();
}
