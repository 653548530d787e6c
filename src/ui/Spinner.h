// SPDX-License-Identifier: MIT
#pragma once

#include <QTimer>
#include <QWidget>

/// Turns in the middle of its parent while it is visible, and costs nothing while it is not.
class Spinner : public QWidget
{
    Q_OBJECT
public:
    explicit Spinner(QWidget *parent);

protected:
    void hideEvent(QHideEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    QTimer m_steps;
    int m_angle = 0; ///< degrees
};
