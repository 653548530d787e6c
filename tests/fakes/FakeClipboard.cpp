// SPDX-License-Identifier: MIT
#include "FakeClipboard.h"

void FakeClipboard::copy(std::optional<QString> text)
{
    ++m_changeCount;
    m_held = std::move(text);
    m_text = m_isReading ? m_held : std::nullopt;
    Q_EMIT changed();
}

void FakeClipboard::setLimitation(const QString &words)
{
    m_limitation = words;
    Q_EMIT limitationChanged();
}
