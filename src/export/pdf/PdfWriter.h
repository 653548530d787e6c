// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"
#include "ExportDocument.h"
#include "ExportError.h"

/// Writes `document` as a PDF of US Letter pages, handing out every page when it is done. Any
/// thread; one waits for the other, because fonts are shared.
Expected<void, ExportError> writePdf(const ExportDocument &document, const ByteSink &sink);
