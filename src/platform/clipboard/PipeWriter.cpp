// SPDX-License-Identifier: MIT
#include "PipeWriter.h"

#include <QTimer>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

PipeWriter::PipeWriter(int pipe, const QByteArray &data, std::chrono::milliseconds limit,
                       QObject *parent)
    : QObject(parent)
    , m_pipe(pipe)
    , m_data(data)
    , m_writable(pipe, QSocketNotifier::Write)
{
    fcntl(pipe, F_SETFL, fcntl(pipe, F_GETFL) | O_NONBLOCK);
    connect(&m_writable, &QSocketNotifier::activated, this, &PipeWriter::write);
    QTimer::singleShot(limit, this, &QObject::deleteLater);
}

PipeWriter::~PipeWriter()
{
    ::close(m_pipe);
}

void PipeWriter::write()
{
    const ssize_t size =
        ::write(m_pipe, m_data.constData() + m_written, size_t(m_data.size() - m_written));
    if (size > 0)
        m_written += size;
    const bool isRefused = size < 0 && errno != EAGAIN && errno != EINTR;
    if (!isRefused && m_written < m_data.size())
        return;
    m_writable.setEnabled(false);
    deleteLater();
}
