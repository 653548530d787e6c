// SPDX-License-Identifier: MIT
#include "ProgramModule.h"
#include "StartOptions.h"

#include <QtGlobal>

extern "C" Q_DECL_EXPORT const ModuleOffer *strandloomModule()
{
    static const ProgramModule module{{}, runWithOptions};
    return &module;
}
