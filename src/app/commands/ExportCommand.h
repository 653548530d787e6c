// SPDX-License-Identifier: MIT
#pragma once

#include "DateSpan.h"
#include "Expected.h"
#include "ExportOptions.h"

#include <QStringList>

#include <variant>

struct LinkFormat;

/// What `strandloom export` was asked for.
struct ExportRequest {
    /// A document, or a format whose links are written one by one.
    std::variant<ExportFormat, const LinkFormat *> format;
    QString output; ///< a file, or "-" for standard output
    DateSpan dates;
    QString search; ///< empty: every link
    ExportLayout layout = ExportLayout::window;
    bool hidesLinks = false; ///< once they are written
};

/// `arguments` begin with the command's name. The error is a sentence for the user.
Expected<ExportRequest, QString> parseExportArguments(const QStringList &arguments);

/// Writes the visible links that were asked for, and returns the exit code. Nothing is fetched or
/// summarized. The program may run or not, also where links are hidden.
int runExport(const ExportRequest &request);
