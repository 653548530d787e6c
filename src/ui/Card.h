// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

/// A part of a screen that stands out by a line around it.
class Card : public QWidget
{
    Q_OBJECT
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent *event) override;
};
