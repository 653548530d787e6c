// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"

#include <QStringList>

/// What `strandloom restore` was asked for.
struct RestoreRequest {
    QString file;
};

/// `arguments` begin with the command's name. The error is a sentence for the user.
Expected<RestoreRequest, QString> parseRestoreArguments(const QStringList &arguments);

/// Puts a backup into the place of the store, says where the old one is kept, and returns the exit
/// code. The program must not run.
int runRestore(const RestoreRequest &request);
