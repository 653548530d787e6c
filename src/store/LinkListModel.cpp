// SPDX-License-Identifier: MIT
#include "LinkListModel.h"

#include "DateText.h"
#include "DebugLog.h"
#include "LinkSearch.h"
#include "ModelContext.h"

#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

constexpr qsizetype shownLength = 500;

/// Above this, reading all places anew is quicker than looking up each link.
constexpr qsizetype manyLinks = 500;

qsizetype sizeOf(const StoreChange &change)
{
    return change.inserted.size() + change.updated.size() + change.removed.size();
}

} // namespace

QString shownText(const QString &text)
{
    const bool splitsPair = text.size() > shownLength && text.at(shownLength - 1).isHighSurrogate();
    return text.left(splitsPair ? shownLength - 1 : shownLength);
}

LinkListModel::LinkListModel(ModelContext &context, QObject *parent)
    : QObject(parent)
    , m_context(context)
    , m_count(context.counts().visible)
{
    connect(&context, &ModelContext::changed, this, &LinkListModel::apply);
}

LinkListModel::~LinkListModel() = default;

const std::vector<ListPosition> &LinkListModel::rows() const
{
    return m_search ? m_search->found() : m_known;
}

int LinkListModel::rowCount() const
{
    return int(m_search ? qsizetype(m_search->found().size()) : m_count);
}

ListPosition LinkListModel::positionAt(int row)
{
    while (row >= int(rows().size()) && row < rowCount())
        readBehindLast();
    return row < int(rows().size()) ? rows()[size_t(row)] : ListPosition();
}

int LinkListModel::rowOf(const ListPosition &position) const
{
    const auto place = std::lower_bound(rows().begin(), rows().end(), position, comesBefore);
    return int(place - rows().begin());
}

bool LinkListModel::contains(const ListPosition &position) const
{
    return std::binary_search(rows().begin(), rows().end(), position, comesBefore);
}

void LinkListModel::readBehindLast()
{
    catchUp(); // of a link that comes and goes unannounced no row may be left
    const auto last = m_known.empty() ? std::nullopt : std::optional(m_known.back());
    const auto places = m_context.visiblePositions(last, last ? -1 : pageSize);
    if (!places)
        debugLog(u"Failed to read links: "_s + description(places.error()));
    else
        m_known.insert(m_known.end(), places->begin(), places->end());
    if (last || !places || places->size() < pageSize)
        m_count = qsizetype(m_known.size()); // whatever the counts say: there are no more
}

void LinkListModel::setSearchText(const QString &text)
{
    if (text.isEmpty()) {
        m_search.reset();
    } else {
        if (!m_search) {
            m_search = std::make_unique<LinkSearch>(m_context, LocalizedSearch(systemLocale()));
            connect(m_search.get(), &LinkSearch::changed, this, &LinkListModel::changed);
        }
        m_search->setText(text);
    }
}

void LinkListModel::startAnew()
{
    m_search.reset();
    m_known = {};
    m_count = m_context.counts().visible;
}

bool LinkListModel::isReading() const
{
    return m_search && m_search->isReading();
}

void LinkListModel::catchUp()
{
    m_context.announceChanges();
}

void LinkListModel::apply(const StoreChange &change)
{
    const bool isComplete = qsizetype(m_known.size()) >= m_count;
    m_count = m_context.counts().visible;
    if (sizeOf(change) > manyLinks)
        readAnew();
    else if (isComplete || !m_known.empty())
        follow(change, isComplete);
    if (!m_search)
        Q_EMIT changed(change);
}

/// As much as may be needed to find again what was known.
void LinkListModel::readAnew()
{
    if (std::exchange(m_known, {}).empty())
        return;
    while (qsizetype(m_known.size()) < m_count)
        readBehindLast();
}

void LinkListModel::follow(const StoreChange &change, bool isComplete)
{
    QSet<LinkId> gone(change.removed.begin(), change.removed.end());
    std::vector<ListPosition> added;
    for (const LinkId &id : change.inserted + change.updated) {
        const auto link = m_context.link(id);
        if (!link || !link->isVisible)
            gone.insert(id);
        else if (!std::binary_search(m_known.begin(), m_known.end(), positionOf(*link),
                                     comesBefore))
            added.push_back(positionOf(*link));
    }
    if (!gone.isEmpty())
        std::erase_if(m_known, [&gone](const auto &known) { return gone.contains(known.id); });
    if (!isComplete) // what is behind the last known is read with its like
        std::erase_if(added, [this](const auto &position) {
            return m_known.empty() || comesBefore(m_known.back(), position);
        });
    std::sort(added.begin(), added.end(), comesBefore);
    const auto middle = m_known.insert(m_known.end(), added.begin(), added.end());
    std::inplace_merge(m_known.begin(), middle, m_known.end(), comesBefore);
}
