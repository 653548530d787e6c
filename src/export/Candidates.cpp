// SPDX-License-Identifier: MIT
#include "Candidates.h"

#include "DebugLog.h"
#include "LinkCursor.h"
#include "async/YieldToLoop.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

/// Above this, reading all anew in pages is quicker than looking up each link at once.
constexpr qsizetype manyLinks = 1000;

} // namespace

Candidates::Candidates(const ModelContext &context, const LocalizedSearch &search)
    : m_context(context)
    , m_search(search)
{
    connect(&context, &ModelContext::changed, this, &Candidates::apply);
    reload();
}

int Candidates::count(const LinkSelection &selection) const
{
    return int(std::count_if(
        m_candidates.begin(), m_candidates.end(),
        [&selection](const Candidate &candidate) { return selection.accepts(candidate); }));
}

void Candidates::reload()
{
    m_candidates.clear();
    m_early.clear();
    m_loading = std::make_unique<Scope>();
    m_loading->start(load());
}

Task<> Candidates::load()
{
    LinkCursor cursor(m_context, LinkOrder::newestFirst);
    while (true) {
        const auto page = cursor.next();
        if (!page)
            debugLog(u"Failed to read the links to export: "_s + description(page.error()));
        else
            append(*page);
        Q_EMIT changed();
        if (cursor.isAtEnd())
            co_return;
        YieldToLoop yield;
        co_await yield;
    }
}

void Candidates::append(const QList<CapturedLink> &page)
{
    for (const CapturedLink &link : page) {
        if (!m_early.contains(link.id))
            m_candidates.push_back(candidateOf(link, m_search));
    }
}

void Candidates::apply(const StoreChange &change)
{
    QSet<LinkId> ids(change.inserted.begin(), change.inserted.end());
    ids.unite({change.updated.begin(), change.updated.end()});
    if (ids.size() > manyLinks)
        return reload();

    QSet<LinkId> outdated(change.removed.begin(), change.removed.end());
    outdated.unite(ids);
    std::erase_if(m_candidates, [&outdated](const Candidate &candidate) {
        return outdated.contains(candidate.id);
    });
    if (!m_loading->isEmpty())
        m_early.unite(ids);
    for (const LinkId &id : std::as_const(ids)) {
        if (const auto link = m_context.link(id); link && link->isVisible)
            m_candidates.push_back(candidateOf(*link, m_search));
    }
    Q_EMIT changed();
}
