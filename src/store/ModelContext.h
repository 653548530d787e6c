// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"
#include "ChangeLog.h"
#include "ExcludedDomain.h"
#include "Expected.h"
#include "LinkCounts.h"
#include "StoreError.h"

#include <QHash>
#include <QList>
#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class Alarm;
class Clock;
class StoreDatabase;

/// The records. Every call that changes something is one transaction, and what it changed has
/// survived the process when it returns; changes are announced later, at most once a loop turn.
/// Main thread only.
///
/// New links and changed fields that cannot be written, as when the disk is full, are not lost:
/// they are kept in memory, shown by all queries, and written as soon as that works, one by one if
/// need be (`hasUnsavedChanges`). Whatever returns an error has changed nothing. A row that is not
/// as it must be is shown by none.
class ModelContext : public QObject
{
    Q_OBJECT
public:
    using Result = Expected<void, StoreError>;
    using Links = Expected<QList<CapturedLink>, StoreError>;

    /// Both outlive the context.
    ModelContext(StoreDatabase &database, Clock &clock);
    ~ModelContext() override;

    // Links
    void insert(const CapturedLink &link);
    /// Adds all of `links`, whose ids are new, or none of them.
    Result insertAll(const QList<CapturedLink> &links);
    /// Does nothing when the link is gone; so does `setSummary`.
    void setTitle(const LinkId &id, const QString &title);
    void setSummary(const LinkId &id, const QString &summary);
    /// Sets `isVisible` to false on all of `ids`.
    Result hide(const QList<LinkId> &ids);
    /// Sets `isVisible` to false and `isExported` to true on all of `ids`.
    Result hideExported(const QList<LinkId> &ids);
    Result remove(const QList<LinkId> &ids);
    Result removeAll();
    /// Removes what was copied strictly before `cutoff`; how many that were.
    Expected<qint64, StoreError> removeCopiedBefore(Instant cutoff);

    std::optional<CapturedLink> link(const LinkId &id) const;
    /// Runs `reads`, which may ask for anything here and change nothing, as one: quicker for many.
    Result readTogether(const std::function<void()> &reads) const;
    /// How many links have exactly this `url`, byte for byte.
    Expected<qint64, StoreError> countWithUrl(const QString &url) const;
    /// The next `limit` visible links behind `after`, or the first ones.
    Links visibleNewestFirst(const std::optional<ListPosition> &after, int limit) const;
    /// Where the next `limit` visible links behind `after` stand; all for a `limit` of -1. Quicker
    /// than reading the links.
    Expected<std::vector<ListPosition>, StoreError>
    visiblePositions(const std::optional<ListPosition> &after, int limit) const;
    /// The visible links that have no summary, newest first; none when the store cannot be read.
    QList<LinkId> visibleWithoutSummary() const;
    /// The numbers of the rows of all visible links, to be read with `visibleIn`. They hold until
    /// links that wait in memory are written.
    Expected<QList<qint64>, StoreError> visibleRows(LinkOrder order) const;
    /// The links in `rows`, without those that are gone, hidden or damaged.
    Links visibleIn(const QList<qint64> &rows) const;
    /// The visible links copied at or after `since`; 0 when the store cannot be read.
    qint64 visibleSince(Instant since) const;
    /// Counted when they are first asked for, and kept up to date from then on; none while the
    /// store cannot be read.
    LinkCounts counts() const;

    // Excluded domains
    Result insert(const ExcludedDomain &domain);
    Result removeExcludedDomain(const QUuid &id);
    /// In the order in which they were added.
    Expected<QList<ExcludedDomain>, StoreError> excludedDomains() const;

    /// Why new links or changed fields wait in memory; absent when none do.
    const std::optional<StoreError> &unsavedReason() const { return m_unsavedReason; }
    bool hasUnsavedChanges() const { return m_unsavedReason.has_value(); }
    /// What waits in memory, the changed links before the new ones.
    Links unsavedLinks() const;
    /// Tries now to write it, as happens by itself with every change and every five seconds.
    void saveUnsaved();

    /// Whether the program that had the store before did not come to its end.
    bool wasLeftOpen() const;

    /// Announces what has happened so far now, not at the end of the loop turn.
    void announceChanges();

Q_SIGNALS:
    void changed(const StoreChange &change);
    void excludedDomainsChanged();
    void hasUnsavedChangesChanged(); ///< or the reason did

private:
    using States = QHash<LinkId, LinkState>;
    struct Change;

    Result add(const QList<CapturedLink> &links);
    void adjustCounts(const LinkCounts &without, const LinkCounts &with);
    void noteInserted(const CapturedLink &link);
    Result change(const QList<LinkId> &ids, const Change &change,
                  const std::optional<QString> &text);
    Result keep(const std::function<void()> &work);
    std::optional<StoreError> save(const QList<qint64> &rows);
    Expected<qint64, StoreError> removeMany(std::optional<Instant> cutoff);
    void finishRemoval(const QList<LinkId> &removed);
    void emptyLog();
    void run(const char *sql, const LinkId &id);
    Expected<States, StoreError> states(const QList<LinkId> &ids) const;
    std::optional<CapturedLink> read(const LinkId &id) const;
    void announceLater();

    StoreDatabase &m_database;
    Clock &m_clock;
    mutable std::optional<LinkCounts> m_counts; ///< absent until somebody asks
    bool m_isKeeping = false; ///< there is a table of what could not be written
    std::optional<StoreError> m_unsavedReason;
    std::unique_ptr<Alarm> m_retry; ///< pending while something could not be written
    std::unique_ptr<Alarm> m_sweep; ///< pending after a removal
    ChangeLog m_changes;
    bool m_isAnnouncing = false;
};
