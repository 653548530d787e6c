// SPDX-License-Identifier: MIT
#include "IconLabel.h"

#include "TintedIcon.h"

#include <QPainter>

IconLabel::IconLabel(const QString &icon, int size, QWidget *parent)
    : QWidget(parent)
    , m_icon(tintedIcon(icon))
{
    setFixedSize(size, size);
}

void IconLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setOpacity(0.6); // of second rank, as the texts beside it
    m_icon.paint(&painter, rect());
}
