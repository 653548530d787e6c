// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"
#include "ChangeLog.h"
#include "ExcludedDomain.h"
#include "Expected.h"
#include "LinkCounts.h"
#include "StoreError.h"
#include "UnsavedLinks.h"

#include <QHash>
#include <QList>
#include <QObject>

#include <functional>
#include <memory>
#include <vector>

class Alarm;
class Clock;
class StoreDatabase;

/// The records. Every call that changes something is one transaction, and what it changed has
/// survived the process when it returns; changes are announced later, at most once a loop turn.
/// Main thread only.
///
/// New links and changed fields that cannot be written, as when the disk is full, are not lost:
/// they are kept in memory, shown by all queries, and written as soon as that works
/// (`hasUnsavedChanges`). Whatever returns an error has changed nothing.
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
    /// The next visible links in the order of their insertion, about `limit`; `place`, at first 0,
    /// is where the reading goes on, and absent at its end.
    Links visibleInStoreOrder(std::optional<qint64> &place, int limit) const;
    /// The visible links copied at or after `since`; 0 when the store cannot be read.
    qint64 visibleSince(Instant since) const;
    /// Kept up to date with every change, so asking is free.
    LinkCounts counts() const { return m_counts; }

    // Excluded domains
    Result insert(const ExcludedDomain &domain);
    Result removeExcludedDomain(const QUuid &id);
    /// In the order in which they were added.
    Expected<QList<ExcludedDomain>, StoreError> excludedDomains() const;

    /// New links or changed fields wait in memory because the last attempt to write them failed.
    bool hasUnsavedChanges() const { return m_retry != nullptr; }

    /// Announces what has happened so far now, not at the end of the loop turn.
    void announceChanges();

    /// Counts what is stored, to start from.
    Result takeCounts();

Q_SIGNALS:
    void changed(const StoreChange &change);
    void excludedDomainsChanged();
    void hasUnsavedChangesChanged();

private:
    using LinkChange = std::function<void(CapturedLink &)>;
    using States = QHash<LinkId, LinkState>;

    void update(const LinkId &id, std::optional<QString> CapturedLink::*field, const QString &text);
    void saveUnsaved();
    Result write(const QList<CapturedLink> &links);
    void noteInserted(const CapturedLink &link);
    void watchUnsaved();
    Result hideEach(const QList<LinkId> &ids, const char *sql, const LinkChange &change);
    void keepChanged(const QList<LinkId> &ids, const LinkChange &change);
    Result runForEach(const char *sql, const QList<LinkId> &ids);
    void finishRemoval(const States &removed);
    Expected<States, StoreError> states(const QList<LinkId> &ids) const;
    States shownStates(const char *sql, std::optional<Instant> cutoff) const;
    LinkState shownState(const LinkId &id, const LinkState &stored) const;
    std::optional<CapturedLink> stored(const LinkId &id) const;
    QList<CapturedLink> storedNewestFirst(const std::optional<ListPosition> &after,
                                          int limit) const;
    void announceLater();

    StoreDatabase &m_database;
    Clock &m_clock;
    LinkCounts m_counts;
    UnsavedLinks m_unsaved; ///< whatever is inserted or set goes through here
    std::unique_ptr<Alarm> m_retry; ///< pending while the last attempt to save has failed
    ChangeLog m_changes;
    bool m_isAnnouncing = false;
};
