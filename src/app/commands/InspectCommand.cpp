// SPDX-License-Identifier: MIT
#include "commands/InspectCommand.h"

#include "LazyHttpClient.h"
#include "PageEvidence.h"
#include "PageTitle.h"
#include "SummaryText.h"
#include "SystemClock.h"
#include "Utf8.h"
#include "WebContentExtractor.h"
#include "async/Scope.h"
#include "commands/Terminal.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QThreadPool>

using namespace Qt::StringLiterals;

namespace
{

using Page = Expected<HttpResponse, QString>;

constexpr qint64 fileLimit = 4 << 20; // as much as is read of a page from the web

bool isWebAddress(const QString &target)
{
    return target.startsWith(u"http://") || target.startsWith(u"https://");
}

Page readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Unexpected{file.errorString()};
    const QByteArray body = file.read(fileLimit);
    return HttpResponse{200, body, !file.atEnd()};
}

/// The inspection of pages, one after the other.
class Inspection
{
public:
    explicit Inspection(InspectRequest request)
        : m_request(std::move(request))
    {
    }

    int run()
    {
        m_tasks.start(inspectAll());
        return QCoreApplication::exec();
    }

private:
    Task<> inspectAll()
    {
        ExitCode code = ExitCode::done;
        for (const QString &target : m_request.targets) {
            const Page page = co_await read(target);
            if (page) {
                print(target, *page);
            } else {
                fail(target + u": " + page.error());
                code = ExitCode::nothing;
            }
        }
        QMetaObject::invokeMethod(
            qApp, [code] { QCoreApplication::exit(finish(code)); }, Qt::QueuedConnection);
    }

    Task<Page> read(QString target)
    {
        if (!isWebAddress(target))
            co_return readFile(target);
        const auto response = co_await m_extractor.fetchPage(target);
        if (!response)
            co_return Unexpected{description(response.error())};
        co_return *response;
    }

    void print(const QString &target, const HttpResponse &page)
    {
        const std::string html = pageText(page);
        const QString url = isWebAddress(target) ? target : m_request.url;
        const EvidencePacket packet = parsePacket(html, url, m_clock.now());
        QJsonObject object{
            {u"target"_s, target},
            {u"packet"_s, readJson(packet.toJson()).object()},
            {u"summary"_s, composeSummary(packet)},
        };
        if (const auto title = extractTitle(html))
            object.insert(u"linkTitle"_s, readUtf8(*title));
        ::print(QJsonDocument(object).toJson(QJsonDocument::Compact).append('\n'));
    }

    InspectRequest m_request;
    SystemClock m_clock;
    QThreadPool m_pages;
    LazyHttpClient m_http{m_pages};
    WebContentExtractor m_extractor{m_http, m_pages, m_clock};
    Scope m_tasks;
};

} // namespace

Expected<InspectRequest, QString> parseInspectArguments(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.addOption({u"url"_s, {}, u"URL"_s});
    if (!parser.parse(arguments))
        return Unexpected{parser.errorText()};
    if (parser.positionalArguments().isEmpty())
        return Unexpected{QString(u"inspect takes at least one address or file"_s)};
    return InspectRequest{parser.positionalArguments(), parser.value(u"url"_s)};
}

int runInspect(const InspectRequest &request)
{
    return Inspection(request).run();
}
