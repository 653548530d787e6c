// SPDX-License-Identifier: MIT
#include "Spinner.h"

#include <QPainter>

namespace
{
constexpr int stepMilliseconds = 80;
constexpr int stepDegrees = 30;
constexpr qreal diameter = 16 * 0.6;
} // namespace

Spinner::Spinner(QWidget *parent)
    : QWidget(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    connect(&m_steps, &QTimer::timeout, this, [this] {
        m_angle = (m_angle + stepDegrees) % 360;
        update();
    });
    hide();
}

void Spinner::showEvent(QShowEvent *)
{
    setGeometry(parentWidget()->rect());
    m_steps.start(stepMilliseconds);
}

void Spinner::hideEvent(QHideEvent *)
{
    m_steps.stop();
}

void Spinner::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette().color(QPalette::WindowText), 1.6, Qt::SolidLine, Qt::RoundCap));
    QRectF circle(0, 0, diameter, diameter);
    circle.moveCenter(QRectF(rect()).center());
    constexpr int sixteenths = 16; // of a degree, the unit of drawArc
    painter.drawArc(circle, -m_angle * sixteenths, 270 * sixteenths);
}
