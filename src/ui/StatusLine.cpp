// SPDX-License-Identifier: MIT
#include "StatusLine.h"

#include "Caption.h"
#include "IconLabel.h"

#include <QHBoxLayout>

using namespace Qt::StringLiterals;

StatusLine::StatusLine(QWidget *parent)
    : QWidget(parent)
    , m_icon(new IconLabel(u"tick"_s, 16))
    , m_text(new Caption)
{
    auto *const line = new QHBoxLayout(this);
    line->setContentsMargins(0, 0, 0, 0);
    line->addWidget(m_icon, 0, Qt::AlignTop);
    line->addWidget(m_text, 1);
    hide();
}

void StatusLine::tell(Tone tone, const std::optional<QString> &text)
{
    m_icon->setIcon(tone == Tone::error ? u"error"_s : u"tick"_s, tone);
    m_text->setTone(tone);
    m_text->setText(text.value_or(QString()));
    setVisible(!m_text->text().isEmpty());
}
