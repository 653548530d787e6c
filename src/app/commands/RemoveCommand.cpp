// SPDX-License-Identifier: MIT
#include "commands/RemoveCommand.h"

#include "LinkWriter.h"
#include "SystemClock.h"
#include "commands/Targets.h"
#include "commands/Terminal.h"

#include <QCommandLineParser>

#include <algorithm>

using namespace Qt::StringLiterals;

Expected<RemoveRequest, QString> parseRemoveArguments(const QStringList &arguments)
{
    QCommandLineParser parser;
    if (!parser.parse(arguments))
        return Unexpected{parser.errorText()};
    if (parser.positionalArguments().isEmpty())
        return Unexpected{QString(u"remove takes at least one id or URL"_s)};
    return RemoveRequest{parser.positionalArguments()};
}

int runRemove(const RemoveRequest &request)
{
    SystemClock clock;
    WriteAccess access(clock);
    ExitCode code = ExitCode::done;
    for (const QString &target : request.targets) {
        const auto links = linksNamed(target);
        if (!links) {
            code = std::max(code, ExitCode(fail(links.error())));
            continue;
        }
        QList<LinkId> ids;
        for (const CapturedLink &link : *links)
            ids.append(link.id);
        const auto writer = access.writer();
        const auto removed = writer ? (*writer)->remove(ids) : Unexpected{writer.error()};
        if (!removed)
            return fail(removed.error());
    }
    return int(code);
}
