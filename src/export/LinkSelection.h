// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"
#include "DateSpan.h"
#include "LocalizedSearch.h"

/// What the selection looks at in a visible link, made for being looked at often.
struct Candidate {
    LinkId id;
    Instant copiedAt;
    std::string text; ///< URL and title, folded, with a byte between them that no UTF-8 has
};

Candidate candidateOf(const CapturedLink &link, const LocalizedSearch &search);

/// Which of the visible links go into an export: the dates hold the copying, and URL or title
/// contains the searched text, unless that is empty. Any thread.
class LinkSelection
{
public:
    LinkSelection(const DateSpan &dates, const QString &searchText, const LocalizedSearch &search);

    bool accepts(const Candidate &candidate) const;
    bool accepts(const CapturedLink &link) const;

private:
    LocalizedSearch m_search;
    DateSpan m_dates;
    std::string m_searchText;
};
