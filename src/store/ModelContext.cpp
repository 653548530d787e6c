#include "ModelContext.h"

#include "Clock.h"
#include "DebugLog.h"
#include "LinkRows.h"
#include "StoreDatabase.h"

#include <SQLiteCpp/Transaction.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr auto retryInterval = 5s;

constexpr auto saveLink = "INSERT INTO links(" LINK_COLUMNS ") VALUES(?,?,?,?,?,?,?) "
                          "ON CONFLICT(id) DO UPDATE SET title=excluded.title, "
                          "summary=excluded.summary, isExported=excluded.isExported, "
                          "isVisible=excluded.isVisible";
constexpr auto hideLink = "UPDATE links SET isVisible=0 WHERE id=?";
constexpr auto hideExportedLink = "UPDATE links SET isVisible=0, isExported=1 WHERE id=?";
constexpr auto removeLink = "DELETE FROM links WHERE id=?";
constexpr auto removeOldLinks = "DELETE FROM links WHERE copiedAt<? RETURNING id";

constexpr auto linkById = "SELECT " LINK_COLUMNS " FROM links WHERE id=?";
constexpr auto countByUrl = "SELECT count(*) FROM links WHERE url=?";
constexpr auto countVisibleSince = "SELECT count(*) FROM links WHERE isVisible AND copiedAt>=?";
constexpr auto countAll = "SELECT count(*), total(isVisible), "
                          "total(isVisible AND summary IS NULL) FROM links";
constexpr auto firstPage = "SELECT " LINK_COLUMNS " FROM links WHERE isVisible "
                           "ORDER BY copiedAt DESC, id DESC LIMIT ?";
constexpr auto nextPage = "SELECT " LINK_COLUMNS " FROM links "
                          "WHERE isVisible AND (copiedAt, id) < (?2, ?3) "
                          "ORDER BY copiedAt DESC, id DESC LIMIT ?1";
constexpr auto storeOrder = "SELECT " LINK_COLUMNS " FROM links WHERE isVisible ORDER BY seq";

constexpr auto insertDomain = "INSERT INTO excludedDomains(id, domain, addedAt) VALUES(?,?,?)";
constexpr auto removeDomain = "DELETE FROM excludedDomains WHERE id=?";
constexpr auto allDomains = "SELECT id, domain, addedAt FROM excludedDomains ORDER BY seq";

/// What `operation` returns, or why SQLite refused.
template <typename Operation>
auto attempt(Operation operation) -> Expected<decltype(operation()), StoreError>
{
    try {
        if constexpr (std::is_void_v<decltype(operation())>) {
            operation();
            return {};
        } else {
            return operation();
        }
    } catch (const SQLite::Exception &exception) {
        return Unexpected{storeError(exception)};
    }
}

void bindLink(SQLite::Statement &statement, const CapturedLink &link)
{
    bindId(statement, 1, link.id);
    bindText(statement, 2, link.url);
    bindText(statement, 3, link.title);
    bindText(statement, 4, link.summary);
    bindInstant(statement, 5, link.copiedAt);
    statement.bind(6, link.isExported);
    statement.bind(7, link.isVisible);
}

QList<CapturedLink> linksOf(Query &query)
{
    QList<CapturedLink> links;
    while (query->executeStep())
        links.append(linkFrom(*query));
    return links;
}

} // namespace

ModelContext::ModelContext(StoreDatabase &database, Clock &clock)
    : m_database(database)
    , m_clock(clock)
{
}

ModelContext::~ModelContext()
{
    if (m_unsaved.isEmpty())
        return;
    if (const auto written = writeUnsaved(); !written)
        debugLog(u"Links are lost, the store cannot be written: "_s + description(written.error()));
}

void ModelContext::insert(const CapturedLink &link)
{
    m_unsaved.keepNew(link);
    saveUnsaved();
    ++m_counts.stored;
    m_counts.visible += link.isVisible ? 1 : 0;
    m_counts.visibleWithoutSummary += link.isVisible && !link.summary ? 1 : 0;
    m_changes.noteInserted(link.id);
    announceLater();
}

void ModelContext::setTitle(const LinkId &id, const QString &title)
{
    update(id, &CapturedLink::title, title);
}

void ModelContext::setSummary(const LinkId &id, const QString &summary)
{
    update(id, &CapturedLink::summary, summary);
}

void ModelContext::update(const LinkId &id, std::optional<QString> CapturedLink::*field,
                          const QString &text)
{
    auto link = this->link(id);
    if (!link)
        return;
    const bool hadSummary = link->summary.has_value();
    *link.*field = text;
    m_unsaved.keepChanged(*link);
    saveUnsaved();
    m_counts.visibleWithoutSummary -= link->isVisible && !hadSummary && link->summary ? 1 : 0;
    m_changes.noteUpdated(id);
    announceLater();
}

void ModelContext::saveUnsaved()
{
    const bool hadFailed = hasUnsavedChanges();
    if (const auto written = writeUnsaved(); written) {
        m_unsaved.forgetAll();
        m_retry.reset();
    } else {
        debugLog(u"Failed to save: "_s + description(written.error()));
        m_retry = m_clock.after(retryInterval, [this] { saveUnsaved(); });
    }
    if (hasUnsavedChanges() != hadFailed)
        Q_EMIT hasUnsavedChangesChanged();
}

ModelContext::Result ModelContext::writeUnsaved()
{
    return attempt([this] {
        SQLite::Transaction transaction(m_database.connection());
        for (const CapturedLink &link : m_unsaved.inOrderOfCopying()) {
            Query save = m_database.query(saveLink);
            bindLink(*save, link);
            save->exec();
        }
        transaction.commit();
    });
}

ModelContext::Result ModelContext::hide(const QList<LinkId> &ids)
{
    const Result hidden = changeEach(hideLink, ids);
    if (!hidden)
        return hidden;
    m_unsaved.changeEach(ids, [](CapturedLink &link) { link.isVisible = false; });
    for (const LinkId &id : ids)
        m_changes.noteUpdated(id);
    return takeCounts();
}

ModelContext::Result ModelContext::hideExported(const QList<LinkId> &ids)
{
    const Result hidden = changeEach(hideExportedLink, ids);
    if (!hidden)
        return hidden;
    m_unsaved.changeEach(ids, [](CapturedLink &link) {
        link.isVisible = false;
        link.isExported = true;
    });
    for (const LinkId &id : ids)
        m_changes.noteUpdated(id);
    return takeCounts();
}

ModelContext::Result ModelContext::remove(const QList<LinkId> &ids)
{
    const Result removed = changeEach(removeLink, ids);
    if (!removed)
        return removed;
    for (const LinkId &id : ids) {
        m_unsaved.forget(id);
        m_changes.noteRemoved(id);
    }
    return takeCounts();
}

/// Runs `sql`, which takes an id, for each of `ids`: for all of them or for none.
ModelContext::Result ModelContext::changeEach(std::string_view sql, const QList<LinkId> &ids)
{
    announceLater();
    return attempt([&] {
        SQLite::Transaction transaction(m_database.connection());
        for (const LinkId &id : ids) {
            Query change = m_database.query(sql);
            bindId(*change, 1, id);
            change->exec();
        }
        transaction.commit();
    });
}

ModelContext::Result ModelContext::removeAll()
{
    const auto removed = removeCopiedBefore(Instant::max());
    return removed ? Result() : Unexpected{removed.error()};
}

Expected<qint64, StoreError> ModelContext::removeCopiedBefore(Instant cutoff)
{
    const auto stored = attempt([&] {
        QList<LinkId> ids;
        Query remove = m_database.query(removeOldLinks);
        bindInstant(*remove, 1, cutoff);
        while (remove->executeStep())
            ids.append(idFrom(remove->getColumn(0)));
        return ids;
    });
    if (!stored)
        return Unexpected{stored.error()};

    const QList<LinkId> removed = *stored + m_unsaved.takeNewCopiedBefore(cutoff);
    for (const LinkId &id : removed) {
        m_unsaved.forget(id);
        m_changes.noteRemoved(id);
    }
    announceLater();
    if (const auto counted = takeCounts(); !counted)
        return Unexpected{counted.error()};
    return removed.size();
}

std::optional<CapturedLink> ModelContext::link(const LinkId &id) const
{
    const auto *const unsaved = m_unsaved.find(id);
    return unsaved ? std::optional(unsaved->link) : stored(id);
}

/// As it is on disk.
std::optional<CapturedLink> ModelContext::stored(const LinkId &id) const
{
    const auto found = attempt([&]() -> std::optional<CapturedLink> {
        Query query = m_database.query(linkById);
        bindId(*query, 1, id);
        return query->executeStep() ? std::optional(linkFrom(*query)) : std::nullopt;
    });
    if (!found)
        debugLog(u"Failed to read a link: "_s + description(found.error()));
    return found ? *found : std::nullopt;
}

Expected<qint64, StoreError> ModelContext::countWithUrl(const QString &url) const
{
    const auto count = attempt([&]() -> qint64 {
        Query query = m_database.query(countByUrl);
        bindText(*query, 1, url);
        query->executeStep();
        return query->getColumn(0).getInt64();
    });
    if (!count)
        return count;
    return *count
        + m_unsaved.countNew([&url](const CapturedLink &link) { return link.url == url; });
}

ModelContext::Links ModelContext::visibleNewestFirst(const std::optional<ListPosition> &after,
                                                     int limit) const
{
    auto page = attempt([&] {
        Query query = m_database.query(after ? nextPage : firstPage);
        query->bind(1, limit);
        if (after) {
            bindInstant(*query, 2, after->copiedAt);
            bindId(*query, 3, after->id);
        }
        return linksOf(query);
    });
    if (page)
        m_unsaved.correctPage(*page, after, limit);
    return page;
}

ModelContext::Links ModelContext::visibleInStoreOrder() const
{
    auto links = attempt([&] {
        Query query = m_database.query(storeOrder);
        return linksOf(query);
    });
    if (links)
        m_unsaved.correctStoreOrder(*links);
    return links;
}

qint64 ModelContext::visibleSince(Instant since) const
{
    const auto count = attempt([&]() -> qint64 {
        Query query = m_database.query(countVisibleSince);
        bindInstant(*query, 1, since);
        query->executeStep();
        return query->getColumn(0).getInt64();
    });
    if (!count)
        debugLog(u"Failed to count links: "_s + description(count.error()));
    return (count ? *count : 0) + m_unsaved.countNew([since](const CapturedLink &link) {
        return link.isVisible && link.copiedAt >= since;
    });
}

ModelContext::Result ModelContext::takeCounts()
{
    const auto counts = attempt([this] {
        Query query = m_database.query(countAll);
        query->executeStep();
        return LinkCounts{query->getColumn(0).getInt64(), query->getColumn(1).getInt64(),
                          query->getColumn(2).getInt64()};
    });
    if (!counts)
        return Unexpected{counts.error()};
    m_counts = *counts;
    for (const auto &[link, isNew] : m_unsaved.all()) {
        const auto row = isNew ? std::nullopt : stored(link.id);
        const auto lacksSummary = [](const CapturedLink &of) {
            return of.isVisible && !of.summary;
        };
        m_counts.stored += isNew ? 1 : 0;
        m_counts.visible += isNew && link.isVisible ? 1 : 0;
        m_counts.visibleWithoutSummary += int(lacksSummary(link)) - int(row && lacksSummary(*row));
    }
    return {};
}

ModelContext::Result ModelContext::insert(const ExcludedDomain &domain)
{
    const Result inserted = attempt([&] {
        Query insert = m_database.query(insertDomain);
        bindId(*insert, 1, domain.id);
        bindText(*insert, 2, domain.domain);
        bindInstant(*insert, 3, domain.addedAt);
        insert->exec();
    });
    if (inserted)
        Q_EMIT excludedDomainsChanged();
    return inserted;
}

ModelContext::Result ModelContext::removeExcludedDomain(const QUuid &id)
{
    const Result removed = attempt([&] {
        Query remove = m_database.query(removeDomain);
        bindId(*remove, 1, id);
        remove->exec();
    });
    if (removed)
        Q_EMIT excludedDomainsChanged();
    return removed;
}

Expected<QList<ExcludedDomain>, StoreError> ModelContext::excludedDomains() const
{
    return attempt([this] {
        QList<ExcludedDomain> domains;
        Query query = m_database.query(allDomains);
        while (query->executeStep())
            domains.append({idFrom(query->getColumn(0)), textFrom(query->getColumn(1)),
                            instantFrom(query->getColumn(2))});
        return domains;
    });
}

void ModelContext::announceLater()
{
    if (!std::exchange(m_isAnnouncing, true))
        QMetaObject::invokeMethod(this, &ModelContext::announceChanges, Qt::QueuedConnection);
}

void ModelContext::announceChanges()
{
    m_isAnnouncing = false;
    if (!m_changes.isEmpty())
        Q_EMIT changed(m_changes.take());
}
