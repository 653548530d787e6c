// SPDX-License-Identifier: MIT
#include "commands/OpenCommand.h"

#include "UrlOpener.h"
#include "commands/Targets.h"
#include "commands/Terminal.h"

#include <QCommandLineParser>

using namespace Qt::StringLiterals;

Expected<OpenRequest, QString> parseOpenArguments(const QStringList &arguments)
{
    QCommandLineParser parser;
    if (!parser.parse(arguments))
        return Unexpected{parser.errorText()};
    if (parser.positionalArguments().size() != 1)
        return Unexpected{QString(u"open takes one id or URL"_s)};
    return OpenRequest{parser.positionalArguments().first()};
}

int runOpen(const OpenRequest &request)
{
    const auto links = linksNamed(request.target);
    if (!links)
        return fail(links.error());
    const QString &url = links->first().url;
    return DesktopUrlOpener().open(url) ? int(ExitCode::done)
                                        : fail(url + u": no program opens it", ExitCode::nothing);
}
