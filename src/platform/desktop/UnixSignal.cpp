// SPDX-License-Identifier: MIT
#include "UnixSignal.h"

#include <QSocketNotifier>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <sys/eventfd.h>
#include <unistd.h>

namespace
{

/// Where the handler of each signal leaves word; nothing else is safe to do in one.
std::array<std::atomic<int>, NSIG> descriptors;

void leaveWord(int number)
{
    const int errorBefore = errno;
    const quint64 one = 1;
    (void)!write(descriptors[size_t(number)], &one, sizeof one);
    errno = errorBefore;
}

} // namespace

UnixSignal::UnixSignal(int number, QObject *parent)
    : QObject(parent)
    , m_number(number)
    , m_descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    auto *notifier = new QSocketNotifier(m_descriptor, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        quint64 count = 0;
        if (read(m_descriptor, &count, sizeof count) == ssize_t(sizeof count))
            Q_EMIT arrived();
    });

    descriptors[size_t(number)] = m_descriptor;
    struct sigaction action = {};
    action.sa_handler = leaveWord;
    action.sa_flags = SA_RESTART;
    sigaction(number, &action, nullptr);
}

UnixSignal::~UnixSignal()
{
    std::signal(m_number, SIG_DFL);
    close(m_descriptor);
}

#include "moc_UnixSignal.cpp"
