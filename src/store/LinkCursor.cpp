// SPDX-License-Identifier: MIT
#include "LinkCursor.h"

#include "async/YieldToLoop.h"

#include <algorithm>

namespace
{
constexpr qsizetype pageSize = 1000;
}

LinkCursor::LinkCursor(const ModelContext &context, LinkOrder order)
    : m_context(context)
    , m_order(order)
{
}

ModelContext::Links LinkCursor::next()
{
    m_isAtEnd = true; // unless this goes well
    if (!m_rows) {
        auto rows = m_context.visibleRows(m_order);
        if (!rows)
            return Unexpected{rows.error()};
        m_rows = std::move(*rows);
    }
    const auto size = std::min(pageSize, m_rows->size());
    auto links = m_context.visibleIn(m_rows->first(size));
    m_rows->remove(0, size);
    m_isAtEnd = !links || m_rows->isEmpty();
    return links;
}

Task<ModelContext::Links> collectVisibleLinks(const ModelContext &context, LinkOrder order,
                                              std::function<bool(const CapturedLink &)> accepts)
{
    QList<CapturedLink> links;
    LinkCursor cursor(context, order);
    while (!cursor.isAtEnd()) {
        const auto page = cursor.next();
        if (!page)
            co_return page;
        std::copy_if(page->begin(), page->end(), std::back_inserter(links),
                     [&accepts](const CapturedLink &link) { return !accepts || accepts(link); });
        YieldToLoop yield;
        co_await yield;
    }
    co_return links;
}
