// SPDX-License-Identifier: MIT
#include "Card.h"

#include "Outline.h"

#include <QPainter>

void Card::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawOutline(painter, rect(), palette().color(QPalette::Mid));
}
