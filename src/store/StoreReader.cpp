// SPDX-License-Identifier: MIT
#include "StoreReader.h"

#include "LinkRows.h"
#include "ReadStore.h"
#include "StoreDatabase.h"

namespace
{

using Links = QList<CapturedLink>;

constexpr auto newestFirst =
    "SELECT " LINK_COLUMNS " FROM links WHERE isVisible ORDER BY copiedAt DESC, id DESC";
constexpr auto storeOrder = "SELECT " LINK_COLUMNS " FROM links WHERE isVisible ORDER BY seq";

constexpr auto newestPage = "SELECT " LINK_COLUMNS ", seq FROM links "
                            "WHERE isVisible AND (copiedAt, id) < (?2, ?3) "
                            "ORDER BY copiedAt DESC, id DESC LIMIT ?1";
constexpr auto storeOrderPage = "SELECT " LINK_COLUMNS ", seq FROM links "
                                "WHERE isVisible AND seq>?2 ORDER BY seq LIMIT ?1";
constexpr auto withUrl = "SELECT " LINK_COLUMNS " FROM links WHERE url=?";
constexpr auto withId = "SELECT " LINK_COLUMNS " FROM links WHERE id BETWEEN ? AND ? "
                        "ORDER BY id LIMIT ?";
constexpr int seqColumn = 7;
constexpr int pageSize = 1000;

Links readAll(StoreDatabase &store, const LinkFilter &filter)
{
    Links links;
    Query query = store.query(filter.order == LinkOrder::store ? storeOrder : newestFirst);
    while ((!filter.limit || links.size() < *filter.limit) && query->executeStep()) {
        const CapturedLink link = linkFrom(*query);
        if (!filter.accepts || filter.accepts(link))
            links.append(link);
    }
    return links;
}

Links linksOf(Query &query)
{
    Links links;
    while (query->executeStep())
        links.append(linkFrom(*query));
    return links;
}

/// Of no store none.
Expected<Links, StoreError> flattened(Expected<std::optional<Links>, StoreError> links)
{
    if (!links)
        return Unexpected{links.error()};
    return links->value_or(Links());
}

} // namespace

Expected<std::optional<Links>, StoreError> readVisibleLinks(const QString &folder,
                                                            const LinkFilter &filter)
{
    return readStore(folder, [&](StoreDatabase &store) { return readAll(store, filter); });
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

LinkPages::LinkPages(const QString &folder, LinkOrder order)
    : m_folder(folder)
    , m_order(order)
{
}

Expected<Links, StoreError> LinkPages::next()
{
    const auto page = readStore(m_folder, [this](StoreDatabase &store) { return read(store); });
    if (!page)
        return Unexpected{page.error()};
    if (!*page)
        return Links();
    m_place = (*page)->next;
    return (*page)->links;
}

LinkPages::Page LinkPages::read(StoreDatabase &store) const
{
    Query query = store.query(m_order == LinkOrder::store ? storeOrderPage : newestPage);
    query->bind(1, pageSize);
    if (m_order == LinkOrder::store) {
        query->bind(2, int64_t(m_place.seq));
    } else {
        bindInstant(*query, 2, m_place.position.copiedAt);
        bindId(*query, 3, m_place.position.id);
    }
    Page page{{}, m_place};
    while (query->executeStep()) {
        page.links.append(linkFrom(*query));
        page.next.seq = query->getColumn(seqColumn).getInt64();
    }
    if (!page.links.isEmpty())
        page.next.position = positionOf(page.links.last());
    return page;
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
    return {};
}
