// SPDX-License-Identifier: MIT
#include "CopyLedger.h"

#include <utility>

void OwnerChanges::add(bool hasOwner)
{
    if (hasOwner) {
        ++count;
        isLastAfterLoss = isLost;
    }
    isLost = !hasOwner;
}

CopyLedger::CopyLedger(const ClipboardLimits &limits)
    : m_limits(limits)
{
}

void CopyLedger::ownerChanged(const OwnerChanges &changes)
{
    m_unsettled += changes.count;
    if (changes.count > 1)
        m_lost.invalidate();
    if (changes.isLastAfterLoss)
        m_lost.start();
    if (changes.count > 0) {
        m_sinceLoss.reset();
        if (m_lost.isValid())
            m_sinceLoss = std::chrono::milliseconds(m_lost.elapsed());
        m_lost.invalidate();
    }
    if (changes.isLost)
        m_lost.start();
}

std::optional<ClipboardSnapshot> CopyLedger::settle(const ClipboardContents &contents,
                                                    Announcer announcer)
{
    if (m_unsettled > 0 && isRestored(contents, announcer))
        --m_unsettled;
    if (m_unsettled == 0)
        return {};
    m_held = contents;
    m_count += std::exchange(m_unsettled, 0);
    return ClipboardSnapshot{m_count, contents.text};
}

/// A copy before this change, too short-lived to be read, may be what is restored: it is told then.
bool CopyLedger::isRestored(const ClipboardContents &contents, Announcer announcer) const
{
    const bool isManager = announcer == Announcer::manager;
    const bool isKeeper = announcer == Announcer::keeper;
    const auto isWithin = [&](std::chrono::milliseconds limit) {
        return m_sinceLoss && *m_sinceLoss < limit;
    };
    if (announcer == Announcer::us)
        return false;
    if (m_held.mustStayUnknown)
        return m_unsettled == 1 && (isKeeper || (isManager && isWithin(m_limits.unknownRestore)));
    return contents.text && contents.text == m_held.text
        && (isKeeper || (isManager && m_sinceLoss) || isWithin(m_limits.restore));
}
