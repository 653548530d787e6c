// SPDX-License-Identifier: MIT
#include "MailDesk.h"

#include "async/Scope.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

const QString MailDesk::key = u"re_canary7890abcdef12"_s;

namespace
{

QString infoFile(const QTemporaryDir &folder, const QByteArray &api)
{
    QFile file(folder.filePath(u"strandloom.ini"_s));
    if (file.open(QIODevice::WriteOnly))
        file.write("MailAPI=" + api + "\nProductSite=https://strandloom.example\n");
    return file.fileName();
}

Task<> keepResult(Task<SendResult> send, std::optional<SendResult> *result)
{
    *result = co_await send;
}

} // namespace

MailDesk::MailDesk(HttpClient *api, const QByteArray &address)
    : info(infoFile(temporary, address))
    , keys((secrets.contents = {{ResendKeyService::apiKeyAccount, key.toUtf8()},
                                {ResendKeyService::emailAccount, "me@example.com"}},
            secrets))
    , service(std::make_unique<EmailService>(EmailService::Dependencies{
          api ? *api : web, keys, summaries, context(), clock, pages, info}))
{
}

CapturedLink MailDesk::addLink(const QString &url, const std::optional<QString> &summary)
{
    clock.advance(1s);
    const CapturedLink link{QUuid::createUuid(), url, u"Title"_s, summary, clock.now()};
    context().insert(link);
    return link;
}

std::optional<SendResult> MailDesk::send(const QList<CapturedLink> &links, const QString &to,
                                         const std::optional<QByteArray> &occasion)
{
    std::optional<SendResult> result;
    Scope scope;
    scope.start(keepResult(service->sendDigest(links, to, occasion), &result));
    (void)QTest::qWaitFor(
        [&] {
            clock.advance(100ms);
            return result.has_value();
        },
        20'000);
    return result;
}
