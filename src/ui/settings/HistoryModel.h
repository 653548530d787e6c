// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

class ModelContext;

/// How much is stored, and the way to delete it all. Main thread only.
class HistoryModel : public QObject
{
    Q_OBJECT
public:
    /// `modelContext` outlives the model.
    explicit HistoryModel(ModelContext &modelContext, QObject *parent = nullptr);

    /// Of the stored links, the hidden ones included.
    qint64 count() const;
    /// Deletes every link.
    void clear();

Q_SIGNALS:
    void changed();

private:
    ModelContext &m_modelContext;
};
