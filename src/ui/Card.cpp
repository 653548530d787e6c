// SPDX-License-Identifier: MIT
#include "Card.h"

#include "style/DevicePixels.h"

#include <QPainter>

void Card::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    draw(painter, {QRectF(rect()), 6, Qt::transparent, palette().color(QPalette::Mid)});
}
