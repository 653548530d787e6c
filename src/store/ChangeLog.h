// SPDX-License-Identifier: MIT
#pragma once

#include "StoreChange.h"

#include <QHash>

/// Gathers what happens to links into the net change since it was last taken.
class ChangeLog
{
public:
    void noteInserted(const LinkId &id);
    void noteUpdated(const LinkId &id);
    void noteRemoved(const LinkId &id);

    bool isEmpty() const { return m_fates.isEmpty(); }
    /// Leaves the log empty.
    StoreChange take();

private:
    enum class Fate { inserted, updated, removed };
    QHash<LinkId, Fate> m_fates;
};
