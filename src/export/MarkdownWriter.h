// SPDX-License-Identifier: MIT
#pragma once

#include "ExportDocument.h"

/// Writes `document` as UTF-8 Markdown; nothing in the texts is escaped. Any thread.
void writeMarkdown(const ExportDocument &document, const ByteSink &sink);
