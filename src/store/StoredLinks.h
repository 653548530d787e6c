// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"

#include <QList>

#include <optional>

class StoreDatabase;

/// The links of an open store, read row by row, so that damage costs the rows that it hit and no
/// others. Throws what SQLiteCpp throws for any other reason.
class StoredLinks
{
public:
    /// `store` outlives this.
    explicit StoredLinks(StoreDatabase &store)
        : m_store(store)
    {
    }

    /// The rows of all visible links, each once.
    QList<qint64> visible(LinkOrder order);
    /// The rows of all links in no order, each once.
    QList<qint64> all();
    /// Absent when the row is gone, or damaged.
    std::optional<CapturedLink> at(qint64 row);
    /// How many of the rows asked for were damaged.
    qint64 damaged() const { return m_damaged; }

private:
    bool append(const char *sql, QList<qint64> &rows);
    QList<qint64> rowsFound(const char *byIndex, const char *byTable);

    StoreDatabase &m_store;
    qint64 m_damaged = 0;
};
