// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"

#include <QStringList>

/// What `strandloom backup` was asked for.
struct BackupRequest {
    QString file;
    bool replacesFile = false;
};

/// `arguments` begin with the command's name. The error is a sentence for the user.
Expected<BackupRequest, QString> parseBackupArguments(const QStringList &arguments);

/// Copies the whole store into a file and returns the exit code. The program may run or not.
int runBackup(const BackupRequest &request);
