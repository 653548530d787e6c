// SPDX-License-Identifier: MIT
#pragma once

#include "CapturedLink.h"

#include <QList>

/// What happened to the links since the last change was announced. No id is in two lists: what was
/// inserted and removed again is in none.
struct StoreChange {
    QList<LinkId> inserted;
    QList<LinkId> updated;
    QList<LinkId> removed;

    bool isEmpty() const { return inserted.isEmpty() && updated.isEmpty() && removed.isEmpty(); }
};
