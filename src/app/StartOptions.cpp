// SPDX-License-Identifier: MIT
#include "StartOptions.h"

#include "SingleInstance.h"
#include "StrandloomApp.h"
#include "commands/Terminal.h"

#include <QCommandLineParser>
#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace
{

/// The one action among the options; `open` when there is none.
Expected<ApplicationAction, QString> actionAmong(const QStringList &options)
{
    std::optional<ApplicationAction> asked;
    for (const QString &option : options) {
        const auto action = actionNamed(option);
        if (action && asked && action != asked)
            return Unexpected{u"--%1 and --%2 exclude each other"_s.arg(nameOf(*asked), option)};
        if (action)
            asked = action;
    }
    return asked.value_or(ApplicationAction::open);
}

/// The settings and the export window may be the first that the program shows.
bool canStart(ApplicationAction action)
{
    return action == ApplicationAction::open || action == ApplicationAction::settings
        || action == ApplicationAction::exportLinks;
}

/// Needs no display.
int tellRunningProgram(int argc, char **argv, ApplicationAction action)
{
    const QCoreApplication core(argc, argv);
    const auto told = SingleInstance::tell(action);
    return told ? int(ExitCode::done) : fail(told.error(), ExitCode::notRunning);
}

} // namespace

int runWithOptions(int argc, char **argv)
{
    QCommandLineParser parser;
    parser.addOption({u"background"_s, {}});
    for (const ApplicationAction action : applicationActions) {
        if (action != ApplicationAction::open)
            parser.addOption({nameOf(action), {}});
    }
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    arguments.removeAll(u"-reverse"_s); // the toolkit's
    if (!parser.parse(arguments))
        return refuse(parser.errorText());
    if (!parser.positionalArguments().isEmpty())
        return refuse(u"unknown command '%1'"_s.arg(parser.positionalArguments().first()));

    const auto action = actionAmong(parser.optionNames());
    if (!action)
        return refuse(action.error());
    if (!canStart(*action))
        return tellRunningProgram(argc, argv, *action);
    return runStrandloom(argc, argv, {*action, parser.isSet(u"background"_s)});
}
