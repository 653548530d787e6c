// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"
#include "ExportDocument.h"
#include "ExportError.h"

#include <stop_token>

using ExportResult = Expected<void, ExportError>;

/// Writes `document` in `format`. A sink that wants no more is no failure of texts. Any thread.
ExportResult writeDocument(const ExportDocument &document, ExportFormat format,
                           const ByteSink &sink);

/// Writes `document` into the file at `path`: all of it, or the old file stays as it is. Any
/// thread; `stop` ends it early.
ExportResult exportToFile(const ExportDocument &document, ExportFormat format, const QString &path,
                          const std::stop_token &stop = {});
