// SPDX-License-Identifier: MIT
#include "ChangeLog.h"

#include <utility>

void ChangeLog::noteInserted(const LinkId &id)
{
    m_fates.insert(id, Fate::inserted);
}

void ChangeLog::noteUpdated(const LinkId &id)
{
    if (!m_fates.contains(id))
        m_fates.insert(id, Fate::updated);
}

void ChangeLog::noteRemoved(const LinkId &id)
{
    if (m_fates.value(id, Fate::updated) == Fate::inserted)
        m_fates.remove(id); // nobody has heard of it
    else
        m_fates.insert(id, Fate::removed);
}

StoreChange ChangeLog::take()
{
    StoreChange change;
    const auto fates = std::exchange(m_fates, {});
    for (auto it = fates.begin(); it != fates.end(); ++it) {
        switch (it.value()) {
        case Fate::inserted:
            change.inserted.append(it.key());
            break;
        case Fate::updated:
            change.updated.append(it.key());
            break;
        case Fate::removed:
            change.removed.append(it.key());
            break;
        }
    }
    return change;
}
