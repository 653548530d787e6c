// SPDX-License-Identifier: MIT
#include "LinkCursor.h"

#include "async/LoopTurn.h"

namespace
{
constexpr int pageSize = 1000;
}

LinkCursor::LinkCursor(const ModelContext &context, LinkOrder order)
    : m_context(context)
    , m_order(order)
{
}

ModelContext::Links LinkCursor::next()
{
    auto page = m_order == LinkOrder::store ? m_context.visibleInStoreOrder(m_place, pageSize)
                                            : nextNewest();
    m_isAtEnd = m_isAtEnd || !page || !m_place;
    return page;
}

ModelContext::Links LinkCursor::nextNewest()
{
    auto page = m_context.visibleNewestFirst(m_last, pageSize);
    m_isAtEnd = page && page->size() < pageSize;
    if (page && !page->isEmpty())
        m_last = positionOf(page->last());
    return page;
}

Task<ModelContext::Links> collectVisibleLinks(const ModelContext &context, LinkOrder order)
{
    QList<CapturedLink> links;
    LinkCursor cursor(context, order);
    while (!cursor.isAtEnd()) {
        const auto page = cursor.next();
        if (!page)
            co_return page;
        links.append(*page);
        LoopTurn turn;
        co_await turn;
    }
    co_return links;
}
