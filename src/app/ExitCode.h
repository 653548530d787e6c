// SPDX-License-Identifier: MIT
#pragma once

/// What the process ends with. The numbers are part of the command line's promise.
enum class ExitCode {
    done = 0,
    nothing = 1, ///< no rows, refused, or something is not as it should be
    unusable = 2, ///< wrong usage, or what is needed cannot be read or written
    notRunning = 3, ///< the program does not run, or runs where it must not
};
