// SPDX-License-Identifier: MIT
#pragma once

#include "ClipboardLimits.h"
#include "WaylandPointer.h"

#include <QByteArray>
#include <QString>

class QObject;

/// A text of ours for the Wayland clipboard, given to whoever asks.
class DataSource
{
public:
    /// `writers` owns what is still being written when the source has gone.
    DataSource(ext_data_control_manager_v1 *manager, const QString &text,
               const ClipboardLimits &limits, QObject *writers);

    ext_data_control_source_v1 *source() const { return m_source.get(); }
    QString text() const { return m_text; }
    /// A type that no other source offers; by it our own copies are known.
    QByteArray marker() const { return m_marker; }
    /// Something else was copied.
    bool isCancelled() const { return m_isCancelled; }

private:
    friend struct DataSourceEvents;

    void send(int pipe);

    WaylandPointer<ext_data_control_source_v1> m_source;
    QString m_text;
    ClipboardLimits m_limits;
    QObject *m_writers;
    QByteArray m_marker;
    bool m_isCancelled = false;
};
