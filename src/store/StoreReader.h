// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"
#include "Expected.h"
#include "StoreError.h"

#include <QList>

#include <functional>

/// Hands out the visible links of the store in `folder` until `take` wants no more, whether the
/// program runs or not; none where there is no store. What is removed meanwhile may be handed out
/// or not. How many were left out because they are damaged. Changes nothing on disk. Any thread.
Expected<qint64, StoreError>
forEachVisibleLink(const QString &folder, LinkOrder order,
                   const std::function<bool(const CapturedLink &)> &take);

/// The links, hidden ones too, whose URL is exactly `url`; none where there is no store. Any
/// thread.
Expected<QList<CapturedLink>, StoreError> readLinksWithUrl(const QString &folder,
                                                           const QString &url);
/// The links, hidden ones too, whose id begins with the hexadecimal `digits` (1 to 32, no dashes),
/// in the order of their ids and at most `limit` of them. Any thread.
Expected<QList<CapturedLink>, StoreError> readLinksWithId(const QString &folder,
                                                          const QString &digits, int limit);

/// Whether the store's file, and each link in it, is sound; reads all of it. Any thread.
Expected<void, StoreError> checkIntegrity(const QString &folder);
/// The same of a store under another name.
Expected<void, StoreError> checkStoreFile(const QString &path);
