// SPDX-License-Identifier: MIT
#include "SummaryText.h"

#include "Characters.h"
#include "EvidencePacket.h"

using namespace Qt::StringLiterals;

namespace
{

constexpr std::size_t maxCharacters = 150;

/// What is too long ends behind its last full stop, else before its last space.
QString sentence(QString description)
{
    description = description.replace(u'\n', u' ').trimmed();
    const QStringView start = firstCharacters(QStringView(description), maxCharacters);
    if (start.size() == description.size())
        return description.endsWith(u'.') ? description : description + u'.';
    if (const auto stop = start.lastIndexOf(u'.'); stop >= 0)
        return start.first(stop + 1).toString();
    const auto space = start.lastIndexOf(u' ');
    return (space >= 0 ? start.first(space) : start) + "..."_L1;
}

} // namespace

QString composeSummary(const EvidencePacket &packet)
{
    // A description that is present but empty hides the Open Graph one.
    const auto description = packet.metaDescription ? packet.metaDescription : packet.ogDescription;
    if (description && !description->isEmpty())
        return sentence(*description);
    if (const auto title = packet.title ? packet.title : packet.ogTitle) {
        // "a" before a vowel too
        return *title + " - a "_L1 + packet.pageType.value_or(u"page"_s) + " on "_L1 + packet.domain
            + u'.';
    }
    return "A webpage from "_L1 + packet.domain + u'.';
}
