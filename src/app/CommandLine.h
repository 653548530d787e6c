// SPDX-License-Identifier: MIT
#pragma once

/// Runs the command that the first argument names, or shows help; returns the exit code.
int runCommandLine(int argc, char **argv);
