#pragma once

#include <QString>

/// Why the store could not do what it was asked to.
struct StoreError {
    enum class Kind {
        cannotOpen, ///< no permission, a folder in its place, no disk
        damaged, ///< truncated or overwritten
        foreign, ///< a database of another program
        newer, ///< written by a newer version of this program
        locked, ///< another process writes to it
        full, ///< the disk or a quota
        failed, ///< anything else
    };
    Kind kind = Kind::failed;
    int code = 0; ///< SQLite's extended result code; 0 when SQLite was not asked
    QString detail; ///< SQLite's or the system's own words
};

/// The error as one English sentence without a full stop.
QString description(const StoreError &error);
