// SPDX-License-Identifier: MIT
// The store with 0 and 100,000 links, on the disk of the current directory. `bare` runs do the same
// transaction through SQLite's C interface.

#include "FilledStore.h"
#include "LinkListModel.h"
#include "ModelContainer.h"
#include "ModelContext.h"
#include "StoreDatabase.h"
#include "StoreReader.h"
#include "SystemClock.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <sqlite3.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

constexpr int many = 100'000;

CapturedLink newLink(qint64 number)
{
    CapturedLink link;
    link.id = QUuid::createUuid();
    link.url = u"https://www.example.org/new/%1"_s.arg(number);
    link.copiedAt = firstCopy + std::chrono::hours(24 * 365) + std::chrono::milliseconds(number);
    return link;
}

/// One copied address, from the question whether it is stored to the answer of the disk.
void captureOne(benchmark::State &state)
{
    const FilledStore folder(int(state.range(0)));
    const auto container = opened(folder.path());
    ModelContext &context = container->mainContext();
    qint64 number = 0;
    for (auto _ : state) {
        const CapturedLink link = newLink(++number);
        if (*context.countWithUrl(link.url) == 0)
            context.insert(link);
        QCoreApplication::processEvents();
    }
}

void bareCaptureOne(benchmark::State &state)
{
    const FilledStore folder(int(state.range(0)));
    opened(folder.path()).reset();
    sqlite3 *database = nullptr;
    sqlite3_open(qPrintable(StoreDatabase::pathIn(folder.path())), &database);
    sqlite3_exec(database, "PRAGMA synchronous=FULL", nullptr, nullptr, nullptr);
    std::map<const char *, sqlite3_stmt *> statements;
    const auto prepared = [&](const char *sql) {
        sqlite3_stmt *&statement = statements[sql];
        if (!statement)
            sqlite3_prepare_v2(database, sql, -1, &statement, nullptr);
        return statement;
    };
    const auto run = [](sqlite3_stmt *statement) {
        const int result = sqlite3_step(statement);
        if (result != SQLITE_DONE && result != SQLITE_ROW)
            qFatal("%s", sqlite3_errstr(result));
        sqlite3_reset(statement);
    };
    sqlite3_stmt *const count = prepared("SELECT count(*) FROM links WHERE url=?");
    sqlite3_stmt *const insert = prepared(
        "INSERT INTO links(id, url, copiedAt, isExported, isVisible) VALUES(?, ?, ?, 0, 1)");
    qint64 number = 0;
    for (auto _ : state) {
        const CapturedLink link = newLink(++number);
        const QByteArray url = link.url.toUtf8();
        const QByteArray id = link.id.toRfc4122();
        sqlite3_bind_text(count, 1, url.constData(), int(url.size()), SQLITE_STATIC);
        run(count);
        sqlite3_bind_blob(insert, 1, id.constData(), int(id.size()), SQLITE_STATIC);
        sqlite3_bind_text(insert, 2, url.constData(), int(url.size()), SQLITE_STATIC);
        sqlite3_bind_int64(insert, 3, link.copiedAt.time_since_epoch().count());
        run(prepared("BEGIN"));
        run(insert);
        run(prepared("COMMIT"));
    }
    for (const auto &[sql, statement] : statements)
        sqlite3_finalize(statement);
    sqlite3_close(database);
}

void setOneTitle(benchmark::State &state)
{
    const FilledStore folder(int(state.range(0)));
    const auto container = opened(folder.path());
    ModelContext &context = container->mainContext();
    const LinkId id = context.visibleNewestFirst({}, 1)->first().id;
    for (auto _ : state)
        context.setTitle(id, u"The title of a page"_s);
}

void countByUrl(benchmark::State &state)
{
    const FilledStore folder(int(state.range(0)));
    const auto container = opened(folder.path());
    qint64 number = 0;
    for (auto _ : state) {
        number = (number + 7919) % state.range(0);
        const auto url = u"https://www.example.com/articles/%1/read"_s.arg(number);
        if (*container->mainContext().countWithUrl(url) != 1)
            state.SkipWithError("not found");
    }
}

void firstPage(benchmark::State &state)
{
    const FilledStore folder(int(state.range(0)));
    const auto container = opened(folder.path());
    for (auto _ : state) {
        LinkListModel model(container->mainContext());
        model.fetchMore({});
        benchmark::DoNotOptimize(model.rowCount());
    }
}

void openWithFirstPage(benchmark::State &state)
{
    const FilledStore folder(int(state.range(0)));
    for (auto _ : state) {
        const auto container = opened(folder.path());
        LinkListModel model(container->mainContext());
        model.fetchMore({});
        benchmark::DoNotOptimize(model.rowCount());
    }
}

void quickCheck(benchmark::State &state)
{
    const FilledStore folder(int(state.range(0)));
    for (auto _ : state) {
        if (!checkIntegrity(folder.path()))
            state.SkipWithError("damaged");
    }
}

/// Runs `change` on all links of a store of its own, with a list over its first page.
template <typename Change>
void changeAll(benchmark::State &state, Change change)
{
    for (auto _ : state) {
        state.PauseTiming();
        const FilledStore folder(many);
        auto container = opened(folder.path());
        ModelContext &context = container->mainContext();
        LinkListModel model(context);
        model.fetchMore({});
        QList<LinkId> ids;
        const auto links = context.visibleNewestFirst({}, many);
        for (const CapturedLink &link : *links)
            ids.append(link.id);
        state.ResumeTiming();
        change(context, ids);
        QCoreApplication::processEvents();
        state.PauseTiming();
        if (context.counts().visible != 0)
            state.SkipWithError("not all are gone");
        container.reset();
        state.ResumeTiming();
    }
}

void hideAllExported(benchmark::State &state)
{
    changeAll(state, [](ModelContext &context, const QList<LinkId> &ids) {
        benchmark::DoNotOptimize(bool(context.hideExported(ids)));
    });
}

void removeEach(benchmark::State &state)
{
    changeAll(state, [](ModelContext &context, const QList<LinkId> &ids) {
        benchmark::DoNotOptimize(bool(context.remove(ids)));
    });
}

void removeAll(benchmark::State &state)
{
    changeAll(state, [](ModelContext &context, const QList<LinkId> &) {
        benchmark::DoNotOptimize(bool(context.removeAll()));
    });
}

double residentMebibytes()
{
    long pages = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> pages >> resident;
    return double(resident) * double(sysconf(_SC_PAGESIZE)) / (1024 * 1024);
}

/// The first page of the store in `folder`; prints what the process holds then.
int showFirstPage(const QString &folder)
{
    const auto container = opened(folder);
    LinkListModel model(container->mainContext());
    model.fetchMore({});
    std::printf("%f\n", residentMebibytes());
    return 0;
}

/// What a process of its own holds with the first page of a store of `rows` links.
double memoryWith(int rows)
{
    const FilledStore folder(rows);
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(), {u"--first-page"_s, folder.path()});
    process.waitForFinished();
    return process.readAllStandardOutput().toDouble();
}

void memoryOfFirstPage(benchmark::State &state)
{
    for (auto _ : state)
        state.counters["MiB_over_empty"] = memoryWith(int(state.range(0))) - memoryWith(0);
}

} // namespace

BENCHMARK(captureOne)->Arg(0)->Arg(many)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(bareCaptureOne)->Arg(0)->Arg(many)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(setOneTitle)->Arg(many)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(countByUrl)->Arg(many)->Unit(benchmark::kMicrosecond);
BENCHMARK(firstPage)->Arg(many)->Unit(benchmark::kMicrosecond);
BENCHMARK(openWithFirstPage)->Arg(0)->Arg(many)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(quickCheck)->Arg(many)->Unit(benchmark::kMillisecond);
BENCHMARK(hideAllExported)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(removeEach)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(removeAll)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(memoryOfFirstPage)->Arg(many)->Iterations(1)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    if (argc == 3 && std::strcmp(argv[1], "--first-page") == 0)
        return showFirstPage(QString::fromLocal8Bit(argv[2]));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
