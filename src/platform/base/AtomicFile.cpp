// SPDX-License-Identifier: MIT
#include "AtomicFile.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <cerrno>
#include <climits>
#include <dirent.h>
#include <fcntl.h>
#include <limits>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

constexpr QByteArrayView draftBegin = ".strandloom-";
constexpr QByteArrayView draftEnd = ".draft";
constexpr int digits = 13; ///< of the largest number to the base of 36

Unexpected<FileError> systemError(const QByteArray &path, int code = errno)
{
    return Unexpected{FileError{QFile::decodeName(path), code}};
}

QByteArray folderOf(const QByteArray &path)
{
    return path.first(path.lastIndexOf('/') + 1);
}

/// A descriptor that is closed with its scope; negative for none.
class Descriptor
{
public:
    explicit Descriptor(int number)
        : m_number(number)
    {
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor()
    {
        if (m_number >= 0)
            close(m_number);
    }
    operator int() const { return m_number; }

private:
    int m_number;
};

bool mayOthersWrite(const QByteArray &folder)
{
    struct stat found = {};
    return stat(folder.constData(), &found) != 0 || (found.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

/// Where the content really goes when `path` is a symbolic link. One that somebody else may have
/// put there is not followed: the kernel sees to that only where a file is opened. It is looked at
/// and read through one descriptor, so that nobody exchanges it in between.
Expected<QByteArray, FileError> behindLinks(const QString &path)
{
    constexpr int mostLinks = 40; // as many as the kernel follows
    QByteArray target = QFile::encodeName(QFileInfo(path).absoluteFilePath());
    for (int links = 0; links < mostLinks; ++links) {
        const Descriptor place(::open(target.constData(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
        struct stat found = {};
        if (place < 0 || fstat(place, &found) != 0 || !S_ISLNK(found.st_mode))
            return target; // what is wrong there shows when it is written
        if (found.st_uid != geteuid() && mayOthersWrite(folderOf(target)))
            return systemError(target, FileError::foreignLink);
        QByteArray behind(PATH_MAX, Qt::Uninitialized);
        const auto size = readlinkat(place, "", behind.data(), size_t(behind.size()));
        if (size < 0)
            return systemError(target);
        behind.truncate(size);
        target = behind.startsWith('/') ? behind : folderOf(target) + behind;
    }
    return systemError(target, ELOOP);
}

QByteArray draftBeside(const QByteArray &target)
{
    const auto number = QRandomGenerator::global()->generate64();
    return folderOf(target) + draftBegin
        + QByteArray::number(number, 36).rightJustified(digits, '0') + draftEnd;
}

/// Marks a file as one that is being written; false when somebody else has. At a place where
/// no library locks anything.
bool lock(int descriptor)
{
    struct flock place = {};
    place.l_type = F_WRLCK;
    place.l_whence = SEEK_SET;
    place.l_start = std::numeric_limits<off_t>::max() - 1;
    place.l_len = 1;
    return fcntl(descriptor, F_OFD_SETLK, &place) == 0;
}

/// Removes the draft at `path` when whoever wrote it is gone.
void removeIfStale(const QByteArray &path)
{
    const Descriptor draft(::open(path.constData(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat found = {};
    if (draft >= 0 && fstat(draft, &found) == 0 && S_ISREG(found.st_mode)
        && found.st_uid == geteuid() && lock(draft)) {
        const QByteArray journal = path + "-journal"; // SQLite's, when that wrote it
        unlink(journal.constData());
        unlink(path.constData());
    }
}

/// A file that has no name yet, where the file system knows such; it goes with its process.
int openNameless(const QByteArray &target, mode_t mode)
{
    if (access("/proc/self/fd", X_OK) != 0)
        return -1; // it could never get a name
    const int descriptor =
        ::open(folderOf(target).constData(), O_TMPFILE | O_WRONLY | O_CLOEXEC, mode);
    if (descriptor >= 0)
        lock(descriptor);
    return descriptor;
}

int openNamed(const QByteArray &path, mode_t mode)
{
    const int descriptor = ::open(path.constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, mode);
    if (descriptor >= 0)
        lock(descriptor);
    return descriptor;
}

/// Gives the nameless file its name; false when that is taken, or fails.
bool linkTo(int descriptor, const QByteArray &path)
{
    const QByteArray source = "/proc/self/fd/" + QByteArray::number(descriptor);
    return linkat(AT_FDCWD, source.constData(), AT_FDCWD, path.constData(), AT_SYMLINK_FOLLOW) == 0;
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
    QString reason = qt_error_string(error.code);
    if (error.code == FileError::foreignLink)
        reason = u"this link is another user's, in a folder that others can write to"_s;
    else if (error.code == FileError::notRegular)
        reason = u"not a regular file"_s;
    return error.path + u": "_s + reason;
}

void removeStaleDrafts(const QString &folder)
{
    const QByteArray path = QFile::encodeName(folder) + '/';
    const std::unique_ptr<DIR, int (*)(DIR *)> entries(opendir(path.constData()), closedir);
    while (const dirent *const entry = entries ? readdir(entries.get()) : nullptr) {
        const QByteArrayView name(entry->d_name);
        if (name.size() == draftBegin.size() + digits + draftEnd.size()
            && name.startsWith(draftBegin) && name.endsWith(draftEnd))
            removeIfStale(path + name);
    }
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
    const auto behind = behindLinks(path);
    if (!behind)
        return Unexpected{behind.error()};
    const QByteArray &target = *behind;
    struct stat old = {};
    const bool isOld = stat(target.constData(), &old) == 0;
    if (isOld && !S_ISREG(old.st_mode))
        return systemError(target, S_ISDIR(old.st_mode) ? EISDIR : FileError::notRegular);
    if (isOld && access(target.constData(), W_OK) != 0)
        return systemError(target); // the rename alone would not care

    removeStaleDrafts(QFile::decodeName(folderOf(target)));
    const mode_t mode = audience == FileAudience::owner ? 0600 : 0666;
    QByteArray draft;
    int descriptor = openNameless(target, mode);
    if (descriptor < 0) {
        draft = draftBeside(target);
        descriptor = openNamed(draft, mode);
    }
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

Expected<QString, FileError> AtomicFile::draft()
{
    if (!nameDraft())
        return systemError(m_target);
    return QFile::decodeName(m_draft);
}

bool AtomicFile::nameDraft()
{
    if (!m_draft.isEmpty())
        return true;
    const QByteArray draft = draftBeside(m_target);
    if (!linkTo(m_descriptor, draft))
        return false;
    m_draft = draft;
    return true;
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
    if (!m_error && !putInPlace())
        fail();
    if (m_error)
        return Unexpected{*m_error};
    m_draft.clear();
    syncFolder(folderOf(m_target));
    return {};
}

bool AtomicFile::putInPlace()
{
    if (m_draft.isEmpty() && linkTo(m_descriptor, m_target))
        return true; // there was no old file
    return nameDraft() && rename(m_draft.constData(), m_target.constData()) == 0;
}
