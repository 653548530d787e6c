// SPDX-License-Identifier: MIT
#include "CommandLine.h"

#include "DoctorModule.h"
#include "Utf8.h"
#include "commands/AddCommand.h"
#include "commands/BackupCommand.h"
#include "commands/DigestCommand.h"
#include "commands/ExportCommand.h"
#include "commands/ImportCommand.h"
#include "commands/InspectCommand.h"
#include "commands/ListCommand.h"
#include "commands/OpenCommand.h"
#include "commands/RemoveCommand.h"
#include "commands/RestoreCommand.h"
#include "commands/Terminal.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <string_view>

using namespace Qt::StringLiterals;
using namespace std::string_view_literals;

namespace
{

constexpr auto synopsis = R"(Usage: strandloom [--background]
       strandloom --settings|--export|--quit|--pause|--resume
)";

constexpr auto options = R"(
Strandloom lives in the tray and remembers every web address you copy.

Options:
  --background   do not open a window where there is no tray
  --settings     open the settings
  --export       open the export window
  --quit         end the running program
  --pause        let the running program capture nothing
  --resume       let it capture again; what was copied meanwhile stays out
  -h, --help     show this help, or behind a command the help for that command
  -v, --version  show the version

Commands:
)";

constexpr auto exitCodes = R"(
Exit codes:
  0  done
  1  nothing to show, refused, or a problem was found
  2  wrong usage, or something cannot be read or written
  3  the program is not running, or is running where it must not
)";

/// Arguments begin with the command's name; the result is the exit code.
using RunCommand = int (*)(const QStringList &arguments);

template <auto parse, auto run>
int parseAndRun(const QStringList &arguments)
{
    const auto request = parse(arguments);
    return request ? run(*request) : refuse(request.error());
}

int loadAndRunDoctor(const QStringList &arguments)
{
    const auto module = loadModule<DoctorModule>();
    return module ? (*module)->run(arguments) : fail(readUtf8(module.error()));
}

struct Command {
    QByteArrayView name;
    QByteArrayView synopsis; ///< what may stand behind the name; its lines are aligned
    QByteArrayView help;
    RunCommand run;
};

constexpr std::array commands{
    Command{"list", "[--json] [--search TEXT] [--limit N]",
            R"(  list           print the links, newest first
    --json         as JSON, one array of objects
    --search TEXT  only those whose address or title contains TEXT
    --limit N      at most N of them
)",
            parseAndRun<parseListArguments, runList>},
    Command{"search", "TEXT [--json] [--limit N]",
            R"(  search         the same as list --search TEXT
    --json         as JSON, one array of objects
    --limit N      at most N of them
)",
            parseAndRun<parseSearchArguments, runList>},
    Command{"add", "URL...",
            R"(  add            store the addresses as if you had copied them, and fetch the
                 titles of their pages
)",
            parseAndRun<parseAddArguments, runAdd>},
    Command{"open", "ID|URL",
            R"(  open           open a stored link in the browser; ID is the beginning of a
                 link's id, at least 4 digits with which no other id begins
)",
            parseAndRun<parseOpenArguments, runOpen>},
    Command{"remove", "ID|URL...",
            R"(  remove         delete links
)",
            parseAndRun<parseRemoveArguments, runRemove>},
    Command{"inspect", "[--url URL] TARGET...",
            R"(  inspect        print what the program reads from pages, a JSON object a line;
                 TARGET is a web address or an HTML file
    --url URL      the address that files stand for
)",
            parseAndRun<parseInspectArguments, runInspect>},
    Command{"digest", "[--output FILE]",
            R"(  digest         write the daily mail as it would be now, as HTML
    --output FILE  into FILE instead of to standard output
)",
            parseAndRun<parseDigestArguments, runDigest>},
    Command{"export", R"(--format FORMAT --output FILE [--range RANGE]
                         [--search TEXT] [--layout LAYOUT] [--hide])",
            R"(  export         write the links, or some of them, into a file
    --format FORMAT  text, markdown, pdf, json, or netscape (bookmarks for
                     browsers)
    --output FILE    - is standard output
    --range RANGE    those copied today, yesterday, last7Days or last30Days, all
                     (the default), or FROM..TO in ISO dates or date-times in
                     local time; a date as TO means the end of that day
    --search TEXT    only those whose address or title contains TEXT
    --layout LAYOUT  window (the default): in the order in which they were
                     stored, each summary below its title; compact: those copied
                     last come first, each summary at the end
    --hide           take them off the list once they are written
)",
            parseAndRun<parseExportArguments, runExport>},
    Command{"import", "[--json] FILE",
            R"(  import         store the links of a file: bookmarks of a browser (HTML), an
                 export as json, or one address a line; - is standard input
    --json           print the counts as a JSON object
)",
            parseAndRun<parseImportArguments, runImport>},
    Command{"backup", "[--force] FILE",
            R"(  backup         copy the whole store into FILE, also while the program runs
    --force        replace FILE if it exists
)",
            parseAndRun<parseBackupArguments, runBackup>},
    Command{"restore", "FILE",
            R"(  restore        put a backup in the place of the store, which is kept beside it
                 under another name; not while the program runs
)",
            parseAndRun<parseRestoreArguments, runRestore>},
    Command{"doctor", "[--json]",
            R"(  doctor         say what works on this machine and what does not
    --json         as a JSON object
)",
            loadAndRunDoctor},
};

void printSynopsis(QByteArrayView begin, const Command &command)
{
    print(begin);
    print("strandloom ");
    print(command.name);
    print(" ");
    print(command.synopsis);
    print("\n");
}

int showHelp()
{
    print(synopsis);
    for (const Command &command : commands)
        printSynopsis("       ", command);
    print(options);
    for (const Command &command : commands)
        print(command.help);
    print(exitCodes);
    return finish(ExitCode::done);
}

int showHelp(const Command &command)
{
    printSynopsis("Usage: ", command);
    print("\n");
    print(command.help);
    print(exitCodes);
    return finish(ExitCode::done);
}

bool asksForHelp(std::string_view argument)
{
    return argument == "--help" || argument == "-h";
}

/// Behind "--" everything is what it looks like.
bool asksForHelp(int argc, char **argv)
{
    char **const end = std::find(argv, argv + argc, "--"sv);
    return std::any_of(argv, end, [](const char *argument) { return asksForHelp(argument); });
}

int runCommand(RunCommand run, int argc, char **argv)
{
    QCoreApplication core(argc, argv);
    return run(core.arguments().mid(1));
}

} // namespace

int runCommandLine(int argc, char **argv)
{
    const std::string_view first = argv[1];
    if (asksForHelp(first))
        return showHelp();
    const auto *const command =
        std::find_if(commands.begin(), commands.end(), [first](const Command &candidate) {
            return candidate.name == QByteArrayView(first);
        });
    if (command == commands.end())
        return refuse(u"unknown command '%1'"_s.arg(QString::fromLocal8Bit(argv[1])));
    return asksForHelp(argc, argv) ? showHelp(*command) : runCommand(command->run, argc, argv);
}
