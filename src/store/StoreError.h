// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace SQLite
{
class Exception;
}

/// Why the store could not do what it was asked to.
struct StoreError {
    enum class Kind {
        cannotOpen, ///< no permission, a folder in its place, no disk
        damaged, ///< truncated or overwritten
        foreign, ///< a database of another program, or changed by one
        newer, ///< written by a newer version of this program
        locked, ///< another process writes to it
        gone, ///< removed or replaced while it was open
        full, ///< the disk, a quota, or a limit of file sizes
        failed, ///< anything else
    };
    Kind kind = Kind::failed;
    QString detail; ///< SQLite's or the system's own words
};

/// What SQLite complained about, as one of ours.
StoreError storeError(const SQLite::Exception &exception);

/// The error as one English sentence without a full stop.
QString description(const StoreError &error);
