// SPDX-License-Identifier: MIT
#include "CommandLine.h"
#include "ProgramModule.h"

#include <QtGlobal>

extern "C" Q_DECL_EXPORT const ModuleOffer *strandloomModule()
{
    static const ProgramModule module{{}, runCommandLine};
    return &module;
}
