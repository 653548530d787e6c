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
    QList<CapturedLink> links;
    const auto damaged = forEachVisibleLink(ModelContainer::defaultFolder(), LinkOrder::newestFirst,
                                            [&links](const CapturedLink &link) {
                                                links.append(link);
                                                return true;
                                            });
    if (!damaged)
        return fail(description(damaged.error()));

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
    return finish(links.isEmpty() ? ExitCode::nothing : ExitCode::done, *damaged);
}
