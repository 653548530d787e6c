// SPDX-License-Identifier: MIT
#include "AtomicFile.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

Unexpected<FileError> systemError(const QByteArray &path, int code = errno)
{
    return Unexpected{FileError{QFile::decodeName(path), code}};
}

/// Where the content really goes when `path` is a symbolic link.
QByteArray behindLinks(const QString &path)
{
    const QFileInfo file(path);
    if (!file.isSymLink())
        return QFile::encodeName(file.absoluteFilePath());
    const QString canonical = file.canonicalFilePath(); // empty: the link dangles
    return QFile::encodeName(canonical.isEmpty() ? file.symLinkTarget() : canonical);
}

QByteArray folderOf(const QByteArray &path)
{
    return path.first(path.lastIndexOf('/') + 1);
}

QByteArray draftBeside(const QByteArray &target)
{
    const auto number = QRandomGenerator::global()->generate64();
    return folderOf(target) + ".strandloom-" + QByteArray::number(number, 36);
}

/// So that the rename outlives a power cut. Some file systems know no such thing, and the file is
/// in its place already: no failure.
void syncFolder(const QByteArray &folder)
{
    const int descriptor = open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    fsync(descriptor);
    close(descriptor);
}

} // namespace

QString description(const FileError &error)
{
    return error.path + u": "_s + qt_error_string(error.code);
}

AtomicFile::AtomicFile(QByteArray target, QByteArray draft, int descriptor)
    : m_target(std::move(target))
    , m_draft(std::move(draft))
    , m_descriptor(descriptor)
{
}

AtomicFile::AtomicFile(AtomicFile &&other) noexcept
    : m_target(std::move(other.m_target))
    , m_draft(std::exchange(other.m_draft, {}))
    , m_descriptor(std::exchange(other.m_descriptor, -1))
    , m_error(std::move(other.m_error))
{
}

AtomicFile::~AtomicFile()
{
    if (m_descriptor >= 0)
        close(m_descriptor);
    if (!m_draft.isEmpty())
        unlink(m_draft.constData());
}

Expected<AtomicFile, FileError> AtomicFile::open(const QString &path, FileAudience audience)
{
    const QByteArray target = behindLinks(path);
    struct stat old = {};
    const bool isOld = stat(target.constData(), &old) == 0;
    if (isOld && !S_ISREG(old.st_mode))
        return systemError(target, S_ISDIR(old.st_mode) ? EISDIR : EINVAL);
    if (isOld && access(target.constData(), W_OK) != 0)
        return systemError(target); // the rename alone would not care

    const QByteArray draft = draftBeside(target);
    const mode_t mode = audience == FileAudience::owner ? 0600 : 0666;
    const int descriptor = ::open(draft.constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, mode);
    if (descriptor < 0)
        return systemError(target);
    AtomicFile file(target, draft, descriptor);
    const bool keepsMode = isOld && audience == FileAudience::everybody;
    if (keepsMode && fchmod(descriptor, old.st_mode & 07777) != 0)
        return systemError(target);
    return file;
}

Expected<void, FileError> AtomicFile::replace(const QString &path, QByteArrayView bytes,
                                              FileAudience audience)
{
    auto file = open(path, audience);
    if (!file)
        return Unexpected{file.error()};
    file->write(bytes); // `commit` tells of its failure
    return file->commit();
}

QString AtomicFile::draft() const
{
    return QFile::decodeName(m_draft);
}

bool AtomicFile::write(QByteArrayView bytes)
{
    while (!m_error && !bytes.isEmpty()) {
        const auto written = ::write(m_descriptor, bytes.data(), bytes.size());
        if (written >= 0)
            bytes = bytes.sliced(written);
        else if (errno != EINTR)
            fail();
    }
    return !m_error;
}

void AtomicFile::fail()
{
    m_error = FileError{QFile::decodeName(m_target), errno};
}

Expected<void, FileError> AtomicFile::commit()
{
    if (!m_error && fsync(m_descriptor) != 0)
        fail();
    if (!m_error && rename(m_draft.constData(), m_target.constData()) != 0)
        fail();
    if (m_error)
        return Unexpected{*m_error};
    m_draft.clear();
    syncFolder(folderOf(m_target));
    return {};
}
