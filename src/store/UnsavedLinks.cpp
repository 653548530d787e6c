// SPDX-License-Identifier: MIT
#include "UnsavedLinks.h"

const UnsavedLinks::Unsaved *UnsavedLinks::find(const LinkId &id) const
{
    const auto found = m_links.constFind(id);
    return found == m_links.constEnd() ? nullptr : &*found;
}

void UnsavedLinks::keepChanged(const CapturedLink &link)
{
    Unsaved &unsaved = m_links[link.id];
    unsaved.link = link;
    if (unsaved.order == 0)
        unsaved.order = ++m_last;
}

void UnsavedLinks::changeEach(const QList<LinkId> &ids,
                              const std::function<void(CapturedLink &)> &change)
{
    for (const LinkId &id : ids) {
        if (const auto found = m_links.find(id); found != m_links.end())
            change(found->link);
    }
}

QList<CapturedLink> UnsavedLinks::inOrder() const
{
    QList<const Unsaved *> ordered;
    for (const Unsaved &unsaved : m_links)
        ordered.append(&unsaved);
    std::sort(ordered.begin(), ordered.end(),
              [](const Unsaved *one, const Unsaved *other) { return one->order < other->order; });
    QList<CapturedLink> links;
    for (const Unsaved *const unsaved : ordered)
        links.append(unsaved->link);
    return links;
}

void UnsavedLinks::addNew(QList<CapturedLink> &page, const std::optional<ListPosition> &after,
                          int limit) const
{
    if (isEmpty())
        return;
    for (const Unsaved &unsaved : m_links) {
        const bool isBehind = !after || comesBefore(*after, positionOf(unsaved.link));
        if (unsaved.isNew && unsaved.link.isVisible && isBehind)
            page.append(unsaved.link);
    }
    std::sort(page.begin(), page.end(), [](const CapturedLink &one, const CapturedLink &other) {
        return comesBefore(positionOf(one), positionOf(other));
    });
    if (page.size() > limit)
        page.resize(limit);
}

void UnsavedLinks::correctStoreOrder(QList<CapturedLink> &links) const
{
    correctRows(links);
    for (const CapturedLink &link : inOrder()) {
        if (find(link.id)->isNew && link.isVisible)
            links.append(link);
    }
}

void UnsavedLinks::correctRows(QList<CapturedLink> &rows) const
{
    if (isEmpty())
        return;
    for (CapturedLink &link : rows) {
        if (const Unsaved *const unsaved = find(link.id))
            link = unsaved->link;
    }
    rows.removeIf([](const CapturedLink &link) { return !link.isVisible; });
}

void UnsavedLinks::correctPositions(std::vector<ListPosition> &positions, const ListPosition &last,
                                    int limit) const
{
    if (isEmpty())
        return;
    std::erase_if(positions, [this](const ListPosition &position) { return find(position.id); });
    for (const Unsaved &unsaved : m_links) {
        if (unsaved.link.isVisible && comesBefore(last, positionOf(unsaved.link)))
            positions.push_back(positionOf(unsaved.link));
    }
    std::sort(positions.begin(), positions.end(), comesBefore);
    if (limit >= 0 && positions.size() > size_t(limit))
        positions.resize(size_t(limit));
}
