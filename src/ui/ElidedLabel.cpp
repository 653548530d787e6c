// SPDX-License-Identifier: MIT
#include "ElidedLabel.h"

#include "Accessibility.h"
#include "TintedIcon.h"

#include <QPainter>

ElidedLabel::ElidedLabel(Rank rank, QWidget *parent)
    : QWidget(parent)
    , m_rank(rank)
{
    installAccessibility();
    // A title may take what is left of the row; a time or a count needs all of itself.
    setSizePolicy(rank == Rank::primary ? QSizePolicy::Ignored : QSizePolicy::Fixed,
                  QSizePolicy::Fixed);
}

void ElidedLabel::setText(const QString &text)
{
    if (m_text == text)
        return;
    m_text = text;
    updateGeometry();
    update();
}

QSize ElidedLabel::sizeHint() const
{
    // One more than the advance, which is rounded: a text in a place of its size is not elided.
    return {fontMetrics().horizontalAdvance(m_text) + 1, fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const
{
    return {m_rank == Rank::primary ? 0 : sizeHint().width(), sizeHint().height()};
}

void ElidedLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(m_rank == Rank::primary ? palette().color(QPalette::Text)
                                           : secondaryTextColor(palette()));
    const QString shown = fontMetrics().elidedText(m_text, Qt::ElideRight, width());
    const auto side = m_rank == Rank::primary ? Qt::AlignLeft : Qt::AlignRight; // of a wider place
    painter.drawText(rect(), Qt::AlignVCenter | side | Qt::TextSingleLine, shown);
}
