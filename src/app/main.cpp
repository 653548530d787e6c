// SPDX-License-Identifier: MIT
#include "ExitCode.h"
#include "ProgramModule.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

namespace
{

int fail(const std::string &reason)
{
    std::fprintf(stderr, "strandloom: %s\n", reason.c_str());
    return int(ExitCode::unusable);
}

int showVersion()
{
    if (std::puts("strandloom " STRANDLOOM_VERSION) < 0 || std::fflush(stdout) != 0)
        return fail(std::string("standard output: ") + std::strerror(errno));
    return int(ExitCode::done);
}

const char *halfFor(std::string_view argument)
{
    const bool isCommand = !argument.starts_with('-') || argument == "--help" || argument == "-h";
    return isCommand ? ProgramModule::commands : ProgramModule::desktop;
}

} // namespace

/// The program itself is in modules, since a command that needs no desktop need not load one.
int main(int argc, char **argv)
{
    // Another program's end and a file size limit are errors to be handled, not ends of ours.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    const std::string_view first = argc > 1 ? argv[1] : "--";
    if (first == "--version" || first == "-v")
        return showVersion();
    const auto module = loadModule(halfFor(first));
    if (!module)
        return fail(module.error());
    return static_cast<const ProgramModule *>(*module)->run(argc, argv);
}
