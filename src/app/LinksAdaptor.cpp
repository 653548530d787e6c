// SPDX-License-Identifier: MIT
#include "LinksAdaptor.h"

#include "Clock.h"
#include "LinkIntake.h"
#include "LinkJson.h"
#include "ModelContext.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

void refuse(const QDBusMessage &call, QLatin1StringView error, const QString &reason)
{
    call.setDelayedReply(true); // this is the reply
    QDBusConnection::sessionBus().send(call.createErrorReply(error, reason));
}

void refuse(const QDBusMessage &call, const StoreError &error)
{
    refuse(call, LinksAdaptor::storeError, description(error));
}

/// Absent when one of them is none, or there are too many.
std::optional<QList<LinkId>> linkIds(const QStringList &texts)
{
    QList<LinkId> ids;
    for (const QString &text : texts)
        ids.append(LinkId(text));
    const bool isValid = ids.size() <= LinksAdaptor::linksPerCall && !ids.contains(LinkId());
    return isValid ? std::optional(ids) : std::nullopt;
}

/// Absent when it is no array, or too long.
std::optional<QList<CapturedLink>> linksFrom(const QByteArray &json, Instant now)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    const QJsonArray array = document.array();
    if (!document.isArray() || array.size() > LinksAdaptor::linksPerCall)
        return std::nullopt;
    QList<CapturedLink> links;
    for (const auto &value : array)
        links.append(linkFrom(value.toObject(), now).value_or(CapturedLink()));
    return links;
}

} // namespace

LinksAdaptor::LinksAdaptor(const Parts &parts, QObject *parent)
    : QDBusAbstractAdaptor(parent)
    , m_parts(parts)
    , m_titles(parts.http, parts.pages)
{
}

QString LinksAdaptor::Add(const QString &address, const QDBusMessage &call)
{
    const auto added = LinkIntake(m_parts.modelContext).add(address, m_parts.clock.now());
    if (!added) {
        refuse(call, added.error());
        return {};
    }
    if (!*added)
        return description(added->error());
    m_tasks.start(m_titles.fetchTitle(&m_parts.modelContext, (*added)->id));
    return {};
}

void LinksAdaptor::SetTitle(const QString &id, const QString &title)
{
    m_parts.modelContext.setTitle(LinkId(id), title);
}

void LinksAdaptor::Remove(const QStringList &ids, const QDBusMessage &call)
{
    change(ids, call,
           [this](const QList<LinkId> &links) { return m_parts.modelContext.remove(links); });
}

void LinksAdaptor::HideExported(const QStringList &ids, const QDBusMessage &call)
{
    change(ids, call,
           [this](const QList<LinkId> &links) { return m_parts.modelContext.hideExported(links); });
}

void LinksAdaptor::change(const QStringList &ids, const QDBusMessage &call, const Change &apply)
{
    const auto links = linkIds(ids);
    if (!links)
        return refuse(call, invalidError, u"not a few link ids"_s);
    if (const auto changed = apply(*links); !changed)
        refuse(call, changed.error());
}

qlonglong LinksAdaptor::Import(const QByteArray &links, const QDBusMessage &call,
                               qlonglong &alreadyStored, qlonglong &excluded,
                               qlonglong &noWebAddress)
{
    const auto offered = linksFrom(links, m_parts.clock.now());
    if (!offered) {
        refuse(call, invalidError, u"not an array of a few links"_s);
        return 0;
    }
    const auto counts = LinkIntake(m_parts.modelContext).import(*offered);
    if (!counts) {
        refuse(call, counts.error());
        return 0;
    }
    alreadyStored = counts->alreadyStored;
    excluded = counts->excluded;
    noWebAddress = counts->noWebAddress;
    return counts->taken;
}
