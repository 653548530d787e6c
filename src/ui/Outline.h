// SPDX-License-Identifier: MIT
#pragma once

class QColor;
class QPainter;
class QRect;

/// Draws a line within the edges of `rect`, as wide as a pixel of an unscaled screen or a little
/// less: in whole pixels of the screen, because what ends within one is lost at some scale factors.
void drawOutline(QPainter &painter, const QRect &rect, const QColor &color);
