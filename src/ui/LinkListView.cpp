// SPDX-License-Identifier: MIT
#include "LinkListView.h"

#include "Accessibility.h"
#include "LinkRowView.h"
#include "MenuBarViewModel.h"
#include "TintedIcon.h"

#include <QKeyEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QVariantAnimation>

#include <algorithm>

namespace
{

constexpr int expandMilliseconds = 200;

bool isTyped(const QKeyEvent &event)
{
    const bool isCommand =
        event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    return !isCommand && !event.text().isEmpty() && event.text().at(0).isPrint();
}

} // namespace

LinkListView::LinkListView(MenuBarViewModel &model, QWidget *parent)
    : QAbstractScrollArea(parent)
    , m_model(model)
{
    installAccessibility();
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("Links"));
    viewport()->setBackgroundRole(QPalette::Base);
    verticalScrollBar()->setSingleStep(rowHeight() / 2);

    connect(&m_model.links(), &LinkListModel::changed, this, &LinkListView::follow);
    connect(&m_model, &MenuBarViewModel::timesChanged, this, &LinkListView::refreshRows);
}

LinkListView::~LinkListView() = default;

void LinkListView::startAnew()
{
    m_expanded.clear();
    m_current.reset();
    m_top.reset();
    layoutRows();
}

std::vector<LinkRowView *> LinkListView::rowsInView() const
{
    std::vector<LinkRowView *> rows;
    std::copy_if(m_rows.begin(), m_rows.end(), std::back_inserter(rows),
                 [](const LinkRowView *row) { return !row->isHidden(); });
    return rows;
}

// Where rows are, in pixels from the top of the list

int LinkListView::rowHeight() const
{
    return LinkRowView::collapsedHeight(*this);
}

int LinkListView::extraHeight(int row) const
{
    const auto found = std::find_if(m_expanded.begin(), m_expanded.end(),
                                    [row](const ExpandedRow &it) { return it.place.row == row; });
    return found == m_expanded.end() ? 0 : found->height->currentValue().toInt();
}

int LinkListView::rowTop(int row) const
{
    int top = row * rowHeight();
    for (const ExpandedRow &expanded : m_expanded)
        top += expanded.place.row < row ? expanded.height->currentValue().toInt() : 0;
    return top;
}

/// The row that covers `y`; the last one below all.
int LinkListView::rowAt(int y) const
{
    int low = 0, high = m_model.links().rowCount();
    while (low + 1 < high) {
        const int middle = (low + high) / 2;
        (rowTop(middle) <= y ? low : high) = middle;
    }
    return low;
}

int LinkListView::offset() const
{
    return m_top ? rowTop(m_top->row) + m_topHidden : 0;
}

int LinkListView::rowsAPage() const
{
    return std::max(1, viewport()->height() / rowHeight() - 1);
}

int LinkListView::summaryHeight(int row) const
{
    const auto summary = m_model.row(m_model.links().positionAt(row)).summary;
    return summary ? LinkRowView::summaryHeight(*this, *summary, viewport()->width()) : 0;
}

// Widgets

LinkRowView *LinkListView::makeRow()
{
    auto *const row = new LinkRowView(m_model, viewport());
    row->setTimeWidth(timeWidth());
    connect(row, &LinkRowView::toggled, this, &LinkListView::toggle);
    connect(row, &LinkRowView::focused, this, [this](const ListPosition &position) {
        if (m_isLayingOut)
            return; // it only was next when another went
        m_current = Place{position, m_model.links().rowOf(position)};
        updateTabStops();
    });
    return row;
}

LinkRowView *LinkListView::viewOf(const LinkId &id) const
{
    const auto found = std::find_if(m_rows.begin(), m_rows.end(), [&id](const LinkRowView *row) {
        return !row->isHidden() && row->id() == id;
    });
    return found == m_rows.end() ? nullptr : *found;
}

/// Null while the current row is out of view or there is none.
LinkRowView *LinkListView::currentView() const
{
    return m_current ? viewOf(m_current->position.id) : nullptr;
}

/// Sees to it that the first widgets show these rows. One that shows one of them already keeps it,
/// and with it the focus.
void LinkListView::takeRows(int first, int last)
{
    std::vector<LinkRowView *> spare = m_rows, taken;
    for (int at = first; at < last; ++at) {
        LinkRowView *const row = viewOf(m_model.links().positionAt(at).id);
        taken.push_back(row);
        std::erase(spare, row);
    }
    for (int at = first; at < last; ++at) {
        LinkRowView *&row = taken[size_t(at - first)];
        if (row)
            continue;
        if (spare.empty())
            spare.push_back(makeRow());
        row = spare.back();
        spare.pop_back();
        row->display(m_model.row(m_model.links().positionAt(at)));
    }
    for (LinkRowView *const row : spare)
        row->hide();
    m_rows = taken;
    m_rows.insert(m_rows.end(), spare.begin(), spare.end());
}

// Layout

/// Once for all changes of a loop turn, however many there are.
void LinkListView::layoutSoon()
{
    if (m_isLayoutPending || m_isLayingOut)
        return;
    m_isLayoutPending = true;
    QMetaObject::invokeMethod(this, &LinkListView::layoutRows, Qt::QueuedConnection);
}

void LinkListView::layoutRows()
{
    m_model.links().catchUp();
    m_model.links().positionAt(rowAt(offset() + viewport()->height())); // so that the count is true
    const QScopedValueRollback layingOut(m_isLayingOut, true);
    m_isLayoutPending = false;
    const QWidget *const focus = window()->focusWidget();
    updateScrollBar();
    placeRows();
    updateHovering();
    updateTabStops();
    if (focus == this || isAncestorOf(focus))
        keepFocus(focus);
}

void LinkListView::updateScrollBar()
{
    const int height = viewport()->height();
    const int wanted = offset();
    verticalScrollBar()->setPageStep(height);
    verticalScrollBar()->setRange(0, std::max(0, rowTop(m_model.links().rowCount()) - height));
    verticalScrollBar()->setValue(wanted);
    rememberTop();
}

void LinkListView::rememberTop()
{
    const int value = verticalScrollBar()->value();
    const int row = rowAt(value);
    m_top = value == 0 ? std::nullopt : std::optional(placeOf(row));
    m_topHidden = value - rowTop(row);
}

void LinkListView::placeRows()
{
    const int first = rowAt(offset());
    const bool isEmpty = m_model.links().rowCount() == 0;
    const int last = isEmpty ? first : rowAt(offset() + viewport()->height()) + 1;
    takeRows(first, last);
    int y = rowTop(first) - offset();
    for (int at = first; at < last; ++at) {
        const int height = rowHeight() + extraHeight(at);
        m_rows[size_t(at - first)]->setGeometry(0, y, viewport()->width(), height);
        y += height;
    }
}

/// Nothing tells a row that moved away from under the pointer.
void LinkListView::updateHovering()
{
    const bool isPointedAt = viewport()->underMouse();
    const QPoint pointer = viewport()->mapFromGlobal(QCursor::pos());
    for (LinkRowView *const row : m_rows)
        row->setHovering(isPointedAt && row->geometry().contains(pointer));
}

// Changes

LinkListView::Place LinkListView::placeOf(int row) const
{
    return {m_model.links().positionAt(row), row};
}

void LinkListView::follow(const StoreChange &change)
{
    const LinkListModel &links = m_model.links();
    std::erase_if(m_expanded, [&links](const ExpandedRow &expanded) {
        return !links.contains(expanded.place.position);
    });
    for (ExpandedRow &expanded : m_expanded) {
        expanded.place.row = links.rowOf(expanded.place.position);
        if (change.updated.contains(expanded.place.position.id))
            expanded.height->setEndValue(summaryHeight(expanded.place.row));
    }
    if (m_top && !links.contains(m_top->position))
        m_topHidden = 0;
    followPlace(m_top);
    followPlace(m_current);
    refreshRows();
    layoutSoon();
}

void LinkListView::refreshRows()
{
    for (LinkRowView *const row : rowsInView()) {
        if (m_model.links().contains(row->position()))
            row->display(m_model.row(row->position()));
    }
}

/// When its link has gone, the next one takes the place.
void LinkListView::followPlace(std::optional<Place> &place)
{
    const int count = m_model.links().rowCount();
    if (place && count > 0)
        place = placeOf(std::min(m_model.links().rowOf(place->position), count - 1));
    else
        place.reset();
}

// Expanding

void LinkListView::toggle(const ListPosition &position)
{
    if (!m_model.links().contains(position))
        return;
    const int row = m_model.links().rowOf(position);
    const auto found = std::find_if(m_expanded.begin(), m_expanded.end(),
                                    [row](const ExpandedRow &it) { return it.place.row == row; });
    if (found != m_expanded.end()) {
        QVariantAnimation &height = *found->height;
        height.setDirection(height.direction() == QVariantAnimation::Forward
                                ? QVariantAnimation::Backward
                                : QVariantAnimation::Forward);
        height.start();
        return;
    }
    auto height = std::make_unique<QVariantAnimation>();
    height->setDuration(expandMilliseconds);
    height->setEasingCurve(QEasingCurve::InOutQuad);
    height->setStartValue(0);
    height->setEndValue(summaryHeight(row));
    connect(height.get(), &QVariantAnimation::valueChanged, this, &LinkListView::layoutSoon);
    connect(height.get(), &QVariantAnimation::finished, this, &LinkListView::forgetCollapsed,
            Qt::QueuedConnection);
    height->start();
    m_expanded.push_back({{position, row}, std::move(height)});
}

void LinkListView::forgetCollapsed()
{
    std::erase_if(m_expanded, [](const ExpandedRow &row) {
        return row.height->state() == QVariantAnimation::Stopped
            && row.height->direction() == QVariantAnimation::Backward;
    });
}

// Keyboard

void LinkListView::focusCurrent()
{
    LinkRowView *const row = currentView();
    row ? row->setFocus() : setFocus();
}

/// The focus may stay on a button of the current row. Where a row has gone with it, Qt has moved it
/// to whatever was next.
void LinkListView::keepFocus(const QWidget *before)
{
    const LinkRowView *const row = currentView();
    if (!row || !row->isAncestorOf(before) || window()->focusWidget() != before)
        focusCurrent();
}

/// The tabulator goes to the current row, not to each: the arrows do that.
void LinkListView::updateTabStops()
{
    const LinkRowView *const current = currentView();
    for (LinkRowView *const row : m_rows)
        row->setFocusPolicy(row == current ? Qt::StrongFocus : Qt::ClickFocus);
    setFocusPolicy(current ? Qt::ClickFocus : Qt::StrongFocus);
}

void LinkListView::setCurrent(int row)
{
    m_model.links().catchUp();
    const int count = m_model.links().rowCount();
    if (count == 0)
        return;
    row = std::clamp(row, 0, count - 1);
    m_current = placeOf(row);
    scrollTo(row);
    focusCurrent();
}

void LinkListView::scrollTo(int row)
{
    layoutRows();
    const int lowest = rowTop(row), highest = rowTop(row + 1) - viewport()->height();
    verticalScrollBar()->setValue(std::min(lowest, std::max(highest, offset())));
}

void LinkListView::actOnCurrent(void (MenuBarViewModel::*action)(const LinkId &))
{
    if (m_current) {
        const LinkId id = m_current->position.id; // the record may go
        (m_model.*action)(id);
    }
}

void LinkListView::keyPressEvent(QKeyEvent *event)
{
    const int row = m_current ? m_current->row : -1;
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
        return m_current ? toggle(m_current->position) : void();
    case Qt::Key_Delete:
        return actOnCurrent(&MenuBarViewModel::remove);
    default:
        if (isTyped(*event))
            Q_EMIT typed(event->text());
        else
            QAbstractScrollArea::keyPressEvent(event);
    }
}

void LinkListView::openFirst()
{
    if (m_model.isSearching() && m_model.links().rowCount() > 0)
        m_model.open(m_model.links().positionAt(0).id);
}

void LinkListView::focusInEvent(QFocusEvent *event)
{
    if (m_isLayingOut)
        return;
    const bool byKeyboard =
        event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    if (byKeyboard)
        setCurrent(m_current ? m_current->row : rowAt(offset()));
    else
        focusCurrent();
}

int LinkListView::timeWidth()
{
    if (m_timeWidth == 0) {
        for (const QString &time : m_model.times())
            m_timeWidth = std::max(m_timeWidth, fontMetrics().horizontalAdvance(time) + 1);
    }
    return m_timeWidth;
}

void LinkListView::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange) {
        m_timeWidth = 0;
        for (LinkRowView *const row : m_rows)
            row->setTimeWidth(timeWidth());
    }
    QAbstractScrollArea::changeEvent(event);
}

void LinkListView::resizeEvent(QResizeEvent *)
{
    for (const ExpandedRow &expanded : m_expanded)
        expanded.height->setEndValue(summaryHeight(expanded.place.row));
    layoutRows();
}

void LinkListView::paintEvent(QPaintEvent *)
{
    if (!m_model.isSearching() || m_model.links().rowCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setPen(secondaryTextColor(palette()));
    painter.drawText(viewport()->rect(), Qt::AlignCenter, m_model.nothingFoundText());
}

void LinkListView::scrollContentsBy(int, int)
{
    if (m_isLayingOut)
        return;
    rememberTop();
    layoutRows();
}
