// SPDX-License-Identifier: MIT
#include "ModelContext.h"

#include "Clock.h"
#include "DebugLog.h"
#include "LinkRows.h"
#include "StoreDatabase.h"

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
constexpr auto removeOldLinks = "DELETE FROM links WHERE copiedAt<? "
                                "RETURNING id, isVisible, summary IS NOT NULL";
constexpr auto removeAllLinks = "DELETE FROM links";

constexpr auto allStates = "SELECT id, isVisible, summary IS NOT NULL FROM links";
constexpr auto stateById = "SELECT id, isVisible, summary IS NOT NULL FROM links WHERE id=?";
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
constexpr auto positionsBehind = "SELECT copiedAt, id FROM links "
                                 "WHERE isVisible AND (copiedAt, id) < (?2, ?3) "
                                 "ORDER BY copiedAt DESC, id DESC LIMIT ?1";
constexpr auto idsWithoutSummary = "SELECT id FROM links WHERE isVisible AND summary IS NULL "
                                   "ORDER BY copiedAt DESC, id DESC";
constexpr auto storeOrderPage = "SELECT " LINK_COLUMNS ", seq FROM links "
                                "WHERE isVisible AND seq>?2 ORDER BY seq LIMIT ?1";
constexpr int seqColumn = 7;

constexpr auto insertDomain = "INSERT INTO excludedDomains(id, domain, addedAt) VALUES(?,?,?)";
constexpr auto removeDomain = "DELETE FROM excludedDomains WHERE id=?";
constexpr auto allDomains = "SELECT id, domain, addedAt FROM excludedDomains ORDER BY seq";

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

/// Of a row of the id and the two fields.
LinkState stateFrom(SQLite::Statement &row)
{
    return {row.getColumn(1).getInt() != 0, row.getColumn(2).getInt() != 0};
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
    if (const auto written = write(m_unsaved.inOrder()); !written)
        debugLog(u"Links are lost, the store cannot be written: "_s + description(written.error()));
}

void ModelContext::insert(const CapturedLink &link)
{
    m_unsaved.keepNew(link);
    saveUnsaved();
    noteInserted(link);
}

ModelContext::Result ModelContext::insertAll(const QList<CapturedLink> &links)
{
    const Result written = write(links);
    if (!written)
        return written;
    for (const CapturedLink &link : links)
        noteInserted(link);
    return {};
}

void ModelContext::noteInserted(const CapturedLink &link)
{
    m_counts += countsOf(stateOf(link));
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
    m_counts -= countsOf(stateOf(*link));
    *link.*field = text;
    m_counts += countsOf(stateOf(*link));
    m_unsaved.keepChanged(*link);
    saveUnsaved();
    m_changes.noteUpdated(id);
    announceLater();
}

void ModelContext::saveUnsaved()
{
    const auto written = write(m_unsaved.inOrder());
    if (written)
        m_unsaved.forgetAll();
    else
        debugLog(u"Failed to save: "_s + description(written.error()));
    watchUnsaved();
}

/// Tries again later for as long as something is unsaved.
void ModelContext::watchUnsaved()
{
    const bool had = hasUnsavedChanges();
    m_retry =
        m_unsaved.isEmpty() ? nullptr : m_clock.after(retryInterval, [this] { saveUnsaved(); });
    if (hasUnsavedChanges() != had)
        Q_EMIT hasUnsavedChangesChanged();
}

ModelContext::Result ModelContext::write(const QList<CapturedLink> &links)
{
    return m_database.transaction([&] {
        for (const CapturedLink &link : links) {
            Query save = m_database.query(saveLink);
            bindLink(*save, link);
            save->exec();
        }
    });
}

ModelContext::Result ModelContext::hide(const QList<LinkId> &ids)
{
    return hideEach(ids, hideLink, [](CapturedLink &link) { link.isVisible = false; });
}

ModelContext::Result ModelContext::hideExported(const QList<LinkId> &ids)
{
    return hideEach(ids, hideExportedLink, [](CapturedLink &link) {
        link.isVisible = false;
        link.isExported = true;
    });
}

/// Writes many with `sql`, for all that `change` does to each would be to keep them all in memory.
ModelContext::Result ModelContext::hideEach(const QList<LinkId> &ids, const char *sql,
                                            const LinkChange &change)
{
    const auto before = states(ids);
    if (!before)
        return Unexpected{before.error()};
    if (before->isEmpty())
        return {};
    if (runForEach(sql, ids)) // in the caller's order, which is mostly that of the rows on disk
        m_unsaved.changeEach(ids, change);
    else
        keepChanged(ids, change);
    for (auto state = before->begin(); state != before->end(); ++state) {
        m_counts -= countsOf(*state);
        m_counts += countsOf({false, state->hasSummary});
        m_changes.noteUpdated(state.key());
    }
    announceLater();
    return {};
}

/// Keeps in memory what could not be written, and tries again.
void ModelContext::keepChanged(const QList<LinkId> &ids, const LinkChange &change)
{
    for (const LinkId &id : ids) {
        if (auto link = this->link(id)) {
            change(*link);
            m_unsaved.keepChanged(*link);
        }
    }
    saveUnsaved();
}

ModelContext::Result ModelContext::remove(const QList<LinkId> &ids)
{
    const auto before = states(ids);
    if (!before)
        return Unexpected{before.error()};
    const Result removed = runForEach(removeLink, ids);
    if (removed)
        finishRemoval(*before);
    return removed;
}

/// Runs `sql`, which takes an id, for each of `ids`: for all of them or for none.
ModelContext::Result ModelContext::runForEach(const char *sql, const QList<LinkId> &ids)
{
    return m_database.transaction([&] {
        for (const LinkId &id : ids) {
            Query change = m_database.query(sql);
            bindId(*change, 1, id);
            change->exec();
        }
    });
}

ModelContext::Result ModelContext::removeAll()
{
    States removed;
    const auto written = m_database.transaction([&] {
        removed = shownStates(allStates, std::nullopt);
        m_database.query(removeAllLinks)->exec(); // without a condition it drops whole pages
    });
    if (!written)
        return written;
    for (const auto &[link, isNew, order] : m_unsaved.all())
        removed.insert(link.id, stateOf(link));
    finishRemoval(removed);
    return {};
}

Expected<qint64, StoreError> ModelContext::removeCopiedBefore(Instant cutoff)
{
    States removed;
    const auto written =
        m_database.transaction([&] { removed = shownStates(removeOldLinks, cutoff); });
    if (!written)
        return Unexpected{written.error()};
    for (const auto &[link, isNew, order] : m_unsaved.all()) {
        if (link.copiedAt < cutoff)
            removed.insert(link.id, stateOf(link));
    }
    finishRemoval(removed);
    return removed.size();
}

void ModelContext::finishRemoval(const States &removed)
{
    if (removed.isEmpty())
        return;
    for (auto state = removed.begin(); state != removed.end(); ++state) {
        m_counts -= countsOf(*state);
        m_unsaved.forget(state.key());
        m_changes.noteRemoved(state.key());
    }
    watchUnsaved();
    announceLater();
}

/// Of those of `ids` that exist, what all queries show of them.
Expected<ModelContext::States, StoreError> ModelContext::states(const QList<LinkId> &ids) const
{
    return m_database.attempt([&] {
        States states;
        for (const LinkId &id : ids) {
            Query query = m_database.query(stateById);
            bindId(*query, 1, id);
            if (query->executeStep())
                states.insert(id, shownState(id, stateFrom(*query)));
            else if (const auto *const unsaved = m_unsaved.find(id))
                states.insert(id, stateOf(unsaved->link));
        }
        return states;
    });
}

/// Of the rows that `sql` hands out, what all queries show of them. Throws what SQLiteCpp throws.
ModelContext::States ModelContext::shownStates(const char *sql, std::optional<Instant> cutoff) const
{
    Query query = m_database.query(sql);
    if (cutoff)
        bindInstant(*query, 1, *cutoff);
    States states;
    while (query->executeStep()) {
        const LinkId id = idFrom(query->getColumn(0));
        states.insert(id, shownState(id, stateFrom(*query)));
    }
    return states;
}

LinkState ModelContext::shownState(const LinkId &id, const LinkState &stored) const
{
    const auto *const unsaved = m_unsaved.find(id);
    return unsaved ? stateOf(unsaved->link) : stored;
}

std::optional<CapturedLink> ModelContext::link(const LinkId &id) const
{
    const auto *const unsaved = m_unsaved.find(id);
    return unsaved ? std::optional(unsaved->link) : stored(id);
}

/// As it is on disk.
std::optional<CapturedLink> ModelContext::stored(const LinkId &id) const
{
    const auto found = m_database.attempt([&]() -> std::optional<CapturedLink> {
        Query query = m_database.query(linkById);
        bindId(*query, 1, id);
        return query->executeStep() ? std::optional(linkFrom(*query)) : std::nullopt;
    });
    if (!found)
        debugLog(u"Failed to read a link: "_s + description(found.error()));
    return found ? *found : std::nullopt;
}

ModelContext::Result ModelContext::readTogether(const std::function<void()> &reads) const
{
    return m_database.transaction(reads);
}

Expected<qint64, StoreError> ModelContext::countWithUrl(const QString &url) const
{
    const auto count = m_database.attempt([&]() -> qint64 {
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
    return m_database.attempt([&] {
        QList<CapturedLink> page;
        auto position = after;
        for (int missing = limit; missing > 0; missing = limit - int(page.size())) {
            QList<CapturedLink> rows = storedNewestFirst(position, missing);
            const bool isEnd = rows.size() < missing;
            if (!rows.isEmpty())
                position = positionOf(rows.last());
            m_unsaved.correctRows(rows); // some may be hidden in memory alone
            page += rows;
            if (isEnd)
                break;
        }
        m_unsaved.addNew(page, after, limit);
        return page;
    });
}

QList<CapturedLink> ModelContext::storedNewestFirst(const std::optional<ListPosition> &after,
                                                    int limit) const
{
    Query query = m_database.query(after ? nextPage : firstPage);
    query->bind(1, limit);
    if (after) {
        bindInstant(*query, 2, after->copiedAt);
        bindId(*query, 3, after->id);
    }
    return linksOf(query);
}

Expected<std::vector<ListPosition>, StoreError>
ModelContext::visiblePositions(const std::optional<ListPosition> &after, int limit) const
{
    return m_database.attempt([&] {
        const ListPosition last = after.value_or(ListPosition{Instant::max(), {}});
        std::vector<ListPosition> positions;
        Query query = m_database.query(positionsBehind);
        query->bind(1, m_unsaved.isEmpty() ? limit : -1);
        bindInstant(*query, 2, last.copiedAt);
        bindId(*query, 3, last.id);
        while (query->executeStep())
            positions.push_back({instantFrom(query->getColumn(0)), idFrom(query->getColumn(1))});
        m_unsaved.correctPositions(positions, last, limit);
        return positions;
    });
}

QList<LinkId> ModelContext::visibleWithoutSummary() const
{
    auto ids = m_database.attempt([this] {
        QList<LinkId> found;
        Query query = m_database.query(idsWithoutSummary);
        while (query->executeStep())
            found.append(idFrom(query->getColumn(0)));
        return found;
    });
    if (!ids) {
        debugLog(u"Failed to read links: "_s + description(ids.error()));
        return {};
    }
    ids->removeIf([this](const LinkId &id) { return m_unsaved.find(id) != nullptr; });
    for (const CapturedLink &link : m_unsaved.inOrder()) {
        if (link.isVisible && !link.summary)
            ids->prepend(link.id); // what could not be saved is what came last
    }
    return *ids;
}

ModelContext::Links ModelContext::visibleInStoreOrder(std::optional<qint64> &place, int limit) const
{
    return m_database.attempt([&] {
        QList<CapturedLink> page;
        Query query = m_database.query(storeOrderPage);
        query->bind(1, limit);
        query->bind(2, int64_t(*place));
        while (query->executeStep()) {
            page.append(linkFrom(*query));
            place = query->getColumn(seqColumn).getInt64();
        }
        if (page.size() == limit) {
            m_unsaved.correctRows(page);
        } else {
            m_unsaved.correctStoreOrder(page); // with the new ones, which come last
            place.reset();
        }
        return page;
    });
}

qint64 ModelContext::visibleSince(Instant since) const
{
    const auto isCounted = [since](const CapturedLink &link) {
        return link.isVisible && link.copiedAt >= since;
    };
    const auto count = m_database.attempt([&] {
        Query query = m_database.query(countVisibleSince);
        bindInstant(*query, 1, since);
        query->executeStep();
        qint64 visible = query->getColumn(0).getInt64();
        for (const auto &[link, isNew, order] : m_unsaved.all()) {
            const auto row = isNew ? std::nullopt : stored(link.id);
            visible += int(isCounted(link)) - int(row && isCounted(*row));
        }
        return visible;
    });
    if (!count)
        debugLog(u"Failed to count links: "_s + description(count.error()));
    return count ? *count : 0;
}

ModelContext::Result ModelContext::takeCounts()
{
    return m_database.attempt([this] {
        Query query = m_database.query(countAll);
        query->executeStep();
        m_counts = {query->getColumn(0).getInt64(), query->getColumn(1).getInt64(),
                    query->getColumn(2).getInt64()};
    });
}

ModelContext::Result ModelContext::insert(const ExcludedDomain &domain)
{
    const Result inserted = m_database.attempt([&] {
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
    const Result removed = m_database.attempt([&] {
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
    return m_database.attempt([this] {
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
