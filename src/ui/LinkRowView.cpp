// SPDX-License-Identifier: MIT
#include "LinkRowView.h"

#include "ElidedLabel.h"
#include "IconButton.h"
#include "IconLabel.h"
#include "TintedIcon.h"

#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QMenu>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace
{

constexpr int sideMargin = 12;
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

    auto *const line = new QHBoxLayout(m_line);
    line->setContentsMargins(sideMargin, 0, sideMargin, 0);
    line->setSpacing(4);
    line->addWidget(m_title, 1);
    m_buttons = {
        addButton(u"open"_s, tr("Open in Browser"), &MenuBarViewModel::open),
        addButton(u"copy"_s, tr("Copy URL"), &MenuBarViewModel::copyUrl),
        addButton(u"trash"_s, tr("Delete"), &MenuBarViewModel::remove),
    };
    for (IconButton *const button : std::as_const(m_buttons))
        line->addWidget(button);
    line->addWidget(m_marker);
    line->addWidget(m_time);
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
    const bool hasFocus = hasFocusWithin();
    for (IconButton *const button : std::as_const(m_buttons)) {
        button->setVisible(m_isHovering || hasFocus);
        button->setFocusPolicy(hasFocus ? Qt::TabFocus : Qt::NoFocus);
    }
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

void LinkRowView::focusInEvent(QFocusEvent *)
{
    refreshButtons();
    Q_EMIT focused(m_row.position);
}

void LinkRowView::focusOutEvent(QFocusEvent *)
{
    // Later: the focus may be on its way to one of the buttons, which must then still be there.
    QMetaObject::invokeMethod(this, &LinkRowView::refreshButtons, Qt::QueuedConnection);
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
    menu->addAction(tintedIcon(u"trash"_s, Tone::error), tr("Delete"), &model,
                    [&model, id] { model.remove(id); });
    menu->popup(event->globalPos());
}

void LinkRowView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool isFocused = hasFocusWithin();
    if (m_isHovering || isFocused) {
        QColor wash = palette().color(QPalette::Highlight);
        wash.setAlpha(isFocused ? 56 : 28);
        painter.setBrush(wash);
        painter.setPen(Qt::NoPen);
        painter.drawRoundedRect(rect().adjusted(4, 1, -4, -1), 6, 6);
    }
    if (m_row.summary && isExpanded()) { // laid out as it will be: while the row grows, uncovered
        const QRect space(sideMargin, collapsedHeight(*this) - summaryRise,
                          width() - 2 * sideMargin, QWIDGETSIZE_MAX);
        painter.setPen(secondaryTextColor(palette()));
        painter.drawText(space, summaryFlags, *m_row.summary);
    }
}
