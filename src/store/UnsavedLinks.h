// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"

#include <QHash>
#include <QList>

#include <algorithm>
#include <functional>
#include <vector>

/// Links whose stored rows are missing or out of date because they could not be written, in memory
/// until they can. What is read from the store is corrected by them.
class UnsavedLinks
{
public:
    struct Unsaved {
        CapturedLink link;
        bool isNew = false; ///< there is no row yet
        qint64 order = 0; ///< grows with each that is kept
    };

    bool isEmpty() const { return m_links.isEmpty(); }
    const QHash<LinkId, Unsaved> &all() const { return m_links; }
    const Unsaved *find(const LinkId &id) const;

    void keepNew(const CapturedLink &link) { m_links.insert(link.id, {link, true, ++m_last}); }
    void keepChanged(const CapturedLink &link);
    void changeEach(const QList<LinkId> &ids, const std::function<void(CapturedLink &)> &change);
    void forget(const LinkId &id) { m_links.remove(id); }
    void forgetAll() { m_links.clear(); }

    /// In the order in which they were first kept.
    QList<CapturedLink> inOrder() const;
    /// How many new ones satisfy `condition`.
    template <typename Condition>
    qint64 countNew(Condition condition) const
    {
        return std::count_if(m_links.begin(), m_links.end(), [&condition](const Unsaved &unsaved) {
            return unsaved.isNew && condition(unsaved.link);
        });
    }

    /// Brings visible links that were stored up to date; those hidden here are dropped.
    void correctRows(QList<CapturedLink> &rows) const;
    /// Adds the new ones that belong on a page behind `after` of at most `limit` visible links.
    void addNew(QList<CapturedLink> &page, const std::optional<ListPosition> &after,
                int limit) const;
    /// Brings the places of all visible links behind `last` up to date; the first `limit` stay, or
    /// all for -1.
    void correctPositions(std::vector<ListPosition> &positions, const ListPosition &last,
                          int limit) const;
    /// Brings all visible links, in the order of their insertion, up to date.
    void correctStoreOrder(QList<CapturedLink> &links) const;

private:
    QHash<LinkId, Unsaved> m_links;
    qint64 m_last = 0;
};
