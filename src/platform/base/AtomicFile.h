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
    QString path;
    int code = 0; ///< of errno
};
/// The error as one sentence without a full stop, in the words of the system.
QString description(const FileError &error);

/// A new file, or a new content for an old one, that is there whole or not at all: it is written
/// beside its place and renamed by `commit`. Permissions of the old file stay, a link to a file
/// stays a link. What is not committed leaves nothing behind. One thread at a time.
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
    QString draft() const;
    /// False when that failed, now or before; `commit` then tells why.
    bool write(QByteArrayView bytes);
    /// Puts the file into its place, on the disk too. To be called once.
    Expected<void, FileError> commit();

private:
    AtomicFile(QByteArray target, QByteArray draft, int descriptor);
    void fail();

    QByteArray m_target;
    QByteArray m_draft;
    int m_descriptor; ///< -1 once closed
    std::optional<FileError> m_error;
};
