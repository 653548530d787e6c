// SPDX-License-Identifier: MIT
#include "ExportService.h"

#include "async/LoopTurn.h"
#include "async/OnPool.h"

ExportService::ExportService(Parts parts)
    : m_parts(std::move(parts))
{
    m_pool.setMaxThreadCount(1);
}

ExportService::~ExportService()
{
    m_stop.request_stop(); // the pool waits for the file that is being written
}

Task<ExportService::Links> ExportService::selected(LinkOrder order, LinkSelection selection)
{
    QList<CapturedLink> links;
    LinkCursor cursor(m_parts.modelContext, order);
    while (!cursor.isAtEnd()) {
        const Links page = cursor.next();
        if (!page)
            co_return page;
        std::copy_if(page->begin(), page->end(), std::back_inserter(links),
                     [&selection](const CapturedLink &link) { return selection.accepts(link); });
        LoopTurn turn;
        co_await turn;
    }
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
