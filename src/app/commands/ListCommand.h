// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"

#include <QStringList>

#include <optional>

/// What `strandloom list` or `strandloom search` was asked for.
struct ListRequest {
    bool asJson = false;
    QString search; ///< empty: every link
    std::optional<int> limit;
};

/// `arguments` begin with the command's name. The error is a sentence for the user.
Expected<ListRequest, QString> parseListArguments(const QStringList &arguments);
Expected<ListRequest, QString> parseSearchArguments(const QStringList &arguments);

/// Prints the visible links of the store, newest first, and returns the exit code. Makes no store
/// where there is none, and works beside the running program.
int runList(const ListRequest &request);
