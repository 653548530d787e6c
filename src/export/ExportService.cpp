// SPDX-License-Identifier: MIT
#include "ExportService.h"

#include "async/OnPool.h"

ExportService::ExportService(Dependencies dependencies)
    : m_dependencies(std::move(dependencies))
{
    m_pool.setMaxThreadCount(1);
}

ExportService::~ExportService()
{
    m_stop.request_stop(); // the pool waits for the file that is being written
}

Task<ExportService::Links> ExportService::selected(LinkOrder order, LinkSelection selection)
{
    const std::function<bool(const CapturedLink &)> accepts =
        [selection](const CapturedLink &link) { return selection.accepts(link); };
    auto links = co_await collectVisibleLinks(m_dependencies.modelContext, order, accepts);
    co_return links;
}

Task<ExportResult> ExportService::write(ExportDocument document, ExportFormat format, QString path)
{
    OnPool<ExportResult> job(m_pool, [document, format, path, stop = m_stop.get_token()] {
        return exportToFile(document, format, path, stop);
    });
    ExportResult result = co_await job;
    co_return result;
}
