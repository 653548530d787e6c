// SPDX-License-Identifier: MIT
#include "CommandLine.h"

#include "DigestCommand.h"
#include "InspectCommand.h"
#include "ListCommand.h"
#include "StrandloomApp.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>
#include <cstring>

using namespace Qt::StringLiterals;

namespace
{

constexpr auto usage = R"(Usage: strandloom [--background]
       strandloom list [--json] [--search TEXT] [--limit N]
       strandloom inspect [--url URL] TARGET...
       strandloom digest [--output FILE]

Strandloom lives in the tray and remembers every web address you copy.

Options:
  --background   do not open a window where there is no tray
  -h, --help     show this help
  -v, --version  show the version

Commands:
  list           print the links, newest first
    --json         as JSON, one array of objects
    --search TEXT  only those whose address or title contains TEXT
    --limit N      at most N of them
  inspect        print what the program reads from pages, a JSON object a line; TARGET is a
                 web address or an HTML file
    --url URL      the address that files stand for
  digest         write the daily mail as it would be now, as HTML
    --output FILE  into FILE instead of to standard output

list and digest exit with 0 when there are links, with 1 when there are none, and with 2 on wrong usage or a
store that cannot be read. inspect exits with 0 when all targets could be read, with 1 when some
could not, and with 2 on wrong usage.
)";

int refuse(const QString &reason)
{
    std::fprintf(stderr, "strandloom: %s\nTry 'strandloom --help'.\n", qPrintable(reason));
    return int(ExitCode::unusable);
}

/// Parses the arguments behind the program's name and does what they ask for.
template <typename Parse, typename Run>
int runCommand(int argc, char **argv, Parse parse, Run run)
{
    QCoreApplication core(argc, argv);
    const auto request = parse(core.arguments().mid(1));
    return request ? run(*request) : refuse(request.error());
}

int runProgram(int argc, char **argv)
{
    QCommandLineParser parser;
    parser.addOption({u"background"_s, {}});
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    if (!parser.parse(arguments))
        return refuse(parser.errorText());
    if (!parser.positionalArguments().isEmpty())
        return refuse(u"unknown command '%1'"_s.arg(parser.positionalArguments().first()));

    const auto start = parser.isSet(u"background"_s) ? Start::inBackground : Start::normally;
    return runStrandloom(argc, argv, start);
}

} // namespace

int runCommandLine(int argc, char **argv)
{
    const char *const first = argc > 1 ? argv[1] : "";
    const auto isFirst = [first](const char *word) { return std::strcmp(first, word) == 0; };

    if (isFirst("--help") || isFirst("-h")) {
        std::fputs(usage, stdout);
        return int(ExitCode::done);
    }
    if (isFirst("--version") || isFirst("-v")) {
        std::puts("strandloom " STRANDLOOM_VERSION);
        return int(ExitCode::done);
    }
    if (isFirst("list"))
        return runCommand(argc, argv, parseListArguments, runList);
    if (isFirst("inspect"))
        return runCommand(argc, argv, parseInspectArguments, runInspect);
    if (isFirst("digest"))
        return runCommand(argc, argv, parseDigestArguments, runDigest);
    return runProgram(argc, argv);
}
