// SPDX-License-Identifier: MIT
#include "LinkRowView.h"

#include "ElidedLabel.h"
#include "IconButton.h"
#include "IconLabel.h"
#include "TintedIcon.h"
#include "style/DevicePixels.h"

#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QMenu>
#include <QPainter>
#include <QStackedLayout>

using namespace Qt::StringLiterals;

namespace
{

constexpr int sideMargin = 12;
constexpr int spacing = 4;
constexpr int summaryRise = 6; // into the room below the title
constexpr int summaryBottomMargin = 4;
constexpr int summaryFlags = Qt::AlignTop | Qt::AlignLeft | Qt::TextWordWrap;
constexpr int iconSize = 16;

} // namespace

LinkRowView::LinkRowView(MenuBarViewModel &model, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
    , m_line(new QWidget(this))
    , m_title(new ElidedLabel(ElidedLabel::Rank::primary))
    , m_time(new ElidedLabel(ElidedLabel::Rank::secondary))
    , m_marker(new IconLabel(u"sparkles"_s, iconSize))
{
    setFocusPolicy(Qt::StrongFocus);
    m_marker->setToolTip(tr("Has a summary"));

    QSizePolicy retained = m_marker->sizePolicy();
    retained.setRetainSizeWhenHidden(true);
    m_marker->setSizePolicy(retained);
    auto *const details = new QWidget;
    auto *const detailsLine = new QHBoxLayout(details);
    detailsLine->setContentsMargins(0, 0, 0, 0);
    detailsLine->setSpacing(spacing);
    detailsLine->addStretch();
    detailsLine->addWidget(m_marker);
    detailsLine->addWidget(m_time);

    m_buttons = {
        addButton(u"open"_s, tr("Open in Browser"), &MenuBarViewModel::open),
        addButton(u"copy"_s, tr("Copy URL"), &MenuBarViewModel::copyUrl),
        addButton(u"trash"_s, tr("Delete"), &MenuBarViewModel::remove),
    };
    auto *const buttons = new QWidget;
    auto *const buttonsLine = new QHBoxLayout(buttons);
    buttonsLine->setContentsMargins(0, 0, 0, 0);
    buttonsLine->setSpacing(0);
    buttonsLine->addStretch();
    for (IconButton *const button : std::as_const(m_buttons))
        buttonsLine->addWidget(button);

    auto *const side = new QWidget;
    side->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    m_side = new QStackedLayout(side); // as wide as the wider of the two, so the title stays
    m_side->addWidget(details);
    m_side->addWidget(buttons);
    auto *const line = new QHBoxLayout(m_line);
    line->setContentsMargins(sideMargin, 0, sideMargin, 0);
    line->setSpacing(spacing);
    line->addWidget(m_title, 1);
    line->addWidget(side);
    refreshButtons();
}

int LinkRowView::collapsedHeight(const QWidget &list)
{
    return std::max(40, list.fontMetrics().height() + 20);
}

int LinkRowView::summaryHeight(const QWidget &list, const QString &summary, int width)
{
    const QRect space(0, 0, width - 2 * sideMargin, QWIDGETSIZE_MAX);
    const int text = list.fontMetrics().boundingRect(space, summaryFlags, summary).height();
    return text + summaryBottomMargin;
}

IconButton *LinkRowView::addButton(const QString &icon, const QString &toolTip,
                                   void (MenuBarViewModel::*action)(const LinkId &))
{
    auto *const button = new IconButton(icon, toolTip);
    button->installEventFilter(this);
    connect(button, &IconButton::clicked, this, [this, action] {
        const LinkId id = this->id(); // the row may go with its link
        (m_model.*action)(id);
    });
    return button;
}

void LinkRowView::setTimeWidth(int width)
{
    m_time->setMinimumWidth(width);
}

void LinkRowView::display(const LinkRow &row)
{
    m_row = row;
    m_title->setText(row.title);
    m_time->setText(row.time);
    m_marker->setVisible(row.summary.has_value());
    update();
    setAccessibleName(row.title + u", " + row.time);
    setAccessibleDescription(row.summary.value_or(QString()));
    show();
}

bool LinkRowView::isExpanded() const
{
    return height() > collapsedHeight(*this);
}

void LinkRowView::resizeEvent(QResizeEvent *)
{
    m_line->setGeometry(0, 0, width(), collapsedHeight(*this));
}

void LinkRowView::refreshButtons()
{
    const bool isForKeys = m_isByKeyboard && hasFocusWithin();
    for (IconButton *const button : std::as_const(m_buttons))
        button->setFocusPolicy(isForKeys ? Qt::TabFocus : Qt::NoFocus);
    m_side->setCurrentIndex(int(m_isHovering || isForKeys));
    update();
}

bool LinkRowView::hasFocusWithin() const
{
    const auto hasFocus = [](const QWidget *widget) { return widget->hasFocus(); };
    return hasFocus(this) || std::any_of(m_buttons.begin(), m_buttons.end(), hasFocus);
}

bool LinkRowView::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusOut || event->type() == QEvent::FocusIn)
        QMetaObject::invokeMethod(this, &LinkRowView::refreshButtons, Qt::QueuedConnection);
    return QWidget::eventFilter(watched, event);
}

void LinkRowView::focusInEvent(QFocusEvent *event)
{
    const bool isBack =
        event->reason() == Qt::ActiveWindowFocusReason || event->reason() == Qt::PopupFocusReason;
    if (!isBack)
        m_isByKeyboard = event->reason() != Qt::MouseFocusReason;
    refreshButtons();
    Q_EMIT focused(m_row.position);
}

void LinkRowView::focusOutEvent(QFocusEvent *)
{
    // Later: the focus may be on its way to one of the buttons, which must then still be there.
    QMetaObject::invokeMethod(this, &LinkRowView::refreshButtons, Qt::QueuedConnection);
}

/// Whoever goes on from a row that was clicked finds its buttons.
bool LinkRowView::focusNextPrevChild(bool isNext)
{
    m_isByKeyboard = true;
    refreshButtons();
    return QWidget::focusNextPrevChild(isNext);
}

void LinkRowView::setHovering(bool isHovering)
{
    if (std::exchange(m_isHovering, isHovering) != isHovering)
        refreshButtons();
}

void LinkRowView::enterEvent(QEnterEvent *)
{
    setHovering(true);
}

void LinkRowView::leaveEvent(QEvent *)
{
    setHovering(false);
}

void LinkRowView::mousePressEvent(QMouseEvent *event)
{
    event->accept(); // so that the release comes here too
}

void LinkRowView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && rect().contains(event->pos()))
        Q_EMIT toggled(m_row.position);
}

bool LinkRowView::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip)
        setToolTip(m_model.toolTip(id())); // now only: it is read for the row pointed at
    return QWidget::event(event);
}

void LinkRowView::contextMenuEvent(QContextMenuEvent *event)
{
    auto *const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const LinkId id = this->id(); // the row may show another link before the user has chosen
    MenuBarViewModel &model = m_model;
    menu->addAction(tr("Copy URL"), &model, [&model, id] { model.copyUrl(id); });
    menu->addAction(tr("Open in Browser"), &model, [&model, id] { model.open(id); });
    if (m_row.summary)
        menu->addAction(tr("Copy Summary"), &model, [&model, id] { model.copySummary(id); });
    menu->addSeparator();
    QAction *const remove = menu->addAction(tintedIcon(u"trash"_s, Tone::error), tr("Delete"),
                                            &model, [&model, id] { model.remove(id); });
    remove->setProperty("role", u"destructive"_s);
    menu->popup(event->globalPos());
}

void LinkRowView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const bool isFocused = hasFocusWithin();
    if (m_isHovering || isFocused) {
        const QColor accent = palette().color(QPalette::Highlight);
        QColor wash = accent;
        wash.setAlpha(isFocused ? 34 : 20);
        const bool hasRing = m_isByKeyboard && hasFocus();
        draw(painter,
             {QRectF(rect().adjusted(4, 1, -4, -1)), 6, wash,
              hasRing ? accent : QColor(Qt::transparent), 2});
    }
    if (m_row.summary && isExpanded()) { // laid out as it will be: while the row grows, uncovered
        const QRect space(sideMargin, collapsedHeight(*this) - summaryRise,
                          width() - 2 * sideMargin, QWIDGETSIZE_MAX);
        painter.setPen(secondaryTextColor(palette()));
        painter.drawText(space, summaryFlags, *m_row.summary);
    }
}
