// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>

/// Ends the program, in every kind of build, when what must hold does not.
inline void demand(bool condition)
{
    if (!condition)
        std::abort();
}
