// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"

#include <QStringList>

/// What `strandloom add` was asked for: at least one address.
struct AddRequest {
    QStringList addresses;
};

/// `arguments` begin with the command's name. The error is a sentence for the user.
Expected<AddRequest, QString> parseAddArguments(const QStringList &arguments);

/// Stores the addresses as if they were copied, says which ones are refused and why, and returns
/// the exit code. Where the program does not run, it runs the main loop to fetch their titles.
int runAdd(const AddRequest &request);
