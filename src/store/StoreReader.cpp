// SPDX-License-Identifier: MIT
#include "StoreReader.h"

#include "LinkRows.h"
#include "ReadStore.h"
#include "StoreDatabase.h"
#include "StoredLinks.h"

using namespace Qt::StringLiterals;

namespace
{

using Links = QList<CapturedLink>;

constexpr auto withUrl = "SELECT " LINK_COLUMNS " FROM links WHERE url=?";
constexpr auto withId = "SELECT " LINK_COLUMNS " FROM links WHERE id BETWEEN ? AND ? "
                        "ORDER BY id LIMIT ?";
constexpr qsizetype pageSize =
    1000; // between two, nothing is held open, so that the log can shrink

Links linksOf(Query &query)
{
    Links links;
    while (query->executeStep()) {
        if (const auto link = linkFrom(*query))
            links.append(*link);
    }
    return links;
}

/// Of no store none.
template <typename T>
Expected<T, StoreError> flattened(Expected<std::optional<T>, StoreError> found)
{
    if (!found)
        return Unexpected{found.error()};
    return found->value_or(T());
}

struct Page {
    Links links;
    qint64 damaged = 0;
};

Page pageOf(StoreDatabase &store, const QList<qint64> &rows)
{
    Page page;
    StoredLinks stored(store);
    for (const qint64 row : rows) {
        if (const auto link = stored.at(row); link && link->isVisible)
            page.links.append(*link);
    }
    page.damaged = stored.damaged();
    return page;
}

} // namespace

Expected<qint64, StoreError>
forEachVisibleLink(const QString &folder, LinkOrder order,
                   const std::function<bool(const CapturedLink &)> &take)
{
    const auto rows = flattened(readStore(
        folder, [order](StoreDatabase &store) { return StoredLinks(store).visible(order); }));
    if (!rows)
        return Unexpected{rows.error()};
    qint64 damaged = 0;
    for (qsizetype first = 0; first < rows->size(); first += pageSize) {
        const auto page = readStore(folder, [&](StoreDatabase &store) {
            return pageOf(store, rows->mid(first, pageSize));
        });
        if (!page)
            return Unexpected{page.error()};
        if (!*page)
            return Unexpected{StoreError{StoreError::Kind::gone, folder}};
        damaged += (*page)->damaged;
        for (const CapturedLink &link : (*page)->links) {
            if (!take(link))
                return damaged;
        }
    }
    return damaged;
}

Expected<Links, StoreError> readLinksWithUrl(const QString &folder, const QString &url)
{
    return flattened(readStore(folder, [&url](StoreDatabase &store) {
        Query query = store.query(withUrl);
        bindText(*query, 1, url);
        return linksOf(query);
    }));
}

Expected<Links, StoreError> readLinksWithId(const QString &folder, const QString &digits, int limit)
{
    const auto idFilledWith = [&digits](QChar digit) {
        return QUuid::fromRfc4122(QByteArray::fromHex(digits.leftJustified(32, digit).toLatin1()));
    };
    return flattened(readStore(folder, [&](StoreDatabase &store) {
        Query query = store.query(withId);
        bindId(*query, 1, idFilledWith(u'0'));
        bindId(*query, 2, idFilledWith(u'f'));
        query->bind(3, limit);
        return linksOf(query);
    }));
}

Expected<void, StoreError> checkIntegrity(const QString &folder)
{
    return checkStoreFile(StoreDatabase::pathIn(folder));
}

Expected<void, StoreError> checkStoreFile(const QString &path)
{
    const auto store = StoreDatabase::openFileReadOnly(path);
    if (!store)
        return Unexpected{store.error()};
    const auto verdict = (*store)->attempt([&] {
        Query query = (*store)->query("PRAGMA quick_check(1)");
        query->executeStep();
        return textFrom(query->getColumn(0));
    });
    if (!verdict)
        return Unexpected{verdict.error()};
    if (*verdict != u"ok")
        return Unexpected{StoreError{StoreError::Kind::damaged, *verdict}};
    const auto damaged = (*store)->attempt([&] {
        StoredLinks links(**store);
        for (const qint64 row : links.all())
            links.at(row);
        return links.damaged();
    });
    if (!damaged)
        return Unexpected{damaged.error()};
    if (*damaged > 0)
        return Unexpected{
            StoreError{StoreError::Kind::damaged, u"%1 links cannot be read"_s.arg(*damaged)}};
    return {};
}
