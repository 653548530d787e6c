// SPDX-License-Identifier: MIT
#include "StoredLinks.h"

#include "LinkRows.h"
#include "StoreDatabase.h"

#include <QSet>

#include <algorithm>

namespace
{

constexpr auto rowWithSeq = "SELECT " LINK_COLUMNS " FROM links WHERE seq=?";
constexpr auto visibleByIndex = "SELECT seq FROM links WHERE isVisible "
                                "ORDER BY copiedAt DESC, id DESC";
constexpr auto visibleByTable = "SELECT seq FROM links WHERE +isVisible"; // "+": by no index
constexpr auto allByIndex = "SELECT seq FROM links ORDER BY copiedAt";
constexpr auto allByTable = "SELECT seq FROM links ORDER BY seq";

} // namespace

QList<qint64> StoredLinks::visible(LinkOrder order)
{
    QList<qint64> rows = rowsFound(visibleByIndex, visibleByTable);
    if (order == LinkOrder::store)
        std::sort(rows.begin(), rows.end());
    return rows;
}

QList<qint64> StoredLinks::all()
{
    return rowsFound(allByIndex, allByTable);
}

/// What an index and the table know, where one of them is damaged.
QList<qint64> StoredLinks::rowsFound(const char *byIndex, const char *byTable)
{
    QList<qint64> rows;
    if (!append(byIndex, rows))
        append(byTable, rows);
    QSet<qint64> seen;
    rows.removeIf([&seen](qint64 row) {
        const auto before = seen.size();
        seen.insert(row);
        return seen.size() == before;
    });
    return rows;
}

/// False when the reading ended at damage.
bool StoredLinks::append(const char *sql, QList<qint64> &rows)
{
    try {
        Query query = m_store.query(sql);
        while (query->executeStep())
            rows.append(query->getColumn(0).getInt64());
        return true;
    } catch (const SQLite::Exception &exception) {
        if (storeError(exception).kind != StoreError::Kind::damaged)
            throw;
        return false;
    }
}

std::optional<CapturedLink> StoredLinks::at(qint64 row)
{
    try {
        Query query = m_store.query(rowWithSeq);
        query->bind(1, int64_t(row));
        if (!query->executeStep())
            return std::nullopt;
        if (auto link = linkFrom(*query))
            return link;
    } catch (const SQLite::Exception &exception) {
        if (storeError(exception).kind != StoreError::Kind::damaged)
            throw;
    }
    ++m_damaged;
    return std::nullopt;
}
