// SPDX-License-Identifier: MIT
#pragma once

#include "AtomicFile.h"

/// Whether something is at `path`. It is not only where nothing of that name is in its folder, or
/// the folder is not there by the same rule. Whatever keeps that from being known is an error, a
/// link that leads nowhere, here or on the way, included: its disk may not be mounted. Any thread.
Expected<bool, FileError> isThere(const QString &path);
