// SPDX-License-Identifier: MIT
#pragma once

#include "ExportDocument.h"

/// Writes `document` as UTF-8 text, texts as they are, in one of its layouts. Any thread.
void writeText(const ExportDocument &document, const ByteSink &sink);
