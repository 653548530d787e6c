// SPDX-License-Identifier: MIT
#pragma once

#include "LinkSelection.h"
#include "StoreChange.h"
#include "async/Scope.h"

#include <QObject>
#include <QSet>

#include <memory>
#include <vector>

class ModelContext;

/// The visible links as an export screen looks through them while its user types; follows the
/// store. They are read a page at a time from the construction on, so of a large store there are
/// fewer at first. Main thread only.
class Candidates : public QObject
{
    Q_OBJECT
public:
    /// `context` outlives this.
    Candidates(const ModelContext &context, const LocalizedSearch &search);

    /// How many of those read so far `selection` accepts.
    int count(const LinkSelection &selection) const;

Q_SIGNALS:
    void changed();

private:
    void reload();
    Task<> load();
    void append(const QList<CapturedLink> &page);
    void apply(const StoreChange &change);

    const ModelContext &m_context;
    LocalizedSearch m_search;
    std::vector<Candidate> m_candidates; ///< in no order
    QSet<LinkId> m_early; ///< came by a change while the reading was still going on
    std::unique_ptr<Scope> m_loading;
};
