// SPDX-License-Identifier: MIT
#pragma once

#include "Clock.h"

#include <QString>
#include <QUuid>

#include <optional>

using LinkId = QUuid;

/// One web address that the user copied, as it is in the store. Two are the same link when their
/// `id` is the same.
struct CapturedLink {
    LinkId id;
    QString url; ///< as copied, without one trailing slash
    std::optional<QString> title; ///< of the page, once it was fetched
    std::optional<QString> summary;
    Instant copiedAt;
    bool isExported = false; ///< was in an export that cleared the list
    bool isVisible = true; ///< false: kept, but in no list and no export
};

/// What heads a link: its title (even an empty one), else the host of its URL, else "Untitled".
QString displayTitle(const CapturedLink &link);

/// As they were inserted, or as lists show them.
enum class LinkOrder { store, newestFirst };

/// A place in the order of lists, which is newest first: by `copiedAt`, then by the bytes of `id`,
/// both descending.
struct ListPosition {
    Instant copiedAt;
    LinkId id;
};

ListPosition positionOf(const CapturedLink &link);
/// Whether `one` comes before `other` in lists.
bool comesBefore(const ListPosition &one, const ListPosition &other);
