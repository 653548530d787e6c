// SPDX-License-Identifier: MIT
#include "CopyLedger.h"

#include <utility>

CopyLedger::CopyLedger(const ClipboardLimits &limits)
    : m_limits(limits)
{
}

void CopyLedger::ownerLost()
{
    m_lost.start();
}

void CopyLedger::ownerChanged(Announcer announcer)
{
    const auto mayRestoreWithin = [&](std::chrono::milliseconds window) {
        const bool followsLoss = m_lost.isValid() && m_lost.elapsed() < window.count();
        return announcer == Announcer::restorer || (announcer == Announcer::program && followsLoss);
    };
    ++m_unsettled;
    m_mayBeRestored = mayRestoreWithin(m_limits.restore);
    m_mayAllBeRestored = m_mayAllBeRestored && mayRestoreWithin(m_limits.unknownRestore);
    m_lost.invalidate();
}

std::optional<ClipboardSnapshot> CopyLedger::settle(const ClipboardContents &contents,
                                                    bool offersLess)
{
    qint64 copies = std::exchange(m_unsettled, 0);
    const bool mayAllBeRestored =
        std::exchange(m_mayAllBeRestored, true) || (copies == 1 && offersLess);
    if (copies == 0)
        return {};
    const ClipboardContents before = std::exchange(m_held, contents);
    if (contents.text && before.mustStayUnknown && mayAllBeRestored)
        copies = 0;
    else if (contents.text && contents.text == before.text && (m_mayBeRestored || offersLess))
        --copies;
    if (copies == 0)
        return {};
    m_count += copies;
    return ClipboardSnapshot{m_count, contents.text};
}
