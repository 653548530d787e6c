// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"
#include "StoreChange.h"

#include <QObject>
#include <QString>

#include <memory>
#include <vector>

class LinkSearch;
class ModelContext;

/// What a view shows of a text: at most the first 500 characters, because a title of megabytes
/// takes seconds to lay out.
QString shownText(const QString &text);

/// The visible links, or those of them that contain a text, newest first. How many there are is
/// known at once; where they stand is read as far as a view looks, and of the records nothing is
/// kept. Main thread only.
class LinkListModel : public QObject
{
    Q_OBJECT
public:
    /// How many places are read at first; a look behind them reads all others.
    static constexpr int pageSize = 200;

    /// `context` outlives the model.
    explicit LinkListModel(ModelContext &context, QObject *parent = nullptr);
    ~LinkListModel() override;

    int rowCount() const;
    /// Of a row that there is.
    ListPosition positionAt(int row);
    /// The row of the link at `position`; when it is not listed, the row of the next one behind it,
    /// which may be `rowCount()`. Knows only rows that were looked at.
    int rowOf(const ListPosition &position) const;
    bool contains(const ListPosition &position) const;

    /// Lists the links whose title, address or summary contains `text`, whatever its case; all
    /// links for an empty one. The first search reads them all, a few milliseconds at a time: what
    /// is found comes as it is read.
    void setSearchText(const QString &text);
    bool isSearching() const { return m_search != nullptr; }
    /// More may be found yet.
    bool isReading() const;
    /// Announces what has happened so far, so that no row changes before the loop turns.
    void catchUp();
    /// Reads anew when it is looked at, and lists all links.
    void startAnew();

Q_SIGNALS:
    /// Rows came, went or show other texts.
    void changed(const StoreChange &change);

private:
    const std::vector<ListPosition> &rows() const;
    void readBehindLast();
    void apply(const StoreChange &change);
    void readAnew();
    void follow(const StoreChange &change, bool isComplete);

    ModelContext &m_context;
    std::vector<ListPosition> m_known; ///< the first places, as far as they were read
    qsizetype m_count = 0; ///< of all
    std::unique_ptr<LinkSearch> m_search; ///< null while all links are listed
};
