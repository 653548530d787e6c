// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

/// One line of plain text that ends in an ellipsis where it does not fit.
class ElidedLabel : public QWidget
{
    Q_OBJECT
public:
    enum class Rank { primary, secondary };

    explicit ElidedLabel(Rank rank, QWidget *parent = nullptr);

    void setText(const QString &text);
    QString text() const { return m_text; }
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Rank m_rank;
    QString m_text;
};
