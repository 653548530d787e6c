// SPDX-License-Identifier: MIT
#pragma once

#include "ClipboardLimits.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <optional>

/// Reads what another program writes into a pipe, and deletes itself afterwards. What came to
/// nothing is read on and thrown away until the deadline: many programs die when they write into a
/// pipe that was closed.
class PipeReader : public QObject
{
    Q_OBJECT
public:
    /// Takes over `pipe`, which must not block.
    PipeReader(int pipe, QDeadlineTimer deadline, const ClipboardLimits &limits, QObject *parent);
    ~PipeReader() override;

    /// Gives the writer no more time than `limit` for the rest.
    void hurry(std::chrono::milliseconds limit);
    /// From here on all is thrown away, and `ended` is not sent any more.
    void discard();
    bool isDiscarding() const { return m_isDiscarding; }

Q_SIGNALS:
    /// Sent once: with everything up to the end, or without when it was too much or too late.
    void ended(const std::optional<QByteArray> &data);

private:
    void readArrived();
    void append(const char *data, qsizetype size);
    void giveUp();
    void close();

    int m_pipe;
    ClipboardLimits m_limits;
    QSocketNotifier m_readable;
    QTimer m_step;
    QTimer m_total;
    bool m_isHurried = false;
    QByteArray m_data;
    bool m_isDiscarding = false;
};
