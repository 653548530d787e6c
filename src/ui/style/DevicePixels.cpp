// SPDX-License-Identifier: MIT
#include "style/DevicePixels.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

void draw(QPainter &painter, const Box &box)
{
    const QTransform toDevice = painter.deviceTransform();
    const qreal scale = toDevice.m11();
    const QRectF exact = toDevice.mapRect(box.rect);
    const QRectF pixels(QPointF(std::round(exact.left()), std::round(exact.top())),
                        QPointF(std::round(exact.right()), std::round(exact.bottom())));
    const qreal width =
        box.line.alpha() > 0 ? std::max(1.0, std::floor(box.lineWidth * scale)) : 0.0;
    const qreal middle = width / 2; // of the line
    const qreal radius = std::max(0.0, box.radius * scale - middle);

    painter.save();
    painter.setTransform(toDevice.inverted(), true);
    if (box.radius > 0) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(width > 0 ? QPen(box.line, width) : QPen(Qt::NoPen));
        painter.setBrush(box.fill);
        painter.drawRoundedRect(pixels.adjusted(middle, middle, -middle, -middle), radius, radius);
    } else { // strokes leave the corners of a square too light
        const QRect outer = pixels.toRect();
        const QRect inner = outer.marginsRemoved(QMargins() + int(width));
        painter.fillRect(inner, box.fill);
        for (const QRect &side : QRegion(outer) - inner)
            painter.fillRect(side, box.line);
    }
    painter.restore();
}
