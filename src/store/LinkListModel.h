// SPDX-License-Identifier: MIT
#pragma once

#include "ModelContext.h"

#include <QAbstractListModel>

#include <functional>

/// What a view shows of a text: at most the first 500 characters, because a title of megabytes
/// takes seconds to lay out.
QString shownText(const QString &text);

/// The visible links, newest first, as a list that follows the store row by row and never resets.
/// Pages are read by key as a view asks for more, so a long list costs what is shown. Main thread
/// only.
class LinkListModel : public QAbstractListModel
{
    Q_OBJECT
public:
    /// How many links are read at once.
    static constexpr int pageSize = 200;

    /// `context` outlives the model.
    explicit LinkListModel(ModelContext &context, QObject *parent = nullptr);

    /// The record shown in a loaded row.
    const CapturedLink &linkAt(int row) const { return m_links.at(row); }
    /// The row of a loaded link; -1 when it is not loaded.
    int rowOf(const LinkId &id) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    /// The display role is what is shown of the title, else of the URL.
    QVariant data(const QModelIndex &index, int role) const override;
    bool canFetchMore(const QModelIndex &parent) const override;
    void fetchMore(const QModelIndex &parent) override;

private:
    void apply(const StoreChange &change);
    void refresh(int row, const CapturedLink &link);
    void insertAll(const QList<LinkId> &ids);
    void insertInOrder(const CapturedLink &link);
    void removeRowsWhere(const std::function<bool(const CapturedLink &)> &isGone);

    ModelContext &m_context;
    QList<CapturedLink> m_links;
    bool m_isComplete = false; // no link lies behind the loaded ones
    bool m_isChanging = false; // whoever hears of a change cannot load more in the midst of it
};
