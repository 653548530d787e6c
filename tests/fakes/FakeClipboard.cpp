// SPDX-License-Identifier: MIT
#include "FakeClipboard.h"

void FakeClipboard::copy(std::optional<QString> text)
{
    ++m_changeCount;
    m_text = m_isReading ? std::move(text) : std::nullopt;
    Q_EMIT changed();
}

void FakeClipboard::setLimitation(const QString &words)
{
    m_limitation = words;
    Q_EMIT limitationChanged();
}
