#include "UnsavedLinks.h"

const UnsavedLinks::Unsaved *UnsavedLinks::find(const LinkId &id) const
{
    const auto found = m_links.constFind(id);
    return found == m_links.constEnd() ? nullptr : &*found;
}

void UnsavedLinks::keepChanged(const CapturedLink &link)
{
    const Unsaved *const before = find(link.id);
    m_links.insert(link.id, {link, before && before->isNew});
}

void UnsavedLinks::changeEach(const QList<LinkId> &ids,
                              const std::function<void(CapturedLink &)> &change)
{
    for (const LinkId &id : ids) {
        if (const auto found = m_links.find(id); found != m_links.end())
            change(found->link);
    }
}

QList<LinkId> UnsavedLinks::takeNewCopiedBefore(Instant cutoff)
{
    QList<LinkId> taken;
    m_links.removeIf([&taken, cutoff](const std::pair<const LinkId &, Unsaved &> &entry) {
        const bool isMeant = entry.second.isNew && entry.second.link.copiedAt < cutoff;
        if (isMeant)
            taken.append(entry.first);
        return isMeant;
    });
    return taken;
}

QList<CapturedLink> UnsavedLinks::inOrderOfCopying() const
{
    QList<CapturedLink> links;
    for (const Unsaved &unsaved : m_links)
        links.append(unsaved.link);
    std::sort(links.begin(), links.end(), [](const CapturedLink &one, const CapturedLink &other) {
        return comesBefore(positionOf(other), positionOf(one));
    });
    return links;
}

void UnsavedLinks::correctPage(QList<CapturedLink> &page, const std::optional<ListPosition> &after,
                               int limit) const
{
    if (isEmpty())
        return;
    correctRows(page);
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
    for (const CapturedLink &link : inOrderOfCopying()) {
        if (find(link.id)->isNew && link.isVisible)
            links.append(link);
    }
}

void UnsavedLinks::correctRows(QList<CapturedLink> &links) const
{
    if (isEmpty())
        return;
    for (CapturedLink &link : links) {
        if (const Unsaved *const unsaved = find(link.id))
            link = unsaved->link;
    }
}
