// SPDX-License-Identifier: MIT
#include "PipeReader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <unistd.h>
#include <utility>

PipeReader::PipeReader(int pipe, QDeadlineTimer deadline, const ClipboardLimits &limits,
                       QObject *parent)
    : QObject(parent)
    , m_pipe(pipe)
    , m_limits(limits)
    , m_readable(pipe, QSocketNotifier::Read)
{
    connect(&m_readable, &QSocketNotifier::activated, this, &PipeReader::readArrived);
    m_step.setSingleShot(true);
    connect(&m_step, &QTimer::timeout, this, &PipeReader::giveUp);
    m_step.start(limits.step);
    m_total.setSingleShot(true);
    connect(&m_total, &QTimer::timeout, this, &PipeReader::close);
    m_total.start(int(deadline.remainingTime()));
}

PipeReader::~PipeReader()
{
    ::close(m_pipe);
}

/// One piece at a time: a program that writes without end must not keep all others waiting.
void PipeReader::readArrived()
{
    std::array<char, 65'536> piece;
    const ssize_t size = ::read(m_pipe, piece.data(), piece.size());
    if (size > 0)
        append(piece.data(), size);
    else if (size == 0 && !std::exchange(m_isDiscarding, true))
        Q_EMIT ended(m_data);
    if (size == 0 || (size < 0 && errno != EAGAIN && errno != EINTR))
        close();
}

void PipeReader::append(const char *data, qsizetype size)
{
    if (m_isDiscarding)
        return;
    if (m_data.size() + size > m_limits.textBytes)
        return giveUp();
    m_data.append(data, size);
    if (!m_isHurried)
        m_step.start(m_limits.step);
}

void PipeReader::hurry(std::chrono::milliseconds limit)
{
    if (!m_isDiscarding && !std::exchange(m_isHurried, true))
        m_step.start(std::min(limit, m_step.remainingTimeAsDuration()));
}

void PipeReader::discard()
{
    m_isDiscarding = true;
    m_data = {};
    m_step.stop();
}

void PipeReader::giveUp()
{
    if (m_isDiscarding)
        return;
    discard();
    Q_EMIT ended({});
}

void PipeReader::close()
{
    m_readable.setEnabled(false);
    m_total.stop();
    giveUp();
    deleteLater();
}
