// SPDX-License-Identifier: MIT
#include "LinksAdaptor.h"

#include "Clock.h"
#include "LinkAddress.h"
#include "LinkFileReader.h"
#include "LinkIntake.h"
#include "ModelContext.h"
#include "async/YieldToLoop.h"

#include <QBuffer>
#include <QDBusMessage>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

/// How long the main loop is held at a time.
constexpr auto slice = 5ms;

CallError invalid(const QString &reason)
{
    return {LinksAdaptor::invalidError, reason};
}

CallError tooMany()
{
    return invalid(u"more than %1 links in one call"_s.arg(LinksAdaptor::linksPerCall));
}

Unexpected<CallError> failure(const StoreError &error)
{
    return Unexpected{CallError{LinksAdaptor::storeError, description(error)}};
}

} // namespace

LinksAdaptor::LinksAdaptor(const Dependencies &dependencies, QObject *parent)
    : QDBusAbstractAdaptor(parent)
    , m_dependencies(dependencies)
    , m_titles(dependencies.http, dependencies.pages)
{
}

QString LinksAdaptor::Add(const QString &address, const QDBusMessage &call)
{
    if (address.size() > longestText)
        refuse(call, invalid(u"the address is too long"_s));
    else
        m_calls.add(call, address.size(), [this, address] { return add(address); });
    return {};
}

void LinksAdaptor::SetTitle(const QString &id, const QString &title, const QDBusMessage &call)
{
    const LinkId link(id);
    if (link.isNull())
        return refuse(call, invalid(u"not the id of a link"_s));
    if (title.size() > longestText)
        return refuse(call, invalid(u"the title is too long"_s));
    m_calls.add(call, title.size(), [this, link, title] { return setTitle(link, title); });
}

void LinksAdaptor::Remove(const QStringList &ids, const QDBusMessage &call)
{
    queueChange(ids, call, &ModelContext::remove);
}

void LinksAdaptor::HideExported(const QStringList &ids, const QDBusMessage &call)
{
    queueChange(ids, call, &ModelContext::hideExported);
}

qlonglong LinksAdaptor::Import(const QByteArray &links, const QDBusMessage &call, qlonglong &,
                               qlonglong &, qlonglong &)
{
    if (links.size() > bytesPerCall)
        refuse(call, invalid(u"the array is larger than %1 MiB"_s.arg(bytesPerCall >> 20)));
    else if (!links.startsWith('['))
        refuse(call, invalid(u"not an array of links"_s));
    else
        m_calls.add(call, links.size(), [this, links] { return import(links); });
    return 0;
}

void LinksAdaptor::queueChange(const QStringList &ids, const QDBusMessage &call, Change apply)
{
    if (ids.size() > linksPerCall)
        return refuse(call, tooMany());
    QList<LinkId> links;
    for (const QString &id : ids)
        links.append(LinkId(id));
    if (links.contains(LinkId()))
        return refuse(call, invalid(u"not the ids of links"_s));
    m_calls.add(call, links.size() * qsizetype(sizeof(LinkId)),
                [this, links, apply] { return change(links, apply); });
}

Task<CallQueue::Answer> LinksAdaptor::add(QString address)
{
    const auto added =
        LinkIntake(m_dependencies.modelContext).add(address, m_dependencies.clock.now());
    if (!added)
        co_return failure(added.error());
    if (!*added)
        co_return QVariantList{description(added->error())};
    m_tasks.start(m_titles.fetchTitle(&m_dependencies.modelContext, (*added)->id));
    co_return QVariantList{QString()};
}

Task<CallQueue::Answer> LinksAdaptor::setTitle(LinkId id, QString title)
{
    m_dependencies.modelContext.setTitle(id, title);
    co_return QVariantList();
}

Task<CallQueue::Answer> LinksAdaptor::change(QList<LinkId> ids, Change apply)
{
    co_return changed(ids, apply);
}

/// Not in the coroutine: g++ 12.2 loses the object there when the member is called by its pointer.
CallQueue::Answer LinksAdaptor::changed(const QList<LinkId> &ids, Change apply)
{
    const auto done = (m_dependencies.modelContext.*apply)(ids);
    return done ? Answer(QVariantList()) : failure(done.error());
}

Task<CallQueue::Answer> LinksAdaptor::import(QByteArray json)
{
    QBuffer buffer(&json);
    buffer.open(QBuffer::ReadOnly);
    LinkFileReader reader(buffer, m_dependencies.clock.now());
    QList<CapturedLink> links;
    auto since = m_dependencies.clock.elapsed();
    while (const auto entry = reader.next()) {
        if (links.size() == linksPerCall)
            co_return Unexpected{tooMany()};
        links.append(entry->link.value_or(CapturedLink())); // which is no web address
        if (m_dependencies.clock.elapsed() - since < slice)
            continue;
        YieldToLoop yield;
        co_await yield;
        since = m_dependencies.clock.elapsed();
    }
    const auto counts = LinkIntake(m_dependencies.modelContext).import(links);
    if (!counts)
        co_return failure(counts.error());
    co_return QVariantList{counts->taken, counts->alreadyStored, counts->excluded,
                           counts->noWebAddress};
}

#include "moc_LinksAdaptor.cpp"
