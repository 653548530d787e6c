// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"

#include <QStringList>

/// What `strandloom remove` was asked for: at least one id or URL.
struct RemoveRequest {
    QStringList targets;
};

/// `arguments` begin with the command's name. The error is a sentence for the user.
Expected<RemoveRequest, QString> parseRemoveArguments(const QStringList &arguments);

/// Deletes the links that are named, says which names fit none or several, and returns the exit
/// code.
int runRemove(const RemoveRequest &request);
