// SPDX-License-Identifier: MIT
#pragma once

/// Runs the command that the arguments name, or the program itself; returns the exit code.
int runCommandLine(int argc, char **argv);
