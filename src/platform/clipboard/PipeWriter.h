// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

#include <chrono>

/// Writes into a pipe as fast as its reader reads, and deletes itself afterwards.
class PipeWriter : public QObject
{
    Q_OBJECT
public:
    /// Takes over `pipe`, and closes it after `limit` at the latest.
    PipeWriter(int pipe, const QByteArray &data, std::chrono::milliseconds limit, QObject *parent);
    ~PipeWriter() override;

private:
    void write();

    int m_pipe;
    QByteArray m_data;
    qsizetype m_written = 0;
    QSocketNotifier m_writable;
};
