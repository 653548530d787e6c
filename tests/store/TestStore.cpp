// SPDX-License-Identifier: MIT
#include "TestStore.h"

#include <algorithm>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

CapturedLink makeLink(const QString &url, int seconds)
{
    CapturedLink link;
    link.id = QUuid::createUuid();
    link.url = url;
    link.copiedAt = FakeClock().now() + std::chrono::seconds(seconds);
    return link;
}

QStringList urlsOf(const QList<CapturedLink> &links)
{
    QStringList urls;
    for (const CapturedLink &link : links)
        urls.append(link.url);
    return urls;
}

QList<CapturedLink> inStoreOrder(const ModelContext &context)
{
    return *context.visibleIn(*context.visibleRows(LinkOrder::store));
}

void TestStore::open()
{
    auto opened = ModelContainer::open(folder, clock);
    if (!opened)
        qFatal("%s", qPrintable(description(opened.error())));
    container = std::move(*opened);
}

void TestStore::reopen()
{
    close();
    open();
}

CapturedLink TestStore::add(const QString &url, int seconds) const
{
    const CapturedLink link = makeLink(url, seconds);
    context().insert(link);
    return link;
}

QStringList TestStore::visible(int pageSize) const
{
    QList<CapturedLink> links;
    while (true) {
        const auto after = links.isEmpty() ? std::nullopt : std::optional(positionOf(links.last()));
        const auto page = context().visibleNewestFirst(after, pageSize);
        if (!page || page->isEmpty())
            break;
        links += *page;
    }
    const auto positions = context().visiblePositions({}, -1);
    const bool isSame =
        std::equal(links.begin(), links.end(), positions->begin(), positions->end(),
                   [](const auto &link, const auto &position) { return link.id == position.id; });
    return isSame ? urlsOf(links) : QStringList{QStringLiteral("the places are others")};
}

FullDisk::FullDisk()
{
    std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &m_before);
    const rlimit full{1, m_before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);
}

FullDisk::~FullDisk()
{
    setrlimit(RLIMIT_FSIZE, &m_before);
}

void runAndKill(const std::function<void()> &work)
{
    const pid_t child = fork();
    if (child == 0) {
        work();
        raise(SIGKILL);
    }
    waitpid(child, nullptr, 0);
}

int runUnprivileged(const std::function<int()> &work)
{
    const pid_t child = fork();
    if (child == 0) {
        constexpr uid_t nobody = 65534;
        const bool isBound = geteuid() != 0 || setresuid(nobody, nobody, nobody) == 0;
        _exit(isBound ? work() : 255);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
