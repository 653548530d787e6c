// SPDX-License-Identifier: MIT
#pragma once

#include <QIcon>
#include <QWidget>

/// One of the program's icons as a picture.
class IconLabel : public QWidget
{
    Q_OBJECT
public:
    IconLabel(const QString &icon, int size, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QIcon m_icon;
};
