// SPDX-License-Identifier: MIT
#include "Caption.h"

#include "TintedIcon.h"

#include <QPainter>
#include <QStyle>
#include <QTextLayout>

#include <cmath>

namespace
{
constexpr int widestHint = 320; ///< what a text asks for at most, in a place that leaves it to it
}

Caption::Caption(const QString &text, Rank rank, QWidget *parent)
    : QLabel(text, parent)
    , m_rank(rank)
{
    setWordWrap(true);
    setTextFormat(Qt::PlainText);
}

/// The lines of the text, ready to be drawn; their height.
qreal Caption::layOut(QTextLayout &layout, int width) const
{
    QString lines = text();
    lines.replace(u'\n', QChar::LineSeparator);
    layout.setText(lines);
    layout.setFont(font());
    QTextOption option(QStyle::visualAlignment(layoutDirection(), alignment()) | Qt::AlignAbsolute);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    qreal height = 0;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        line.setPosition({0, height});
        height += line.height();
    }
    layout.endLayout();
    return height;
}

int Caption::heightForWidth(int width) const
{
    QTextLayout layout;
    return int(std::ceil(layOut(layout, width)));
}

QSize Caption::sizeHint() const
{
    const int width = std::min(fontMetrics().size(0, text()).width() + 1, widestHint);
    return {width, heightForWidth(width)};
}

QSize Caption::minimumSizeHint() const
{
    return {0, heightForWidth(QWIDGETSIZE_MAX)}; // by the same measure, which rounds differently
}

QColor Caption::color() const
{
    if (m_tone)
        return toneColor(*m_tone, palette());
    return m_rank == Rank::primary ? palette().color(QPalette::WindowText)
                                   : secondaryTextColor(palette());
}

void Caption::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(color());
    QTextLayout layout;
    const qreal height = layOut(layout, width());
    const bool isCentered = alignment() & Qt::AlignVCenter;
    layout.draw(&painter, {0, isCentered ? std::max(0., (this->height() - height) / 2) : 0});
}
