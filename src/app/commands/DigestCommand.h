// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"

#include <QString>
#include <QStringList>

/// What `strandloom digest` was asked for.
struct DigestRequest {
    QString output; ///< a file, or "-" for standard output
};

/// `arguments` begin with the command's name. The error is a sentence for the user.
Expected<DigestRequest, QString> parseDigestArguments(const QStringList &arguments);

/// Writes the digest of the visible links as they are now, and returns the exit code. Nothing is
/// fetched or mailed. The program may run or not.
int runDigest(const DigestRequest &request);
