// SPDX-License-Identifier: MIT
#include "commands/AddCommand.h"

#include "LazyHttpClient.h"
#include "LinkWriter.h"
#include "SystemClock.h"
#include "TitleFetcher.h"
#include "async/Scope.h"
#include "commands/Terminal.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QThreadPool>

using namespace Qt::StringLiterals;

namespace
{

/// Fetches the titles of links one after the other, while others may write to the store.
class Titling
{
public:
    Titling(WriteAccess &access, QList<CapturedLink> links)
        : m_access(access)
        , m_links(std::move(links))
    {
        m_pages.setMaxThreadCount(1);
    }

    void run()
    {
        m_tasks.start(titleAll());
        QCoreApplication::exec();
    }

private:
    Task<> titleAll()
    {
        for (const CapturedLink &link : m_links) {
            const auto title = co_await m_titles.titleOf(link.url);
            if (title)
                store(link.id, *title);
        }
        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    }

    /// A link without its title is as good as one whose page cannot be fetched: no failure.
    void store(const LinkId &id, const QString &title)
    {
        const auto writer = m_access.writer();
        const auto stored = writer ? (*writer)->setTitle(id, title) : Unexpected{writer.error()};
        if (!stored)
            fail(u"a title could not be stored: " + stored.error().reason);
        m_access.release();
    }

    WriteAccess &m_access;
    QList<CapturedLink> m_links;
    QThreadPool m_pages;
    LazyHttpClient m_http{m_pages};
    TitleFetcher m_titles{m_http, m_pages};
    Scope m_tasks;
};

} // namespace

Expected<AddRequest, QString> parseAddArguments(const QStringList &arguments)
{
    QCommandLineParser parser;
    if (!parser.parse(arguments))
        return Unexpected{parser.errorText()};
    if (parser.positionalArguments().isEmpty())
        return Unexpected{QString(u"add takes at least one web address"_s)};
    return AddRequest{parser.positionalArguments()};
}

int runAdd(const AddRequest &request)
{
    SystemClock clock;
    WriteAccess access(clock);
    QList<CapturedLink> untitled;
    ExitCode code = ExitCode::done;
    for (const QString &address : request.addresses) {
        const auto writer = access.writer();
        const auto added = writer ? (*writer)->add(address) : Unexpected{writer.error()};
        if (!added)
            return fail(address + u": " + added.error().reason, added.error().code);
        if (!added->refusal.isEmpty())
            code = ExitCode(fail(address + u": " + added->refusal, ExitCode::nothing));
        if (added->untitled)
            untitled.append(*added->untitled);
    }
    access.release();
    Titling(access, untitled).run();
    return int(code);
}
