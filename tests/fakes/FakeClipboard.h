// SPDX-License-Identifier: MIT
#pragma once

#include "ClipboardSource.h"

/// A clipboard in memory; `copy` plays the part of another program.
class FakeClipboard final : public ClipboardSource
{
    Q_OBJECT
public:
    void copy(std::optional<QString> text);
    void setLimitation(const QString &words);

    qint64 changeCount() const override { return m_changeCount; }
    std::optional<QString> text() const override { return m_text; }
    void setText(const QString &text) override { copy(text); }
    void startReading() override { m_isReading = true; }
    void stopReading() override { m_isReading = false; }
    void fetch() override { Q_EMIT fetched(m_held); }
    QString limitation() const override { return m_limitation; }
    QString means() const override { return QStringLiteral("In memory."); }

private:
    qint64 m_changeCount = 0;
    std::optional<QString> m_held;
    std::optional<QString> m_text;
    bool m_isReading = false;
    QString m_limitation;
};
