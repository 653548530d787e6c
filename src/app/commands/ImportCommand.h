// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"

#include <QStringList>

/// What `strandloom import` was asked for.
struct ImportRequest {
    QString input; ///< a file, or "-" for standard input
    bool asJson = false; ///< the counts
};

/// `arguments` begin with the command's name. The error is a sentence for the user.
Expected<ImportRequest, QString> parseImportArguments(const QStringList &arguments);

/// Stores the links of a file, prints how many were taken and how many not and why, and returns
/// the exit code. Nothing is fetched.
int runImport(const ImportRequest &request);
