// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"
#include "LocalizedSearch.h"
#include "StoreChange.h"
#include "async/Scope.h"

#include <QHash>
#include <QObject>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class ModelContext;

/// Finds the visible links whose title, address or summary contains a text. Holds all their texts
/// folded, so that each key is quick; they are read from the construction on, a page that holds the
/// main thread for a few milliseconds at a time. Follows the store. Main thread only.
class LinkSearch : public QObject
{
    Q_OBJECT
public:
    /// `context` outlives this.
    LinkSearch(const ModelContext &context, const LocalizedSearch &search);
    ~LinkSearch() override;

    void setText(const QString &text);
    /// Newest first; of a large store fewer at first.
    const std::vector<ListPosition> &found() const { return m_found; }
    /// Not all texts are read yet.
    bool isReading() const { return m_isReading; }

Q_SIGNALS:
    /// `found()` or what is found in there is another; not for `setText`.
    void changed(const StoreChange &change);

private:
    /// The texts of links that follow each other, in one piece, which goes back to the system.
    struct Page {
        std::vector<ListPosition> links;
        std::vector<std::uint32_t> ends; ///< where the text of each link ends
        std::string text;
    };

    void reload();
    Task<> load();
    void readPages();
    Page pageOf(const QList<CapturedLink> &links) const;
    void find(const Page &page);
    void findAll();
    void apply(const StoreChange &change);

    const ModelContext &m_context;
    LocalizedSearch m_search;
    std::string m_sought;
    std::vector<Page> m_pages;
    QHash<LinkId, Page> m_changed; ///< stands for the link in the pages; empty: it is gone
    std::vector<ListPosition> m_found;
    bool m_isReading = false;
    std::unique_ptr<Scope> m_loading;
};
