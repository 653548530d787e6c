// SPDX-License-Identifier: MIT
#include "LinkSelection.h"

Candidate candidateOf(const CapturedLink &link, const LocalizedSearch &search)
{
    Candidate candidate{link.id, link.copiedAt, search.folded(link.url)};
    if (link.title)
        candidate.text += '\xff' + search.folded(*link.title);
    return candidate;
}

LinkSelection::LinkSelection(const DateSpan &dates, const QString &searchText,
                             const LocalizedSearch &search)
    : m_search(search)
    , m_dates(dates)
    , m_searchText(search.folded(searchText))
{
}

bool LinkSelection::accepts(const Candidate &candidate) const
{
    return m_dates.contains(candidate.copiedAt) && containsFolded(candidate.text, m_searchText);
}

bool LinkSelection::accepts(const CapturedLink &link) const
{
    return m_dates.contains(link.copiedAt)
        && (m_searchText.empty() || accepts(candidateOf(link, m_search)));
}
