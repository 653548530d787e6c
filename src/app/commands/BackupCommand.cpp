// SPDX-License-Identifier: MIT
#include "commands/BackupCommand.h"

#include "ModelContainer.h"
#include "StoreBackup.h"
#include "commands/Terminal.h"

#include <QCommandLineParser>
#include <QFileInfo>

using namespace Qt::StringLiterals;

Expected<BackupRequest, QString> parseBackupArguments(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.addOption({u"force"_s, {}});
    if (!parser.parse(arguments))
        return Unexpected{parser.errorText()};
    if (parser.positionalArguments().size() != 1)
        return Unexpected{QString(u"backup takes one file"_s)};
    return BackupRequest{parser.positionalArguments().first(), parser.isSet(u"force"_s)};
}

int runBackup(const BackupRequest &request)
{
    if (!request.replacesFile && QFileInfo::exists(request.file))
        return fail(request.file + u" exists; --force replaces it", ExitCode::nothing);
    const auto isBackedUp = backUpStore(ModelContainer::defaultFolder(), request.file);
    if (!isBackedUp)
        return fail(isBackedUp.error());
    return *isBackedUp ? int(ExitCode::done) : fail(u"there is no store yet"_s, ExitCode::nothing);
}
