// SPDX-License-Identifier: MIT
#include "Caption.h"

#include "TintedIcon.h"

#include <QPainter>

Caption::Caption(const QString &text, QWidget *parent)
    : QLabel(text, parent)
{
    setWordWrap(true);
    setTextFormat(Qt::PlainText);
}

void Caption::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(secondaryTextColor(palette()));
    painter.drawText(contentsRect(), int(alignment()) | Qt::TextWordWrap, text());
}
