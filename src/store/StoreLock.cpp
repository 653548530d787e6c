// SPDX-License-Identifier: MIT
#include "StoreLock.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

Expected<StoreLock, StoreError> StoreLock::take(const QString &folder)
{
    const QString path = folder + u"/store.lock";
    StoreLock lock(open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (lock.m_descriptor < 0)
        return Unexpected{
            StoreError{StoreError::Kind::cannotOpen, path + u": " + qt_error_string()}};
    if (flock(lock.m_descriptor, LOCK_EX | LOCK_NB) != 0) {
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
