// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QUrl>

#include <optional>

/// What the packager says about the program: the values of the information file `strandloom.ini`.
class AppInfo
{
public:
    /// A missing file is as good as an empty one, and so is one that is not a file or is huge.
    explicit AppInfo(const QString &path);
    /// The file that STRANDLOOM_INFO names, else the one installed with this program, else one in
    /// the data folders. Needs the application object.
    static QString defaultPath();

    /// Absent when the key is missing or its value is empty.
    std::optional<QString> value(const QString &key) const;
    /// The address of a service: https, or http on this machine. Absent when `key` names no such.
    std::optional<QUrl> endpoint(const QString &key) const;

private:
    QString m_path; ///< empty: there is nothing to read
};
