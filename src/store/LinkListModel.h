#pragma once

#include "ModelContext.h"

#include <QAbstractListModel>

/// The visible links, newest first, as a list that follows the store row by row and never resets.
/// Pages are read by key as a view asks for more, so a long list costs what is shown. Main thread
/// only.
class LinkListModel : public QAbstractListModel
{
    Q_OBJECT
public:
    /// `context` outlives the model.
    explicit LinkListModel(ModelContext &context, QObject *parent = nullptr);

    /// The record shown in a loaded row.
    const CapturedLink &linkAt(int row) const;
    /// The row of a loaded link; -1 when it is not loaded.
    int rowOf(const LinkId &id) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    /// The display role is the title, else the URL.
    QVariant data(const QModelIndex &index, int role) const override;
    bool canFetchMore(const QModelIndex &parent) const override;
    void fetchMore(const QModelIndex &parent) override;
};
