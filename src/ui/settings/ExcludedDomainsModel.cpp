// SPDX-License-Identifier: MIT
#include "settings/ExcludedDomainsModel.h"

#include "DebugLog.h"
#include "ModelContext.h"

using namespace Qt::StringLiterals;

std::optional<QString> domainFrom(const QString &typed)
{
    QString text = typed.toLower().trimmed();
    text.remove(u"https://"_s).remove(u"http://"_s);
    const QString domain = text.section(u'/', 0, 0);
    return domain.isEmpty() ? std::nullopt : std::optional(domain);
}

ExcludedDomainsModel::ExcludedDomainsModel(ModelContext &modelContext, Clock &clock,
                                           QObject *parent)
    : QObject(parent)
    , m_modelContext(modelContext)
    , m_clock(clock)
{
    connect(&m_modelContext, &ModelContext::excludedDomainsChanged, this,
            &ExcludedDomainsModel::changed);
}

QList<ExcludedDomain> ExcludedDomainsModel::domains() const
{
    const auto domains = m_modelContext.excludedDomains();
    return domains ? *domains : QList<ExcludedDomain>();
}

bool ExcludedDomainsModel::add(const QString &typed)
{
    const auto domain = domainFrom(typed);
    if (!domain)
        return false;
    const ExcludedDomain excluded{QUuid::createUuid(), *domain, m_clock.now()};
    const auto inserted = m_modelContext.insert(excluded);
    if (!inserted)
        debugLog(u"Failed to exclude "_s + *domain + u": "_s + description(inserted.error()));
    return bool(inserted);
}

void ExcludedDomainsModel::remove(const QUuid &id)
{
    if (const auto removed = m_modelContext.removeExcludedDomain(id); !removed)
        debugLog(u"Failed to remove an excluded domain: "_s + description(removed.error()));
}
