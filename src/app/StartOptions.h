// SPDX-License-Identifier: MIT
#pragma once

/// Starts the program as its options say, or tells the running one. The result is the exit code.
int runWithOptions(int argc, char **argv);
