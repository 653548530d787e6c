// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"

#include <QString>
#include <QStringList>

/// What `strandloom inspect` was asked for.
struct InspectRequest {
    QStringList targets; ///< web addresses and files, at least one
    QString url; ///< the address that files stand for; empty: none
};

/// `arguments` begin with the command's name. The error is a sentence for the user.
Expected<InspectRequest, QString> parseInspectArguments(const QStringList &arguments);

/// Prints what the program reads from each page, an object a line, and returns the exit code. Runs
/// the main loop while it fetches.
int runInspect(const InspectRequest &request);
