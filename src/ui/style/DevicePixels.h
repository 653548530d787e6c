// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QRectF>

class QPainter;

/// A box whose edges lie on whole pixels of the device, at whatever scale, so that no line of it is
/// lost or blurred. Sizes are those of the painter.
struct Box {
    QRectF rect;
    qreal radius = 0;
    QColor fill = Qt::transparent;
    QColor line = Qt::transparent;
    int lineWidth = 1; ///< inside of `rect`; at least one pixel of the device
};

void draw(QPainter &painter, const Box &box);
