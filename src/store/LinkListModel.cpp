// SPDX-License-Identifier: MIT
#include "LinkListModel.h"

#include "DebugLog.h"
#include "StoreChange.h"

#include <QScopedValueRollback>
#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

constexpr qsizetype shownLength = 500;

} // namespace

QString shownText(const QString &text)
{
    const bool splitsPair = text.size() > shownLength && text.at(shownLength - 1).isHighSurrogate();
    return text.left(splitsPair ? shownLength - 1 : shownLength);
}

LinkListModel::LinkListModel(ModelContext &context, QObject *parent)
    : QAbstractListModel(parent)
    , m_context(context)
{
    connect(&context, &ModelContext::changed, this, &LinkListModel::apply);
}

int LinkListModel::rowOf(const LinkId &id) const
{
    const auto link = std::find_if(m_links.begin(), m_links.end(),
                                   [&id](const CapturedLink &loaded) { return loaded.id == id; });
    return link == m_links.end() ? -1 : int(link - m_links.begin());
}

int LinkListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_links.size());
}

QVariant LinkListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid) || role != Qt::DisplayRole)
        return {};
    const CapturedLink &link = linkAt(index.row());
    return shownText(link.title ? *link.title : link.url);
}

bool LinkListModel::canFetchMore(const QModelIndex &parent) const
{
    return !parent.isValid() && !m_isComplete && !m_isChanging;
}

void LinkListModel::fetchMore(const QModelIndex &parent)
{
    if (!canFetchMore(parent))
        return;
    m_context.announceChanges(); // of a link that comes and goes unannounced no row may be left
    const QScopedValueRollback changing(m_isChanging, true);
    const auto last = m_links.isEmpty() ? std::nullopt : std::optional(positionOf(m_links.last()));
    const auto page = m_context.visibleNewestFirst(last, pageSize);
    if (!page) {
        debugLog(u"Failed to read links: "_s + description(page.error()));
        return;
    }
    m_isComplete = page->size() < pageSize;
    if (page->isEmpty())
        return;
    const int first = int(m_links.size());
    beginInsertRows({}, first, first + int(page->size()) - 1);
    m_links += *page;
    endInsertRows();
}

void LinkListModel::apply(const StoreChange &change)
{
    const QScopedValueRollback changing(m_isChanging, true);
    QSet<LinkId> gone(change.removed.begin(), change.removed.end());
    const QSet<LinkId> updated(change.updated.begin(), change.updated.end());
    for (int row = 0; row < m_links.size() && !updated.isEmpty(); ++row) {
        const LinkId id = m_links.at(row).id;
        if (!updated.contains(id))
            continue;
        const auto link = m_context.link(id);
        if (link && link->isVisible)
            refresh(row, *link);
        else
            gone.insert(id);
    }
    if (!gone.isEmpty())
        removeRowsWhere([&gone](const CapturedLink &link) { return gone.contains(link.id); });
    insertAll(change.inserted);
}

void LinkListModel::insertAll(const QList<LinkId> &ids)
{
    QList<CapturedLink> links;
    for (const LinkId &id : ids) {
        const auto link = m_context.link(id);
        if (link && link->isVisible)
            links.append(*link);
    }
    // The oldest first: what goes on top of all rows moves none of them, and an import brings many.
    std::sort(links.begin(), links.end(), [](const CapturedLink &one, const CapturedLink &other) {
        return comesBefore(positionOf(other), positionOf(one));
    });
    for (const CapturedLink &link : std::as_const(links))
        insertInOrder(link);
}

void LinkListModel::refresh(int row, const CapturedLink &link)
{
    m_links[row] = link;
    Q_EMIT dataChanged(index(row), index(row));
}

void LinkListModel::insertInOrder(const CapturedLink &link)
{
    const auto place = std::lower_bound(m_links.cbegin(), m_links.cend(), link,
                                        [](const CapturedLink &one, const auto &other) {
                                            return comesBefore(positionOf(one), positionOf(other));
                                        });
    if (place == m_links.cend() && !m_isComplete)
        return; // it will come with its page
    const int row = int(place - m_links.cbegin());
    if (place != m_links.cend() && place->id == link.id) {
        refresh(row, link); // it came with a page already
        return;
    }
    beginInsertRows({}, row, row);
    m_links.insert(row, link);
    endInsertRows();
}

void LinkListModel::removeRowsWhere(const std::function<bool(const CapturedLink &)> &isGone)
{
    for (int last = int(m_links.size()) - 1; last >= 0; --last) {
        if (!isGone(m_links.at(last)))
            continue;
        int first = last;
        while (first > 0 && isGone(m_links.at(first - 1)))
            --first;
        beginRemoveRows({}, first, last);
        m_links.remove(first, last - first + 1);
        endRemoveRows();
        last = first;
    }
}
