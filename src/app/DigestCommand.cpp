// SPDX-License-Identifier: MIT
#include "DigestCommand.h"

#include "AppInfo.h"
#include "AtomicFile.h"
#include "CommandLine.h"
#include "Digest.h"
#include "ModelContainer.h"
#include "StoreReader.h"
#include "SystemClock.h"
#include "text/DateText.h"

#include <QCommandLineParser>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace
{

using Written = Expected<void, QString>;

Written writeToStandardOutput(const QByteArray &html)
{
    const bool isWritten =
        std::fwrite(html.constData(), 1, size_t(html.size()), stdout) == size_t(html.size())
        && std::fflush(stdout) == 0;
    return isWritten ? Written() : Unexpected{qt_error_string()};
}

Written writeToFile(const QByteArray &html, const QString &path)
{
    auto file = AtomicFile::open(path);
    if (!file)
        return Unexpected{description(file.error())};
    file->write(html);
    if (const auto committed = file->commit(); !committed)
        return Unexpected{description(committed.error())};
    return {};
}

int fail(const QString &reason)
{
    std::fprintf(stderr, "strandloom: %s\n", qPrintable(reason));
    return int(ExitCode::unusable);
}

} // namespace

Expected<DigestRequest, QString> parseDigestArguments(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.addOption({u"output"_s, {}, u"FILE"_s});
    if (!parser.parse(arguments))
        return Unexpected{parser.errorText()};
    if (!parser.positionalArguments().isEmpty())
        return Unexpected{u"unexpected argument '%1'"_s.arg(parser.positionalArguments().first())};
    return DigestRequest{parser.value(u"output"_s)};
}

int runDigest(const DigestRequest &request)
{
    const auto links = readVisibleLinks(ModelContainer::defaultFolder(), {});
    if (!links)
        return fail(description(links.error()));
    if (!*links || (*links)->isEmpty())
        return int(ExitCode::nothing);

    const QString site =
        AppInfo(AppInfo::defaultPath()).value(u"ProductSite"_s).value_or(QString());
    const DigestContext context{SystemClock().now(), systemLocale(), site};
    const QByteArray html = composeDigestHTML(**links, context).toUtf8();
    const Written written =
        request.output.isEmpty() ? writeToStandardOutput(html) : writeToFile(html, request.output);
    return written ? int(ExitCode::done) : fail(written.error());
}
