// SPDX-License-Identifier: MIT
#include "commands/ListCommand.h"

#include "Calendar.h"
#include "LinkSelection.h"
#include "LinkStream.h"
#include "ModelContainer.h"
#include "StoreReader.h"
#include "commands/Terminal.h"
#include "text/DateText.h"

#include <QCommandLineParser>
#include <QDateTime>

using namespace Qt::StringLiterals;

namespace
{

/// On one line, whatever the page wrote into its title.
QString withoutControls(QString text)
{
    for (QChar &character : text) {
        if (character.category() == QChar::Other_Control)
            character = u' ';
    }
    return text.simplified();
}

QByteArray textLine(const CapturedLink &link)
{
    const QString time = dateTimeOf(link.copiedAt).toString(u"yyyy-MM-dd HH:mm");
    QString line = time + u"  " + withoutControls(link.url);
    if (const QString title = withoutControls(link.title.value_or(QString())); !title.isEmpty())
        line += u"  " + title;
    return line.toUtf8().append('\n');
}

const LinkFormat textFormat{"", textLine, "", ""};

} // namespace

Expected<ListRequest, QString> parseListArguments(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.addOptions({{u"json"_s, {}}, {u"search"_s, {}, u"TEXT"_s}, {u"limit"_s, {}, u"N"_s}});
    if (const auto parsed = parseOptions(parser, arguments); !parsed)
        return Unexpected{parsed.error()};

    ListRequest request;
    request.asJson = parser.isSet(u"json"_s);
    request.search = parser.value(u"search"_s);
    if (parser.isSet(u"limit"_s)) {
        bool isNumber = false;
        request.limit = parser.value(u"limit"_s).toInt(&isNumber);
        if (!isNumber || *request.limit < 0)
            return Unexpected{QString(u"--limit takes a number from 0 up"_s)};
    }
    return request;
}

int runList(const ListRequest &request)
{
    const LinkSelection selection({}, request.search, LocalizedSearch(systemLocale()));
    const LinkFilter filter{
        [&selection](const CapturedLink &link) { return selection.accepts(link); }, request.limit};
    const auto links = readVisibleLinks(ModelContainer::defaultFolder(), filter);
    if (!links)
        return fail(description(links.error()));

    const ByteSink sink = print;
    LinkStream stream(request.asJson ? jsonFormat : textFormat, sink);
    for (const CapturedLink &link : links->value_or(QList<CapturedLink>())) {
        if (!stream.write(link))
            break;
    }
    stream.end();
    return finish(*links && !(*links)->isEmpty() ? ExitCode::done : ExitCode::nothing);
}
