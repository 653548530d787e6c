// SPDX-License-Identifier: MIT
#pragma once

#include "Expected.h"
#include "ExportDocument.h"
#include "ExportError.h"
#include "Module.h"

/// What the module with Pango and Cairo offers.
struct PdfModule : ModuleOffer {
    static constexpr auto name = "pdf";

    /// Writes a document as a PDF. Any thread; one waits for the other.
    Expected<void, ExportError> (*write)(const ExportDocument &document, const ByteSink &sink);
};
