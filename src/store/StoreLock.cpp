// SPDX-License-Identifier: MIT
#include "StoreLock.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

using std::chrono::milliseconds;

namespace
{

constexpr milliseconds attemptInterval{20};

/// The user's alone from the first moment on.
bool makeFolder(const QString &folder)
{
    constexpr auto ownerOnly =
        QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner;
    const bool isMade = QDir().mkpath(QFileInfo(folder).path()) && QDir().mkdir(folder, ownerOnly);
    return isMade || QFileInfo(folder).isDir(); // also when another process was quicker
}

} // namespace

Expected<StoreLock, StoreError> StoreLock::take(const QString &folder, milliseconds patience)
{
    if (!makeFolder(folder))
        return Unexpected{
            StoreError{StoreError::Kind::cannotOpen, folder + u": " + qt_error_string()}};
    const QString path = folder + u"/store.lock";
    StoreLock lock(open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (lock.m_descriptor < 0)
        return Unexpected{
            StoreError{StoreError::Kind::cannotOpen, path + u": " + qt_error_string()}};
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (flock(lock.m_descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(attemptInterval);
            continue;
        }
        const auto kind =
            errno == EWOULDBLOCK ? StoreError::Kind::locked : StoreError::Kind::failed;
        return Unexpected{StoreError{kind, path}};
    }
    return lock;
}

StoreLock::~StoreLock()
{
    if (m_descriptor >= 0)
        close(m_descriptor);
}
