// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"
#include "Expected.h"
#include "StoreError.h"

#include <QList>

#include <functional>
#include <optional>

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

/// Whether the store's file is sound; reads all of it. Any thread.
Expected<void, StoreError> checkIntegrity(const QString &folder);
