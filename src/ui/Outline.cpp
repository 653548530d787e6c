// SPDX-License-Identifier: MIT
#include "Outline.h"

#include <QPainter>

void drawOutline(QPainter &painter, const QRect &rect, const QColor &color)
{
    const QTransform toPixels = painter.deviceTransform();
    const QRect pixels = toPixels.mapRect(QRectF(rect)).toRect();
    const int width = std::max(1, int(toPixels.m11()));
    painter.save();
    painter.setWorldTransform(toPixels.inverted() * painter.worldTransform());
    const QRect inner = pixels.adjusted(width, width, -width, -width);
    for (const QRect &side : QRegion(pixels) - inner)
        painter.fillRect(side, color);
    painter.restore();
}
