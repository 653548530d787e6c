// SPDX-License-Identifier: MIT
#pragma once

#include "ByteSink.h"

#include <QStringEncoder>

/// Gathers lines and hands them on as UTF-8 in parts of a useful size.
class LineBuffer
{
public:
    explicit LineBuffer(const ByteSink &sink)
        : m_sink(sink)
    {
    }

    template <typename... Parts>
    void line(const Parts &...parts)
    {
        (m_text.append(parts), ...);
        m_text.append(u'\n');
    }
    /// Hands on what is there once it is much. False when nothing more is wanted.
    bool flushPart() { return m_text.size() < partSize || flush(); }
    bool flush()
    {
        const QByteArray utf8 = m_encoder(m_text);
        m_text.clear();
        return m_sink(utf8);
    }

private:
    static constexpr qsizetype partSize = 32768;

    const ByteSink &m_sink;
    QString m_text;
    QStringEncoder m_encoder{QStringEncoder::Utf8};
};
