// SPDX-License-Identifier: MIT
#include "commands/RestoreCommand.h"

#include "ModelContainer.h"
#include "StoreBackup.h"
#include "commands/Terminal.h"

#include <QCommandLineParser>
#include <QFile>

#include <unistd.h>

using namespace Qt::StringLiterals;

Expected<RestoreRequest, QString> parseRestoreArguments(const QStringList &arguments)
{
    QCommandLineParser parser;
    if (!parser.parse(arguments))
        return Unexpected{parser.errorText()};
    if (parser.positionalArguments().size() != 1)
        return Unexpected{QString(u"restore takes one file"_s)};
    return RestoreRequest{parser.positionalArguments().first()};
}

int runRestore(const RestoreRequest &request)
{
    if (access(QFile::encodeName(request.file).constData(), R_OK) != 0)
        return fail(request.file + u": " + qt_error_string());
    const auto kept = restoreStore(ModelContainer::defaultFolder(), request.file);
    if (!kept && kept.error().kind == StoreError::Kind::locked)
        return fail(u"Strandloom is running; quit it first"_s, ExitCode::notRunning);
    if (!kept)
        return fail(request.file + u": " + description(kept.error()));
    if (*kept)
        print(QString(u"The old store is kept as " + **kept + u'\n').toUtf8());
    return finish(ExitCode::done);
}
