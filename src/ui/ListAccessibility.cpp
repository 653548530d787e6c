#include "ListAccessibility.h"

#include "LinkListView.h"
#include "LinkRowView.h"

#include <QAccessible>
#include <QAccessibleWidget>

namespace
{

QAccessibleInterface *listInterface(const QString &, QObject *object)
{
    if (auto *const list = qobject_cast<LinkListView *>(object))
        return new QAccessibleWidget(list, QAccessible::List);
    if (auto *const row = qobject_cast<LinkRowView *>(object))
        return new QAccessibleWidget(row, QAccessible::ListItem);
    return nullptr;
}

} // namespace

void installListAccessibility()
{
    static const bool isInstalled = [] {
        QAccessible::installFactory(listInterface);
        return true;
    }();
    Q_UNUSED(isInstalled)
}
