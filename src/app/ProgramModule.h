// SPDX-License-Identifier: MIT
#pragma once

#include "Module.h"

/// What both halves of the program offer.
struct ProgramModule : ModuleOffer {
    static constexpr auto commands = "commands"; ///< help, and `strandloom COMMAND`
    static constexpr auto desktop = "desktop"; ///< all else

    int (*run)(int argc, char **argv); ///< the result is the exit code
};
