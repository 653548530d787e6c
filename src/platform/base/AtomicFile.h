// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"

#include <QByteArrayView>
#include <QString>

#include <optional>

/// Whom a new file is for. `everybody` is as usual: what the user's mask leaves, or the old file
/// had.
enum class FileAudience { everybody, owner };

struct FileError {
    static constexpr int foreignLink = -1; ///< a link that is not followed
    static constexpr int notRegular = -2; ///< a pipe, a device
    QString path;
    int code = 0; ///< of errno, or one of the above
};
/// The error as one sentence without a full stop, in the words of the system.
QString description(const FileError &error);

/// Removes what a process left in `folder` that was killed while it wrote a file there.
void removeStaleDrafts(const QString &folder);

/// A new file, or a new content for an old one, that is there whole or not at all: it is written
/// without a name and gets that by `commit`. Permissions of the old file stay, a link to a file
/// stays a link; one that another user may have laid out is refused. What is not committed leaves
/// nothing behind, not even when the process is killed; where the file system knows no files
/// without a name, or a library needs one, the next file written beside it cleans up. One thread
/// at a time.
class AtomicFile
{
public:
    /// `path` names a regular file or nothing yet.
    static Expected<AtomicFile, FileError> open(const QString &path,
                                                FileAudience audience = FileAudience::everybody);
    /// All at once: `bytes` become the content of the file at `path`.
    static Expected<void, FileError> replace(const QString &path, QByteArrayView bytes,
                                             FileAudience audience = FileAudience::everybody);

    AtomicFile(AtomicFile &&other) noexcept;
    AtomicFile &operator=(AtomicFile &&) = delete;
    ~AtomicFile();

    /// The file beside its place, for a library that writes it itself.
    Expected<QString, FileError> draft();
    /// False when that failed, now or before; `commit` then tells why.
    bool write(QByteArrayView bytes);
    /// Puts the file into its place, on the disk too. To be called once.
    Expected<void, FileError> commit();

private:
    AtomicFile(QByteArray target, QByteArray draft, int descriptor);
    void fail();
    bool nameDraft();
    bool putInPlace();

    QByteArray m_target;
    QByteArray m_draft; ///< empty while the file has no name
    int m_descriptor; ///< -1 once closed
    std::optional<FileError> m_error;
};
