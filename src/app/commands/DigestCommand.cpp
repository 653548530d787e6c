// SPDX-License-Identifier: MIT
#include "commands/DigestCommand.h"

#include "AppInfo.h"
#include "DateText.h"
#include "Digest.h"
#include "ModelContainer.h"
#include "StoreReader.h"
#include "SystemClock.h"
#include "commands/Terminal.h"

#include <QCommandLineParser>

using namespace Qt::StringLiterals;

Expected<DigestRequest, QString> parseDigestArguments(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.addOption({u"output"_s, {}, u"FILE"_s, u"-"_s});
    if (const auto parsed = parseOptions(parser, arguments); !parsed)
        return Unexpected{parsed.error()};
    return DigestRequest{parser.value(u"output"_s)};
}

int runDigest(const DigestRequest &request)
{
    const auto stored = readVisibleLinks(ModelContainer::defaultFolder(), {});
    if (!stored)
        return fail(description(stored.error()));
    const auto links = stored->value_or(QList<CapturedLink>());

    const QString site =
        AppInfo(AppInfo::defaultPath()).value(u"ProductSite"_s).value_or(QString());
    const DigestContext context{SystemClock().now(), systemLocale(), site};
    const QByteArray html = composeDigestHTML(links, context).toUtf8();
    const Outcome written = writeTo(request.output, [&html](const ByteSink &sink) {
        sink(html);
        return Outcome();
    });
    if (!written)
        return fail(written.error());
    return int(links.isEmpty() ? ExitCode::nothing : ExitCode::done);
}
