// SPDX-License-Identifier: MIT
#pragma once

#include "ModelContext.h"
#include "async/Task.h"

/// Reads all visible links in one order, a page that holds the main thread for a few milliseconds
/// at a time. What is copied or removed between two pages may be read or not.
class LinkCursor
{
public:
    /// `context` outlives the cursor.
    LinkCursor(const ModelContext &context, LinkOrder order);

    /// The next page; after a failure there is no other.
    ModelContext::Links next();
    bool isAtEnd() const { return m_isAtEnd; }

private:
    ModelContext::Links nextNewest();

    const ModelContext &m_context;
    LinkOrder m_order;
    std::optional<qint64> m_place = 0;
    std::optional<ListPosition> m_last;
    bool m_isAtEnd = false;
};

/// All visible links in `order`. The main loop goes on meanwhile; `context` outlives the wait.
Task<ModelContext::Links> collectVisibleLinks(const ModelContext &context, LinkOrder order);
