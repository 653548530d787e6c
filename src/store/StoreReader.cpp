// SPDX-License-Identifier: MIT
#include "StoreReader.h"

#include "LinkRows.h"
#include "StoreDatabase.h"

#include <QFileInfo>

namespace
{

using Links = QList<CapturedLink>;

constexpr auto newestFirst =
    "SELECT " LINK_COLUMNS " FROM links WHERE isVisible ORDER BY copiedAt DESC, id DESC";
constexpr auto storeOrder = "SELECT " LINK_COLUMNS " FROM links WHERE isVisible ORDER BY seq";

Expected<Links, StoreError> readOnce(const QString &folder, const LinkFilter &filter)
{
    const auto store = StoreDatabase::openReadOnly(folder);
    if (!store)
        return Unexpected{store.error()};
    return (*store)->attempt([&] {
        Links links;
        Query query = (*store)->query(filter.order == LinkOrder::store ? storeOrder : newestFirst);
        while ((!filter.limit || links.size() < *filter.limit) && query->executeStep()) {
            const CapturedLink link = linkFrom(*query);
            if (!filter.accepts || filter.accepts(link))
                links.append(link);
        }
        return links;
    });
}

} // namespace

Expected<std::optional<Links>, StoreError> readVisibleLinks(const QString &folder,
                                                            const LinkFilter &filter)
{
    const QString path = StoreDatabase::pathIn(folder);
    const auto hasLog = [&path] { return QFileInfo::exists(path + u"-wal"); };
    if (!QFileInfo::exists(path))
        return std::optional<Links>();

    const bool hadLog = hasLog();
    auto links = readOnce(folder, filter);
    if (hasLog() != hadLog)
        links = readOnce(folder, filter); // the program started or ended meanwhile
    if (!links)
        return Unexpected{links.error()};
    return std::optional(std::move(*links));
}

Expected<void, StoreError> checkIntegrity(const QString &folder)
{
    const auto store = StoreDatabase::openReadOnly(folder);
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
