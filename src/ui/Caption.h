// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>

/// A plain text of second rank that wraps.
class Caption : public QLabel
{
    Q_OBJECT
public:
    explicit Caption(const QString &text = {}, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};
