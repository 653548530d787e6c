// SPDX-License-Identifier: MIT
#include "Accessibility.h"

#include "ElidedLabel.h"
#include "LinkListView.h"
#include "LinkRowView.h"

#include <QAccessible>
#include <QAccessibleWidget>

namespace
{

/// A list whose children are the rows in view, without the scroll area's parts in between.
class ListInterface final : public QAccessibleWidget
{
public:
    explicit ListInterface(LinkListView *list)
        : QAccessibleWidget(list, QAccessible::List)
        , m_list(*list)
    {
    }

    int childCount() const override { return int(m_list.rowsInView().size()); }
    QAccessibleInterface *child(int index) const override
    {
        const auto rows = m_list.rowsInView();
        const bool isThere = index >= 0 && size_t(index) < rows.size();
        return isThere ? QAccessible::queryAccessibleInterface(rows[size_t(index)]) : nullptr;
    }
    int indexOfChild(const QAccessibleInterface *child) const override
    {
        const auto rows = m_list.rowsInView();
        const auto found = std::find(rows.begin(), rows.end(), child->object());
        return found == rows.end() ? -1 : int(found - rows.begin());
    }

private:
    const LinkListView &m_list;
};

class RowInterface final : public QAccessibleWidget
{
public:
    explicit RowInterface(LinkRowView *row)
        : QAccessibleWidget(row, QAccessible::ListItem)
        , m_row(*row)
    {
    }

    QAccessibleInterface *parent() const override
    {
        return QAccessible::queryAccessibleInterface(m_row.parentWidget()->parent());
    }
    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.expandable = m_row.hasSummary();
        state.expanded = m_row.isExpanded();
        state.collapsed = state.expandable && !state.expanded;
        return state;
    }

private:
    const LinkRowView &m_row;
};

class TextInterface final : public QAccessibleWidget
{
public:
    explicit TextInterface(ElidedLabel *label)
        : QAccessibleWidget(label, QAccessible::StaticText)
        , m_label(*label)
    {
    }

    QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Name ? m_label.text() : QAccessibleWidget::text(kind);
    }

private:
    const ElidedLabel &m_label;
};

QAccessibleInterface *interfaceOf(const QString &, QObject *object)
{
    if (auto *const list = qobject_cast<LinkListView *>(object))
        return new ListInterface(list);
    if (auto *const row = qobject_cast<LinkRowView *>(object))
        return new RowInterface(row);
    if (auto *const label = qobject_cast<ElidedLabel *>(object))
        return new TextInterface(label);
    return nullptr;
}

} // namespace

void installAccessibility()
{
    static const bool isInstalled = [] {
        QAccessible::installFactory(interfaceOf);
        return true;
    }();
    Q_UNUSED(isInstalled)
}
