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
    painter.setRenderHint(QPainter::Antialiasing);
    const QPen pen(box.line, width, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin);
    painter.setPen(width > 0 ? pen : QPen(Qt::NoPen));
    painter.setBrush(box.fill);
    painter.drawRoundedRect(pixels.adjusted(middle, middle, -middle, -middle), radius, radius);
    painter.restore();
}
