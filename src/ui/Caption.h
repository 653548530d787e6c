// SPDX-License-Identifier: MIT
#pragma once

#include "Tone.h"

#include <QLabel>

#include <optional>

class QTextLayout;

/// A plain text that wraps: between words, and within one that is longer than a line, so that no
/// text of others can push what stands beside it out of the window.
class Caption : public QLabel
{
    Q_OBJECT
public:
    enum class Rank { primary, secondary };

    explicit Caption(const QString &text = {}, Rank rank = Rank::secondary,
                     QWidget *parent = nullptr);

    /// Gives the text a colour that says something.
    void setTone(Tone tone) { m_tone = tone; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    qreal layOut(QTextLayout &layout, int width) const;
    QColor color() const;

    Rank m_rank;
    std::optional<Tone> m_tone;
};
