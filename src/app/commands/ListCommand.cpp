// SPDX-License-Identifier: MIT
#include "commands/ListCommand.h"

#include "Calendar.h"
#include "ModelContainer.h"
#include "StoreReader.h"
#include "commands/Terminal.h"
#include "text/DateText.h"
#include "text/LocalizedSearch.h"

#include <QCommandLineParser>
#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace
{

QString withoutControls(QString text)
{
    for (QChar &character : text) {
        if (character.category() == QChar::Other_Control)
            character = u' ';
    }
    return text.simplified();
}

void printAll(const QList<CapturedLink> &links, bool asJson)
{
    const char *separator = "[\n";
    for (const CapturedLink &link : links) {
        if (!print(asJson ? QByteArray(std::exchange(separator, ",\n") + jsonObject(link))
                          : QByteArray(textLine(link).toUtf8() + '\n')))
            return;
    }
    if (asJson)
        print(links.isEmpty() ? "[]\n" : "\n]\n");
}

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

QString textLine(const CapturedLink &link)
{
    const QString time = dateTimeOf(link.copiedAt).toString(u"yyyy-MM-dd HH:mm");
    const QString title = link.title ? withoutControls(*link.title) : QString();
    const QString line = time + u"  " + withoutControls(link.url);
    return title.isEmpty() ? line : QString(line + u"  " + title);
}

QByteArray jsonObject(const CapturedLink &link)
{
    QJsonObject object{
        {u"id"_s, link.id.toString(QUuid::WithoutBraces)},
        {u"url"_s, link.url},
        {u"copiedAt"_s, dateTimeOf(link.copiedAt).toUTC().toString(Qt::ISODateWithMs)},
        {u"isExported"_s, link.isExported},
        {u"isVisible"_s, link.isVisible},
    };
    if (link.title)
        object.insert(u"title"_s, *link.title);
    if (link.summary)
        object.insert(u"summary"_s, *link.summary);
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

int runList(const ListRequest &request)
{
    LinkFilter filter{{}, request.limit};
    if (!request.search.isEmpty()) {
        const LocalizedSearch search(systemLocale());
        filter.accepts = [search,
                          sought = search.folded(request.search)](const CapturedLink &link) {
            return containsFolded(search.folded(link.url), sought)
                || (link.title && containsFolded(search.folded(*link.title), sought));
        };
    }
    const auto links = readVisibleLinks(ModelContainer::defaultFolder(), filter);
    if (!links)
        return fail(description(links.error()));
    const bool hasRows = *links && !(*links)->isEmpty();
    printAll(hasRows ? **links : QList<CapturedLink>(), request.asJson);
    return finish(hasRows ? ExitCode::done : ExitCode::nothing);
}
