// SPDX-License-Identifier: MIT
#include "PdfModule.h"

#include "PdfWriter.h"

extern "C" Q_DECL_EXPORT const ModuleOffer *strandloomModule()
{
    static const PdfModule module{{}, writePdf};
    return &module;
}
