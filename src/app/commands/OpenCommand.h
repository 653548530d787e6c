// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"

#include <QStringList>

/// What `strandloom open` was asked for.
struct OpenRequest {
    QString target; ///< an id or URL
};

/// `arguments` begin with the command's name. The error is a sentence for the user.
Expected<OpenRequest, QString> parseOpenArguments(const QStringList &arguments);

/// Opens a stored link in the browser and returns the exit code.
int runOpen(const OpenRequest &request);
