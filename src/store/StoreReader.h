// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"
#include "Expected.h"
#include "StoreError.h"

#include <QList>

#include <functional>
#include <optional>

class StoreDatabase;

/// What to read of the visible links.
struct LinkFilter {
    std::function<bool(const CapturedLink &)> accepts; ///< empty: all are
    std::optional<qint64> limit;
    LinkOrder order = LinkOrder::newestFirst;
};

/// The visible links of the store in `folder`, whether the program runs or not; absent when there
/// is no store. Changes nothing on disk. Any thread.
Expected<std::optional<QList<CapturedLink>>, StoreError> readVisibleLinks(const QString &folder,
                                                                          const LinkFilter &filter);

/// The links, hidden ones too, whose URL is exactly `url`; none where there is no store. Any
/// thread.
Expected<QList<CapturedLink>, StoreError> readLinksWithUrl(const QString &folder,
                                                           const QString &url);
/// The links, hidden ones too, whose id begins with the hexadecimal `digits` (1 to 32, no dashes),
/// in the order of their ids and at most `limit` of them. Any thread.
Expected<QList<CapturedLink>, StoreError> readLinksWithId(const QString &folder,
                                                          const QString &digits, int limit);

/// Reads the visible links of the store in a folder a page at a time, whether the program runs or
/// not, and holds nothing open between two pages. What is copied or removed between them may be
/// read or not. One thread at a time.
class LinkPages
{
public:
    LinkPages(const QString &folder, LinkOrder order);

    /// The next page; an empty one at the end, and where there is no store.
    Expected<QList<CapturedLink>, StoreError> next();

private:
    /// Where the next page begins.
    struct Place {
        qint64 seq = 0; ///< of the last link, for the store's order
        ListPosition position{Instant::max(), {}}; ///< of the last link, for the newest first
    };
    struct Page {
        QList<CapturedLink> links;
        Place next;
    };

    Page read(StoreDatabase &store) const;

    QString m_folder;
    LinkOrder m_order;
    Place m_place;
};

/// Whether the store's file is sound; reads all of it. Any thread.
Expected<void, StoreError> checkIntegrity(const QString &folder);
/// The same of a store under another name.
Expected<void, StoreError> checkStoreFile(const QString &path);
