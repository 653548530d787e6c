// SPDX-License-Identifier: MIT
#include "LinkIntake.h"

#include "LinkAddress.h"
#include "ModelContext.h"
#include "UrlGate.h"

#include <QSet>

using namespace Qt::StringLiterals;

QString description(Refusal refusal)
{
    switch (refusal) {
    case Refusal::noWebAddress:
        return u"not a web address"_s;
    case Refusal::excluded:
        return u"excluded"_s;
    case Refusal::alreadyStored:
        return u"already stored"_s;
    }
    Q_UNREACHABLE();
}

IntakeCounts &IntakeCounts::operator+=(const IntakeCounts &other)
{
    taken += other.taken;
    alreadyStored += other.alreadyStored;
    excluded += other.excluded;
    noWebAddress += other.noWebAddress;
    return *this;
}

void IntakeCounts::note(Refusal refusal)
{
    switch (refusal) {
    case Refusal::noWebAddress:
        ++noWebAddress;
        return;
    case Refusal::excluded:
        ++excluded;
        return;
    case Refusal::alreadyStored:
        ++alreadyStored;
        return;
    }
}

Expected<LinkIntake::Added, StoreError> LinkIntake::add(const QString &address, Instant now)
{
    const auto webAddress = webAddressIn(address);
    if (!webAddress)
        return Added(Unexpected{Refusal::noWebAddress});
    CapturedLink link;
    link.id = QUuid::createUuid();
    link.url = normalizedUrl(*webAddress);
    link.copiedAt = now;
    const auto refused = refusal(link.url);
    if (!refused)
        return Unexpected{refused.error()};
    if (*refused)
        return Added(Unexpected{**refused});
    if (const auto inserted = m_context.insertAll({link}); !inserted)
        return Unexpected{inserted.error()};
    return Added(link);
}

Expected<IntakeCounts, StoreError> LinkIntake::import(const QList<CapturedLink> &links)
{
    auto choice = Expected<Choice, StoreError>(Choice());
    const auto read = m_context.readTogether([&] { choice = chosen(links); });
    if (!read)
        return Unexpected{read.error()};
    if (!choice)
        return Unexpected{choice.error()};
    if (const auto inserted = m_context.insertAll(choice->accepted); !inserted)
        return Unexpected{inserted.error()};
    return choice->counts;
}

Expected<LinkIntake::Choice, StoreError> LinkIntake::chosen(const QList<CapturedLink> &links)
{
    Choice choice;
    QSet<QString> urls; // of those accepted
    QSet<LinkId> ids;
    for (CapturedLink link : links) {
        if (webAddressIn(link.url) != link.url) {
            choice.counts.note(Refusal::noWebAddress);
            continue;
        }
        const auto refused = refusal(link.url);
        if (!refused)
            return Unexpected{refused.error()};
        if (*refused || urls.contains(link.url)) {
            choice.counts.note(refused->value_or(Refusal::alreadyStored));
            continue;
        }
        if (ids.contains(link.id) || m_context.link(link.id))
            link.id = QUuid::createUuid();
        urls.insert(link.url);
        ids.insert(link.id);
        choice.accepted.append(std::move(link));
    }
    choice.counts.taken = choice.accepted.size();
    return choice;
}

/// What keeps a web address out of the store; absent when nothing does.
Expected<std::optional<Refusal>, StoreError> LinkIntake::refusal(const QString &url)
{
    if (const auto loaded = loadExcludedDomains(); !loaded)
        return Unexpected{loaded.error()};
    if (isExcluded(url, *m_excludedDomains))
        return std::optional(Refusal::excluded);
    const auto count = m_context.countWithUrl(url);
    if (!count)
        return Unexpected{count.error()};
    return *count > 0 ? std::optional(Refusal::alreadyStored) : std::nullopt;
}

Expected<void, StoreError> LinkIntake::loadExcludedDomains()
{
    if (m_excludedDomains)
        return {};
    const auto domains = m_context.excludedDomains();
    if (!domains)
        return Unexpected{domains.error()};
    m_excludedDomains.emplace();
    for (const ExcludedDomain &excluded : *domains)
        m_excludedDomains->append(excluded.domain);
    return {};
}
