// SPDX-License-Identifier: MIT
#pragma once

#include "ModelContext.h"
#include "async/Task.h"

#include <functional>

/// Reads all links that are visible at its first page, a page that holds the main thread for a few
/// milliseconds at a time. What is removed between two pages may be read or not.
class LinkCursor
{
public:
    /// `context` outlives the cursor.
    LinkCursor(const ModelContext &context, LinkOrder order);

    /// The next page; after a failure there is no other.
    ModelContext::Links next();
    bool isAtEnd() const { return m_isAtEnd; }

private:
    const ModelContext &m_context;
    LinkOrder m_order;
    std::optional<QList<qint64>> m_rows; ///< that are still to be read, once it has begun
    bool m_isAtEnd = false;
};

/// The visible links in `order` that `accepts` takes; without it all. The main loop goes on
/// meanwhile; `context` outlives the wait.
Task<ModelContext::Links>
collectVisibleLinks(const ModelContext &context, LinkOrder order,
                    std::function<bool(const CapturedLink &)> accepts = {});
