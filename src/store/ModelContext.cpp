// SPDX-License-Identifier: MIT
#include "ModelContext.h"

#include "Clock.h"
#include "DebugLog.h"
#include "LinkRows.h"
#include "StoreDatabase.h"
#include "StoredLinks.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

constexpr auto retryInterval = 5s;
constexpr auto sweepDelay = 1s;

// What cannot be written is kept in a table in memory, and a view puts it in front of the stored
// rows, so that whatever reads "links" reads both. A kept link that has a row bears its number; a
// new one bears a number that no row reaches.
#define FIRST_NEW "4611686018427387904"
constexpr qint64 firstNew = qint64(1) << 62;
constexpr auto beginKeeping = R"(
CREATE TABLE temp.unsaved(
    seq INTEGER PRIMARY KEY, id BLOB NOT NULL UNIQUE, url TEXT, title TEXT, summary TEXT,
    copiedAt INTEGER, isExported INTEGER, isVisible INTEGER);
CREATE VIEW temp.links AS
    SELECT seq, id, url, title, summary, copiedAt, isExported, isVisible FROM main.links
    WHERE seq NOT IN (SELECT seq FROM unsaved)
    UNION ALL SELECT seq, id, url, title, summary, copiedAt, isExported, isVisible FROM unsaved;
)";
constexpr auto endKeeping = "DROP VIEW temp.links; DROP TABLE temp.unsaved";

constexpr auto addLink = "INSERT INTO main.links(" LINK_COLUMNS ") VALUES(?,?,?,?,?,?,?)";
constexpr auto keepNew = "INSERT INTO unsaved(" LINK_COLUMNS ", seq) VALUES(?,?,?,?,?,?,?, (SELECT "
                         "max(" FIRST_NEW ", coalesce(max(seq) + 1, 0)) FROM unsaved))";
constexpr auto keepStored = "INSERT OR IGNORE INTO unsaved(seq, " LINK_COLUMNS ") "
                            "SELECT seq, " LINK_COLUMNS " FROM main.links WHERE id=?";
constexpr auto keptLinks = "SELECT " LINK_COLUMNS " FROM unsaved ORDER BY seq";
constexpr auto keptRows = "SELECT seq FROM unsaved ORDER BY seq";
constexpr auto saveNew = "INSERT INTO main.links(" LINK_COLUMNS ") "
                         "SELECT " LINK_COLUMNS " FROM unsaved WHERE seq=?";
constexpr auto saveStored = "UPDATE main.links SET title=kept.title, summary=kept.summary, "
                            "isExported=kept.isExported, isVisible=kept.isVisible "
                            "FROM unsaved AS kept WHERE kept.seq=?1 AND links.seq=?1";
constexpr auto forgetKept = "DELETE FROM unsaved WHERE seq=?";

constexpr auto removeLink = "DELETE FROM main.links WHERE id=?";
constexpr auto removeKeptLink = "DELETE FROM unsaved WHERE id=?";
constexpr auto removeOldLinks = "DELETE FROM main.links WHERE copiedAt<?";
constexpr auto removeOldKeptLinks = "DELETE FROM unsaved WHERE copiedAt<?";
constexpr auto removeAllLinks = "DELETE FROM main.links"; // no condition: it drops whole pages
constexpr auto removeAllKeptLinks = "DELETE FROM unsaved";

constexpr auto allIds = "SELECT id FROM links";
constexpr auto oldIds = "SELECT id FROM links WHERE copiedAt<?";
constexpr auto stateById = "SELECT isVisible, summary IS NOT NULL FROM links WHERE id=?";
constexpr auto linkById = "SELECT " LINK_COLUMNS " FROM links WHERE id=?";
constexpr auto countByUrl = "SELECT count(*) FROM links WHERE url=?";
constexpr auto countVisibleSince = "SELECT count(*) FROM links WHERE isVisible AND copiedAt>=?";
// Each by an index of its own, which is a tenth of the table.
constexpr auto countAll = "SELECT (SELECT count(*) FROM links), "
                          "(SELECT count(*) FROM links WHERE isVisible), "
                          "(SELECT count(*) FROM links WHERE isVisible AND summary IS NULL)";
constexpr auto positionsBehind = "SELECT copiedAt, id FROM links "
                                 "WHERE isVisible AND (copiedAt, id) < (?, ?) "
                                 "ORDER BY copiedAt DESC, id DESC";
constexpr auto idsWithoutSummary = "SELECT id FROM links WHERE isVisible AND summary IS NULL "
                                   "ORDER BY copiedAt DESC, id DESC";

constexpr auto insertDomain = "INSERT INTO excludedDomains(id, domain, addedAt) VALUES(?,?,?)";
constexpr auto removeDomain = "DELETE FROM excludedDomains WHERE id=?";
constexpr auto allDomains = "SELECT id, domain, addedAt FROM excludedDomains ORDER BY seq";

void logFailure(const ModelContext::Result &done)
{
    if (!done)
        debugLog(u"The store failed: "_s + description(done.error()));
}

/// Trying again one by one is of no use where nothing at all can be written.
bool mayBeOneRow(StoreError::Kind kind)
{
    return kind == StoreError::Kind::damaged || kind == StoreError::Kind::failed;
}

} // namespace

/// One change of links: what it does to a stored row, and to a kept one. Both statements take the
/// id first, and then the text, if there is one.
struct ModelContext::Change {
    const char *stored;
    const char *kept;
    LinkState (*after)(LinkState before);
};

#define ASSIGN(ASSIGNMENTS)                                                                        \
    "UPDATE main.links SET " ASSIGNMENTS " WHERE id=?1",                                           \
        "UPDATE unsaved SET " ASSIGNMENTS " WHERE id=?1"

ModelContext::ModelContext(StoreDatabase &database, Clock &clock)
    : m_database(database)
    , m_clock(clock)
{
}

ModelContext::~ModelContext()
{
    saveUnsaved();
}

void ModelContext::insert(const CapturedLink &link)
{
    if (m_isKeeping || !add({link})) {
        const Result kept = keep([&] {
            Query keep = m_database.query(keepNew);
            bindLink(*keep, link);
            keep->exec();
        });
        if (!kept)
            debugLog(u"A link is lost: "_s + description(kept.error()));
    }
    noteInserted(link);
}

ModelContext::Result ModelContext::insertAll(const QList<CapturedLink> &links)
{
    const Result written = add(links);
    if (!written)
        return written;
    for (const CapturedLink &link : links)
        noteInserted(link);
    return {};
}

ModelContext::Result ModelContext::add(const QList<CapturedLink> &links)
{
    return m_database.transaction([&] {
        for (const CapturedLink &link : links) {
            Query add = m_database.query(addLink);
            bindLink(*add, link);
            add->exec();
        }
    });
}

void ModelContext::noteInserted(const CapturedLink &link)
{
    adjustCounts({}, countsOf(stateOf(link)));
    m_changes.noteInserted(link.id);
    announceLater();
}

void ModelContext::setTitle(const LinkId &id, const QString &title)
{
    logFailure(change({id}, {ASSIGN("title=?2"), [](LinkState before) { return before; }}, title));
}

void ModelContext::setSummary(const LinkId &id, const QString &summary)
{
    const auto after = [](LinkState before) { return LinkState{before.isVisible, true}; };
    logFailure(change({id}, {ASSIGN("summary=?2"), after}, summary));
}

ModelContext::Result ModelContext::hide(const QList<LinkId> &ids)
{
    const auto after = [](LinkState before) { return LinkState{false, before.hasSummary}; };
    return change(ids, {ASSIGN("isVisible=0"), after}, std::nullopt);
}

ModelContext::Result ModelContext::hideExported(const QList<LinkId> &ids)
{
    const auto after = [](LinkState before) { return LinkState{false, before.hasSummary}; };
    return change(ids, {ASSIGN("isVisible=0, isExported=1"), after}, std::nullopt);
}

ModelContext::Result ModelContext::change(const QList<LinkId> &ids, const Change &change,
                                          const std::optional<QString> &text)
{
    const auto before = states(ids);
    if (!before)
        return Unexpected{before.error()};
    if (before->isEmpty())
        return {};
    const auto apply = [&](const char *sql, const LinkId &id) {
        Query query = m_database.query(sql);
        bindId(*query, 1, id);
        if (text)
            bindText(*query, 2, text);
        query->exec();
    };
    const auto write = [&] {
        for (const LinkId &id : ids) // in the caller's order, mostly that of the rows on disk
            apply(change.stored, id);
    };
    if (m_isKeeping || !m_database.transaction(write)) {
        const Result kept = keep([&] {
            for (const LinkId &id : ids) {
                run(keepStored, id);
                apply(change.kept, id);
            }
        });
        if (!kept)
            return kept;
    }
    for (auto state = before->begin(); state != before->end(); ++state) {
        adjustCounts(countsOf(*state), countsOf(change.after(*state)));
        m_changes.noteUpdated(state.key());
    }
    announceLater();
    return {};
}

/// Does `work` to what is kept in memory, and tries to save that.
ModelContext::Result ModelContext::keep(const std::function<void()> &work)
{
    const Result kept = m_database.atOnce([&] {
        if (!m_isKeeping)
            m_database.execute(beginKeeping);
        work();
    });
    m_isKeeping = m_isKeeping || kept;
    saveUnsaved();
    return kept;
}

void ModelContext::saveUnsaved()
{
    if (!m_isKeeping)
        return;
    const auto rows = m_database.attempt([this] {
        QList<qint64> kept;
        Query query = m_database.query(keptRows);
        while (query->executeStep())
            kept.append(query->getColumn(0).getInt64());
        return kept;
    });
    auto reason = rows ? save(*rows) : std::optional(rows.error());
    if (!reason) {
        if (const auto ended = m_database.attempt([&] { m_database.execute(endKeeping); }); ended)
            m_isKeeping = false;
        else
            reason = ended.error();
    }
    if (reason)
        debugLog(u"Failed to save: "_s + description(*reason));
    const auto kindOf = [](const auto &error) {
        return error ? std::optional(error->kind) : std::nullopt;
    };
    const bool isNews = kindOf(reason) != kindOf(m_unsavedReason);
    m_unsavedReason = reason;
    m_retry = reason ? m_clock.after(retryInterval, [this] { saveUnsaved(); }) : nullptr;
    if (isNews)
        Q_EMIT hasUnsavedChangesChanged();
}

/// Moves what it can of the kept `rows` into the store; why the others could not be written.
std::optional<StoreError> ModelContext::save(const QList<qint64> &rows)
{
    const Result saved = m_database.transaction([&] {
        for (const qint64 row : rows) {
            for (const char *const sql : {row < firstNew ? saveStored : saveNew, forgetKept}) {
                Query query = m_database.query(sql);
                query->bind(1, int64_t(row));
                query->exec();
            }
        }
    });
    if (saved)
        return std::nullopt;
    if (rows.size() < 2 || !mayBeOneRow(saved.error().kind))
        return saved.error();
    const auto first = save(rows.first(rows.size() / 2)); // one bad place takes no others with it
    const auto second = save(rows.sliced(rows.size() / 2));
    return first ? first : second;
}

ModelContext::Links ModelContext::unsavedLinks() const
{
    return m_database.attempt([this] {
        QList<CapturedLink> links;
        if (!m_isKeeping)
            return links;
        Query query = m_database.query(keptLinks);
        while (query->executeStep()) {
            if (const auto link = linkFrom(*query))
                links.append(*link);
        }
        return links;
    });
}

ModelContext::Result ModelContext::remove(const QList<LinkId> &ids)
{
    const auto before = states(ids);
    if (!before)
        return Unexpected{before.error()};
    const Result removed = m_database.transaction([&] {
        for (const LinkId &id : ids) {
            run(removeLink, id);
            if (m_isKeeping)
                run(removeKeptLink, id);
        }
    });
    if (!removed)
        return removed;
    for (const LinkState &state : *before)
        adjustCounts(countsOf(state), {});
    finishRemoval(before->keys());
    m_sweep = m_clock.after(sweepDelay, [this] { emptyLog(); }); // one for many
    return {};
}

ModelContext::Result ModelContext::removeAll()
{
    const auto removed = removeMany(std::nullopt);
    return removed ? Result() : Unexpected{removed.error()};
}

Expected<qint64, StoreError> ModelContext::removeCopiedBefore(Instant cutoff)
{
    return removeMany(cutoff);
}

/// All of them where there is no `cutoff`.
Expected<qint64, StoreError> ModelContext::removeMany(std::optional<Instant> cutoff)
{
    QList<LinkId> removed;
    const auto forRows = [&](const char *sql, const std::function<void(Query &)> &take) {
        Query query = m_database.query(sql);
        if (cutoff)
            bindInstant(*query, 1, *cutoff);
        while (query->executeStep())
            take(query);
    };
    const Result written = m_database.transaction([&] {
        forRows(cutoff ? oldIds : allIds, [&removed](Query &row) {
            if (const auto id = idFrom(row->getColumn(0)))
                removed.append(*id);
        });
        forRows(cutoff ? removeOldLinks : removeAllLinks, {});
        if (m_isKeeping)
            forRows(cutoff ? removeOldKeptLinks : removeAllKeptLinks, {});
    });
    if (!written)
        return Unexpected{written.error()};
    m_counts.reset();
    finishRemoval(removed);
    if (!removed.isEmpty())
        emptyLog();
    return removed.size();
}

void ModelContext::finishRemoval(const QList<LinkId> &removed)
{
    if (removed.isEmpty())
        return;
    for (const LinkId &id : removed)
        m_changes.noteRemoved(id);
    saveUnsaved(); // nothing may be left to save
    announceLater();
}

/// Until then, what was deleted stands in the log.
void ModelContext::emptyLog()
{
    m_sweep.reset();
    logFailure(m_database.emptyLog());
}

/// Runs `sql`, which takes an id. Throws what SQLiteCpp throws.
void ModelContext::run(const char *sql, const LinkId &id)
{
    Query query = m_database.query(sql);
    bindId(*query, 1, id);
    query->exec();
}

/// Of those of `ids` that exist.
Expected<ModelContext::States, StoreError> ModelContext::states(const QList<LinkId> &ids) const
{
    return m_database.attempt([&] {
        States states;
        for (const LinkId &id : ids) {
            Query query = m_database.query(stateById);
            bindId(*query, 1, id);
            if (query->executeStep())
                states.insert(
                    id, {query->getColumn(0).getInt64() != 0, query->getColumn(1).getInt() != 0});
        }
        return states;
    });
}

std::optional<CapturedLink> ModelContext::link(const LinkId &id) const
{
    const auto found = m_database.attempt([&] { return read(id); });
    if (!found)
        debugLog(u"Failed to read a link: "_s + description(found.error()));
    return found ? *found : std::nullopt;
}

/// Throws what SQLiteCpp throws.
std::optional<CapturedLink> ModelContext::read(const LinkId &id) const
{
    Query query = m_database.query(linkById);
    bindId(*query, 1, id);
    return query->executeStep() ? linkFrom(*query) : std::nullopt;
}

ModelContext::Result ModelContext::readTogether(const std::function<void()> &reads) const
{
    return m_database.atOnce(reads);
}

Expected<qint64, StoreError> ModelContext::countWithUrl(const QString &url) const
{
    return m_database.attempt([&]() -> qint64 {
        Query query = m_database.query(countByUrl);
        bindText(*query, 1, url);
        query->executeStep();
        return query->getColumn(0).getInt64();
    });
}

Expected<std::vector<ListPosition>, StoreError>
ModelContext::visiblePositions(const std::optional<ListPosition> &after, int limit) const
{
    return m_database.attempt([&] {
        std::vector<ListPosition> positions;
        positions.reserve(size_t(limit < 0 ? counts().visible : limit));
        ListPosition last = after.value_or(ListPosition{Instant::max(), {}});
        Query query = m_database.query(positionsBehind);
        bindInstant(*query, 1, last.copiedAt);
        bindId(*query, 2, last.id);
        while ((limit < 0 || positions.size() < size_t(limit)) && query->executeStep()) {
            const auto position = positionFrom(*query);
            if (!position || !comesBefore(last, *position)) // in a damaged index
                continue;
            last = *position;
            positions.push_back(last);
        }
        return positions;
    });
}

ModelContext::Links ModelContext::visibleNewestFirst(const std::optional<ListPosition> &after,
                                                     int limit) const
{
    const auto positions = visiblePositions(after, limit);
    if (!positions)
        return Unexpected{positions.error()};
    return m_database.attempt([&] {
        QList<CapturedLink> links;
        for (const ListPosition &position : *positions) {
            if (const auto link = read(position.id); link && link->isVisible)
                links.append(*link);
        }
        return links;
    });
}

Expected<QList<qint64>, StoreError> ModelContext::visibleRows(LinkOrder order) const
{
    return m_database.attempt([&] { return StoredLinks(m_database).visible(order); });
}

ModelContext::Links ModelContext::visibleIn(const QList<qint64> &rows) const
{
    return m_database.attempt([&] {
        QList<CapturedLink> links;
        StoredLinks stored(m_database);
        for (const qint64 row : rows) {
            if (const auto link = stored.at(row); link && link->isVisible)
                links.append(*link);
        }
        return links;
    });
}

QList<LinkId> ModelContext::visibleWithoutSummary() const
{
    const auto ids = m_database.attempt([this] {
        QList<LinkId> found;
        Query query = m_database.query(idsWithoutSummary);
        while (query->executeStep()) {
            if (const auto id = idFrom(query->getColumn(0)))
                found.append(*id);
        }
        return found;
    });
    if (!ids)
        debugLog(u"Failed to read links: "_s + description(ids.error()));
    return ids ? *ids : QList<LinkId>();
}

qint64 ModelContext::visibleSince(Instant since) const
{
    const auto count = m_database.attempt([&]() -> qint64 {
        Query query = m_database.query(countVisibleSince);
        bindInstant(*query, 1, since);
        query->executeStep();
        return query->getColumn(0).getInt64();
    });
    if (!count)
        debugLog(u"Failed to count links: "_s + description(count.error()));
    return count ? *count : 0;
}

bool ModelContext::wasLeftOpen() const
{
    return m_database.wasLeftOpen();
}

LinkCounts ModelContext::counts() const
{
    if (!m_counts) {
        logFailure(m_database.attempt([this] {
            Query query = m_database.query(countAll);
            query->executeStep();
            m_counts = {query->getColumn(0).getInt64(), query->getColumn(1).getInt64(),
                        query->getColumn(2).getInt64()};
        }));
    }
    return m_counts.value_or(LinkCounts());
}

/// What is not counted yet will be counted as it then is.
void ModelContext::adjustCounts(const LinkCounts &without, const LinkCounts &with)
{
    if (m_counts) {
        *m_counts -= without;
        *m_counts += with;
    }
}

ModelContext::Result ModelContext::insert(const ExcludedDomain &domain)
{
    const Result inserted = m_database.transaction([&] {
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
    const Result removed = m_database.transaction([&] { run(removeDomain, id); });
    if (removed)
        Q_EMIT excludedDomainsChanged();
    return removed;
}

Expected<QList<ExcludedDomain>, StoreError> ModelContext::excludedDomains() const
{
    return m_database.attempt([this] {
        QList<ExcludedDomain> domains;
        Query query = m_database.query(allDomains);
        while (query->executeStep()) {
            if (const auto domain = domainFrom(*query))
                domains.append(*domain);
        }
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
