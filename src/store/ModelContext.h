#pragma once

#include "CapturedLink.h"
#include "ExcludedDomain.h"
#include "Expected.h"
#include "StoreChange.h"
#include "StoreError.h"

#include <QList>
#include <QObject>
#include <QStringList>

struct LinkCounts {
    qint64 stored = 0;
    qint64 visible = 0;
    qint64 visibleWithoutSummary = 0;
};

/// The records. Every call that changes something is one transaction, and what it changed has
/// survived the process when it returns; changes are announced later, at most once a loop turn.
/// Main thread only.
///
/// When the disk is full, inserted links and changed fields are kept in memory, shown by all
/// queries, and written when there is space again (`hasUnsavedChanges`).
class ModelContext : public QObject
{
    Q_OBJECT
public:
    using Result = Expected<void, StoreError>;

    /// A place in the order of lists, newest first: by `copiedAt`, then `id`, both descending.
    struct Position {
        Instant copiedAt;
        LinkId id;
    };

    // Links
    Result insert(const CapturedLink &link);
    /// The setters do nothing when the link is gone.
    Result setTitle(const LinkId &id, const QString &title);
    Result setSummary(const LinkId &id, const QString &summary);
    /// Sets `isVisible` to false on all of `ids`.
    Result hide(const QList<LinkId> &ids);
    /// Sets `isVisible` to false and `isExported` to true on all of `ids`.
    Result hideExported(const QList<LinkId> &ids);
    Result remove(const QList<LinkId> &ids);
    Result removeAll();
    /// Removes what was copied strictly before `cutoff`; how many that were.
    Expected<qint64, StoreError> removeCopiedBefore(Instant cutoff);

    std::optional<CapturedLink> link(const LinkId &id) const;
    /// Those of `ids` that exist, in no particular order.
    QList<CapturedLink> links(const QList<LinkId> &ids) const;
    /// How many links have exactly this `url`, byte for byte.
    Expected<qint64, StoreError> countWithUrl(const QString &url) const;
    /// The next `limit` visible links behind `after`, or the first ones.
    Expected<QList<CapturedLink>, StoreError>
    visibleNewestFirst(const std::optional<Position> &after, int limit) const;
    /// The visible links copied at or after `since`.
    qint64 visibleSince(Instant since) const;
    /// Kept up to date with every change, so asking is free.
    LinkCounts counts() const;

    // Excluded domains
    Result insert(const ExcludedDomain &domain);
    Result removeExcludedDomain(const QUuid &id);
    /// In the order in which they were added.
    Expected<QList<ExcludedDomain>, StoreError> excludedDomains() const;

    /// Changes are waiting in memory because the last attempt to write them failed.
    bool hasUnsavedChanges() const;

Q_SIGNALS:
    void changed(const StoreChange &change);
    void excludedDomainsChanged();
    void hasUnsavedChangesChanged();
};
