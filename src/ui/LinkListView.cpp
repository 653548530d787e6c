#include "LinkListView.h"

#include "LinkRowView.h"
#include "MenuBarViewModel.h"

#include <QApplication>
#include <QKeyEvent>
#include <QScrollBar>
#include <QVariantAnimation>

#include <algorithm>

namespace
{
constexpr int expandMilliseconds = 200;
constexpr int rowsReadAhead = 50;
} // namespace

LinkListView::LinkListView(MenuBarViewModel &model, QWidget *parent)
    : QAbstractScrollArea(parent)
    , m_model(model)
{
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("Links"));
    viewport()->setBackgroundRole(QPalette::Base);
    verticalScrollBar()->setSingleStep(rowHeight() / 2);

    const LinkListModel &links = m_model.links();
    connect(&links, &LinkListModel::rowsInserted, this,
            [this](const QModelIndex &, int first, int last) { rowsInserted(first, last); });
    connect(
        &links, &LinkListModel::rowsAboutToBeRemoved, this,
        [this](const QModelIndex &, int first, int last) { rowsAboutToBeRemoved(first, last); });
    // Again when the change is over, because only then more rows can be read in their place.
    connect(&links, &LinkListModel::rowsRemoved, this, &LinkListView::layoutRows);
    connect(&links, &LinkListModel::rowsRemoved, this, &LinkListView::layoutRows,
            Qt::QueuedConnection);
    connect(&links, &LinkListModel::dataChanged, this, &LinkListView::refreshRows);
}

void LinkListView::startAnew()
{
    m_expanded.clear();
    m_current = LinkId();
    verticalScrollBar()->setValue(0);
    layoutRows();
}

int LinkListView::rowHeight() const
{
    return LinkRowView::collapsedHeight(*this);
}

int LinkListView::rowTop(int row) const
{
    int top = row * rowHeight();
    for (auto it = m_expanded.begin(); it != m_expanded.end(); ++it) {
        const int expanded = m_model.links().rowOf(it.key());
        top += expanded >= 0 && expanded < row ? it.value() : 0;
    }
    return top;
}

/// The row that covers `y`, counted from the top of the list; the last one below all.
int LinkListView::rowAt(int y) const
{
    int low = 0, high = m_model.links().rowCount();
    while (low + 1 < high) {
        const int middle = (low + high) / 2;
        (rowTop(middle) <= y ? low : high) = middle;
    }
    return low;
}

int LinkListView::currentRow() const
{
    return m_current.isNull() ? -1 : m_model.links().rowOf(m_current);
}

int LinkListView::rowsAPage() const
{
    return std::max(1, viewport()->height() / rowHeight() - 1);
}

LinkRowView *LinkListView::makeRow()
{
    auto *const row = new LinkRowView(m_model, viewport());
    connect(row, &LinkRowView::toggled, this, &LinkListView::toggle);
    connect(row, &LinkRowView::focused, this, [this](const LinkId &id) { m_current = id; });
    return row;
}

LinkRowView *LinkListView::viewOf(const LinkId &id) const
{
    const auto found = std::find_if(m_rows.begin(), m_rows.end(), [&id](const LinkRowView *row) {
        return !row->isHidden() && row->id() == id;
    });
    return found == m_rows.end() ? nullptr : *found;
}

/// A widget for each of the rows. Those that show one of them already keep it, and with it the
/// pointer and the focus.
std::vector<LinkRowView *> LinkListView::takeRows(int first, int last)
{
    QHash<LinkId, LinkRowView *> shown;
    std::vector<LinkRowView *> spare, taken;
    for (LinkRowView *const row : m_rows) {
        if (row->isHidden() || shown.contains(row->id()))
            spare.push_back(row);
        else
            shown.insert(row->id(), row);
    }
    for (int at = first; at < last; ++at)
        taken.push_back(shown.take(m_model.links().linkAt(at).id));
    spare.insert(spare.end(), shown.begin(), shown.end()); // what has left the view

    for (int at = first; at < last; ++at) {
        LinkRowView *&row = taken[size_t(at - first)];
        if (row)
            continue;
        if (spare.empty())
            spare.push_back(makeRow());
        row = spare.back();
        spare.pop_back();
        row->display(m_model.row(at));
    }
    for (LinkRowView *const row : spare)
        row->hide();
    m_rows = taken;
    m_rows.insert(m_rows.end(), spare.begin(), spare.end());
    return taken;
}

void LinkListView::layoutRows()
{
    LinkListModel &links = m_model.links();
    const int height = viewport()->height(), width = viewport()->width();
    if (links.canFetchMore({})
        && rowAt(verticalScrollBar()->value() + height) + rowsReadAhead >= links.rowCount()) {
        links.fetchMore({}); // comes back here through the rows it inserts
    }
    const int count = links.rowCount();
    verticalScrollBar()->setPageStep(height);
    verticalScrollBar()->setRange(0, std::max(0, rowTop(count) - height));

    const bool hadFocus = isAncestorOf(QApplication::focusWidget()) || hasFocus();
    const int offset = verticalScrollBar()->value();
    const int first = rowAt(offset);
    const int last = count == 0 ? 0 : rowAt(offset + height) + 1;
    int y = rowTop(first) - offset;
    for (LinkRowView *const row : takeRows(first, std::max(first, last))) {
        const int rowSize = rowHeight() + m_expanded.value(row->id());
        row->setGeometry(0, y, width, rowSize);
        y += rowSize;
    }
    if (hadFocus)
        focusCurrent();
}

void LinkListView::focusCurrent()
{
    LinkRowView *const row = viewOf(m_current);
    QWidget *const wanted = row ? static_cast<QWidget *>(row) : this;
    if (!wanted->isAncestorOf(QApplication::focusWidget()))
        wanted->setFocus();
}

void LinkListView::refreshRows()
{
    for (LinkRowView *const row : m_rows) {
        const int at = row->isHidden() ? -1 : m_model.links().rowOf(row->id());
        if (at < 0)
            continue;
        row->display(m_model.row(at));
        if (m_expanded.contains(row->id()))
            m_expanded[row->id()] = row->summaryHeight(viewport()->width());
    }
    layoutRows();
}

/// What is in view stays in view when rows come in above it; at the top, the newest is shown.
void LinkListView::rowsInserted(int first, int last)
{
    const int offset = verticalScrollBar()->value();
    const bool isAbove = offset > 0 && rowTop(first) < offset;
    layoutRows();
    if (isAbove)
        verticalScrollBar()->setValue(offset + (last - first + 1) * rowHeight());
}

void LinkListView::rowsAboutToBeRemoved(int first, int last)
{
    const LinkListModel &links = m_model.links();
    const int current = currentRow();
    if (current >= first && current <= last) { // the keyboard goes on to the neighbour
        const int neighbour = last + 1 < links.rowCount() ? last + 1 : first - 1;
        m_current = neighbour >= 0 ? links.linkAt(neighbour).id : LinkId();
    }
    const int offset = verticalScrollBar()->value();
    if (const int gone = rowTop(last + 1) - rowTop(first); rowTop(last + 1) <= offset)
        verticalScrollBar()->setValue(offset - gone);
    for (int row = first; row <= last; ++row)
        m_expanded.remove(links.linkAt(row).id);
}

void LinkListView::toggle(const LinkId &id)
{
    LinkRowView *const row = viewOf(id);
    const int full = row ? row->summaryHeight(viewport()->width()) : 0;
    if (full == 0)
        return;
    const bool isOpening = !m_expanded.contains(id);
    auto *const animation = new QVariantAnimation(this);
    animation->setDuration(expandMilliseconds);
    animation->setEasingCurve(QEasingCurve::InOutQuad);
    animation->setStartValue(isOpening ? 0 : m_expanded.value(id));
    animation->setEndValue(isOpening ? full : 0);
    m_expanded.insert(id, animation->startValue().toInt());
    connect(animation, &QVariantAnimation::valueChanged, this, [this, id](const QVariant &height) {
        if (m_expanded.contains(id)) // not deleted meanwhile
            m_expanded[id] = height.toInt();
        layoutRows();
    });
    connect(animation, &QVariantAnimation::finished, this, [this, id, isOpening] {
        if (!isOpening)
            m_expanded.remove(id);
    });
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void LinkListView::setCurrent(int row)
{
    const int count = m_model.links().rowCount();
    if (count == 0)
        return;
    row = std::clamp(row, 0, count - 1);
    m_current = m_model.links().linkAt(row).id;
    scrollTo(row);
    focusCurrent();
}

void LinkListView::scrollTo(int row)
{
    const int offset = verticalScrollBar()->value();
    const int lowest = rowTop(row), highest = rowTop(row + 1) - viewport()->height();
    verticalScrollBar()->setValue(std::min(lowest, std::max(highest, offset)));
    layoutRows();
}

void LinkListView::actOnCurrent(void (MenuBarViewModel::*action)(const LinkId &))
{
    const LinkId id = m_current;
    if (currentRow() >= 0)
        (m_model.*action)(id);
}

void LinkListView::keyPressEvent(QKeyEvent *event)
{
    const int row = currentRow();
    if (event->matches(QKeySequence::Copy))
        return actOnCurrent(&MenuBarViewModel::copyUrl);
    switch (event->key()) {
    case Qt::Key_Down:
        return setCurrent(row + 1);
    case Qt::Key_Up:
        return setCurrent(row - 1);
    case Qt::Key_PageDown:
        return setCurrent(row + rowsAPage());
    case Qt::Key_PageUp:
        return setCurrent(row - rowsAPage());
    case Qt::Key_Home:
        return setCurrent(0);
    case Qt::Key_End:
        return setCurrent(m_model.links().rowCount() - 1);
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return actOnCurrent(&MenuBarViewModel::open);
    case Qt::Key_Space:
        return toggle(m_current);
    case Qt::Key_Delete:
        return actOnCurrent(&MenuBarViewModel::remove);
    default:
        QAbstractScrollArea::keyPressEvent(event);
    }
}

void LinkListView::focusInEvent(QFocusEvent *)
{
    if (currentRow() >= 0)
        focusCurrent();
    else
        setCurrent(rowAt(verticalScrollBar()->value()));
}

void LinkListView::resizeEvent(QResizeEvent *)
{
    refreshRows();
}

void LinkListView::scrollContentsBy(int, int)
{
    layoutRows();
}
