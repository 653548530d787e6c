// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"
#include "StoreError.h"

#include <QString>

#include <optional>

/// Writes the store in `folder`, as it is at one moment, into the file at `path`, for its owner
/// alone: all of it, or an old file stays. The program may run. False when there is no store. The
/// error is a sentence for the user.
Expected<bool, QString> backUpStore(const QString &folder, const QString &path);

/// Puts the backup at `path` into the place of the store in `folder`; under which name the old
/// store is kept beside it, absent when there was none. Neither store is ever there in part. Fails,
/// and changes nothing, when `path` is no sound store, or another process writes to the store.
Expected<std::optional<QString>, StoreError> restoreStore(const QString &folder,
                                                          const QString &path);
