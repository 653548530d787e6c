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

void CopyLedger::ownerChanged()
{
    ++m_unsettled;
    m_sinceLoss.reset();
    if (m_lost.isValid())
        m_sinceLoss = std::chrono::milliseconds(m_lost.elapsed());
    m_lost.invalidate();
}

std::optional<ClipboardSnapshot> CopyLedger::settle(const ClipboardContents &contents,
                                                    Announcer announcer)
{
    if (m_unsettled == 0)
        return {};
    const bool isRestore = isRestored(contents.text, announcer);
    const bool staysUnknown = isRestore && m_held.mustStayUnknown;
    const qint64 copies = std::exchange(m_unsettled, 0) - (isRestore ? 1 : 0);
    m_held = contents;
    if (copies == 0)
        return {};
    m_count += copies;
    return ClipboardSnapshot{m_count, staysUnknown ? std::nullopt : contents.text};
}

bool CopyLedger::isRestored(const std::optional<QString> &text, Announcer announcer) const
{
    const bool isKnown = !m_held.mustStayUnknown;
    if (announcer == Announcer::us || !text || (isKnown && text != m_held.text))
        return false;
    return announcer == Announcer::restorer
        || (m_sinceLoss && *m_sinceLoss < (isKnown ? m_limits.restore : m_limits.unknownRestore));
}
