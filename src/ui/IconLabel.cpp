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

void IconLabel::setIcon(const QString &icon, Tone tone)
{
    m_icon = tintedIcon(icon, tone);
    m_opacity = 1;
    update();
}

void IconLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setOpacity(m_opacity);
    m_icon.paint(&painter, rect());
}
