// SPDX-License-Identifier: MIT
#pragma once

#include "Tone.h"

#include <QIcon>
#include <QWidget>

/// One of the program's icons as a picture.
class IconLabel : public QWidget
{
    Q_OBJECT
public:
    IconLabel(const QString &icon, int size, QWidget *parent = nullptr);

    void setIcon(const QString &icon, Tone tone);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QIcon m_icon;
    qreal m_opacity = 0.6; ///< of second rank, as the texts beside it
};
