// SPDX-License-Identifier: MIT
#pragma once

#include "ClipboardSource.h"

#include <QStringList>

/// The texts of all changes of `source` since this was made.
class TextsTold
{
public:
    explicit TextsTold(const ClipboardSource &source)
    {
        m_watch = QObject::connect(&source, &ClipboardSource::changed, [this, &source] {
            if (const auto text = source.text())
                m_texts.append(*text);
        });
    }
    TextsTold(const TextsTold &) = delete;
    TextsTold &operator=(const TextsTold &) = delete;
    ~TextsTold() { QObject::disconnect(m_watch); }

    QStringList texts() const { return m_texts; }

private:
    QStringList m_texts;
    QMetaObject::Connection m_watch;
};
