// SPDX-License-Identifier: MIT
#include "commands/ListCommand.h"

#include "DateText.h"
#include "LinkSelection.h"
#include "LinkStream.h"
#include "ModelContainer.h"
#include "StoreReader.h"
#include "commands/Terminal.h"

#include <QCommandLineParser>

#include <array>
#include <cstdio>
#include <ctime>

using namespace Qt::StringLiterals;

namespace
{

/// QDateTime would look with each link whether /etc/localtime has changed.
QByteArray localTime(Instant instant)
{
    const time_t time =
        std::chrono::floor<std::chrono::seconds>(instant.time_since_epoch()).count();
    tm civil = {};
    localtime_r(&time, &civil);
    std::array<char, 64> text = {};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d", civil.tm_year + 1900,
                  civil.tm_mon + 1, civil.tm_mday, civil.tm_hour, civil.tm_min);
    return text.data();
}

QByteArray textLine(const CapturedLink &link)
{
    QByteArray line = localTime(link.copiedAt) + "  " + onOneLine(link.url).toUtf8();
    if (const QString title = onOneLine(link.title.value_or(QString())); !title.isEmpty())
        line += "  " + title.toUtf8();
    return line + '\n';
}

const LinkFormat textFormat{"", textLine, "", ""};

void addListOptions(QCommandLineParser &parser)
{
    parser.addOptions({{u"json"_s, {}}, {u"limit"_s, {}, u"N"_s}});
}

Expected<ListRequest, QString> listRequest(const QCommandLineParser &parser, const QString &search)
{
    ListRequest request{parser.isSet(u"json"_s), search, {}};
    if (parser.isSet(u"limit"_s)) {
        bool isNumber = false;
        request.limit = parser.value(u"limit"_s).toInt(&isNumber);
        if (!isNumber || *request.limit < 0)
            return Unexpected{QString(u"--limit takes a number from 0 up"_s)};
    }
    return request;
}

} // namespace

Expected<ListRequest, QString> parseListArguments(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.addOption({u"search"_s, {}, u"TEXT"_s});
    addListOptions(parser);
    if (const auto parsed = parseOptions(parser, arguments); !parsed)
        return Unexpected{parsed.error()};
    return listRequest(parser, parser.value(u"search"_s));
}

Expected<ListRequest, QString> parseSearchArguments(const QStringList &arguments)
{
    QCommandLineParser parser;
    addListOptions(parser);
    if (!parser.parse(arguments))
        return Unexpected{parser.errorText()};
    if (parser.positionalArguments().size() != 1)
        return Unexpected{QString(u"search takes one text"_s)};
    return listRequest(parser, parser.positionalArguments().first());
}

int runList(const ListRequest &request)
{
    const LinkSelection selection({}, request.search, LocalizedSearch(systemLocale()));
    const ByteSink sink = print;
    LinkStream stream(request.asJson ? jsonFormat : textFormat, sink);
    qint64 count = 0;
    const auto damaged = forEachVisibleLink(
        ModelContainer::defaultFolder(), LinkOrder::newestFirst, [&](const CapturedLink &link) {
            if (count == request.limit)
                return false;
            return !selection.accepts(link) || (++count, stream.write(link));
        });
    if (!damaged)
        return fail(description(damaged.error()));
    stream.end();
    return finish(count > 0 ? ExitCode::done : ExitCode::nothing, *damaged);
}
