// SPDX-License-Identifier: MIT
#include "FilePresence.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <sys/stat.h>

Expected<bool, FileError> isThere(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat status = {};
    const bool isNamed = lstat(name.constData(), &status) == 0;
    if (isNamed && stat(name.constData(), &status) == 0)
        return true;
    if (isNamed || errno != ENOENT)
        return Unexpected{FileError{path, errno}};
    const auto hasFolder = isThere(QFileInfo(path).path());
    return hasFolder ? Expected<bool, FileError>(false) : hasFolder;
}
