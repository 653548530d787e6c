// SPDX-License-Identifier: MIT
// The panel with 100 and 100,000 links, drawn off screen.

#include "AppInfo.h"
#include "FakeClipboard.h"
#include "FakeHttpClient.h"
#include "FilledStore.h"
#include "LinkListView.h"
#include "LinkRowView.h"
#include "LocalMLService.h"
#include "MenuBarView.h"
#include "MenuBarViewModel.h"
#include "SummaryService.h"
#include "SystemClock.h"
#include "UrlOpener.h"
#include "WebContentExtractor.h"
#include "style/LoomStyle.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QLoggingCategory>
#include <QProcess>
#include <QScrollBar>
#include <QTest>
#include <QThreadPool>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

constexpr int few = 100;
constexpr int many = 100'000;

/// All that the panel needs, with the store in `folder`.
struct Desk {
    explicit Desk(const QString &folder)
        : container(opened(folder))
    {
    }

    std::unique_ptr<ModelContainer> container;
    ModelContext &context = container->mainContext();
    FakeClipboard clipboard;
    DesktopUrlOpener browser;
    SystemClock clock;
    FakeHttpClient web;
    QThreadPool pages;
    LocalMLService mlService{AppInfo(QString()), clock};
    WebContentExtractor extractor{web, pages, clock};
    SummaryService summaries{context, mlService, extractor, clock};
};

/// The panel with its model, from nothing to the first picture.
struct Panel {
    explicit Panel(Desk &desk)
        : model({desk.context, desk.clipboard, desk.browser, desk.summaries, desk.web, desk.pages,
                 desk.clock})
        , view(model, {})
        , list(*view.findChild<LinkListView *>())
    {
        show();
    }
    void show()
    {
        view.showAsPanel({});
        draw();
    }
    void draw()
    {
        QCoreApplication::processEvents(); // what is asked for
        QCoreApplication::processEvents(); // and what that asks for
        view.repaint();
    }

    MenuBarViewModel model;
    MenuBarView view;
    LinkListView &list;
};

double cpuMilliseconds()
{
    timespec used = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return double(used.tv_sec) * 1e3 + double(used.tv_nsec) / 1e6;
}

/// Opens the panel for the first time in this process; prints the milliseconds of wall and CPU
/// time.
int openFirst(const QString &folder)
{
    Desk desk(folder);
    QCoreApplication::processEvents();
    QElapsedTimer wall;
    wall.start();
    const double before = cpuMilliseconds();
    const Panel panel(desk);
    std::printf("%f %f\n", double(wall.nsecsElapsed()) / 1e6, cpuMilliseconds() - before);
    return panel.list.rowsInView().empty() ? 1 : 0;
}

void firstOpening(benchmark::State &state)
{
    const FilledStore store(int(state.range(0)));
    double cpu = 0;
    for (auto _ : state) {
        QProcess process;
        process.start(QCoreApplication::applicationFilePath(), {u"--open"_s, store.path()});
        process.waitForFinished();
        const QByteArrayList times = process.readAllStandardOutput().simplified().split(' ');
        if (process.exitCode() != 0 || times.size() != 2)
            return state.SkipWithError("the panel did not open");
        state.SetIterationTime(times[0].toDouble() / 1e3);
        cpu += times[1].toDouble();
    }
    state.counters["CPU_ms"] = benchmark::Counter(cpu, benchmark::Counter::kAvgIterations);
}

void reopening(benchmark::State &state)
{
    const FilledStore store(int(state.range(0)));
    Desk desk(store.path());
    Panel panel(desk);
    for (auto _ : state) {
        state.PauseTiming();
        panel.view.hide();
        state.ResumeTiming();
        panel.show();
    }
}

void scrollThousandRows(benchmark::State &state)
{
    const FilledStore store(int(state.range(0)));
    Desk desk(store.path());
    Panel panel(desk);
    const int row = LinkRowView::collapsedHeight(panel.list);
    QScrollBar &bar = *panel.list.verticalScrollBar();
    for (auto _ : state) {
        for (int i = 0; i < 1000; ++i) {
            bar.setValue(bar.value() + row);
            panel.draw();
        }
    }
}

/// A new link at the top while all others have been scrolled through.
void insertAboveAll(benchmark::State &state)
{
    const FilledStore store(int(state.range(0)));
    Desk desk(store.path());
    Panel panel(desk);
    panel.list.setCurrent(panel.model.links().rowCount() - 1);
    for (auto _ : state) {
        state.PauseTiming();
        const CapturedLink link{
            QUuid::createUuid(), u"https://new.example"_s, {}, {}, desk.clock.now()};
        desk.context.insert(link);
        state.ResumeTiming();
        panel.draw();
    }
}

/// From the top of a list just opened to its end, painted.
void toTheEnd(benchmark::State &state)
{
    const FilledStore store(int(state.range(0)));
    Desk desk(store.path());
    Panel panel(desk);
    for (auto _ : state) {
        state.PauseTiming();
        panel.view.hide();
        panel.show();
        state.ResumeTiming();
        QTest::keyClick(&panel.list, Qt::Key_End);
        panel.draw();
    }
}

/// A key, painted; adds the milliseconds.
void press(Panel &panel, Qt::Key key, const QString &text, std::vector<double> &keys)
{
    QElapsedTimer time;
    time.start();
    QTest::sendKeyEvent(QTest::Click, QApplication::focusWidget(), key, text, Qt::NoModifier);
    panel.draw();
    keys.push_back(double(time.nsecsElapsed()) / 1e6);
}

void tell(benchmark::State &state, const std::string &name, std::vector<double> keys)
{
    std::sort(keys.begin(), keys.end());
    state.counters[name + "_median_ms"] = keys[keys.size() / 2];
    state.counters[name + "_longest_ms"] = keys.back();
}

double residentMiB()
{
    QFile file(u"/proc/self/statm"_s);
    const bool isOpen = file.open(QIODevice::ReadOnly);
    return isOpen ? file.readAll().split(' ').at(1).toDouble() * double(sysconf(_SC_PAGESIZE)) / 1e6
                  : 0;
}

/// A word typed while the texts are still read, with the slices of reading between the keys, and
/// taken back when all are there.
void search(benchmark::State &state)
{
    const FilledStore store(int(state.range(0)));
    Desk desk(store.path());
    Panel panel(desk);
    const double before = residentMiB();
    std::vector<double> reading, read;
    for (auto _ : state) {
        const QString word = u"article 99"_s;
        for (const QChar letter : word)
            press(panel, Qt::Key_A, letter, reading);
        while (panel.model.links().isReading())
            panel.draw();
        for (qsizetype left = word.size() - 1; left > 0; --left)
            press(panel, Qt::Key_Backspace, {}, read);
        state.counters["held_MB"] = residentMiB() - before;
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    }
    tell(state, "reading", reading);
    tell(state, "read", read);
    state.counters["left_MB"] = residentMiB() - before;
}

} // namespace

BENCHMARK(firstOpening)
    ->Arg(few)
    ->Arg(many)
    ->Iterations(9)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(reopening)->Arg(few)->Arg(many)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(scrollThousandRows)->Arg(many)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(toTheEnd)->Arg(few)->Arg(10'000)->Arg(many)->Iterations(9)->Unit(benchmark::kMillisecond);
BENCHMARK(search)->Arg(few)->Arg(10'000)->Arg(many)->Iterations(5)->Unit(benchmark::kMillisecond);
BENCHMARK(insertAboveAll)->Arg(many)->Iterations(20)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QLoggingCategory::setFilterRules(
        u"*.warning=false"_s); // it complains whenever a window is shown
    const QApplication application(argc, argv);
    LoomStyle::use(); // QT_STYLE_OVERRIDE=fusion shows what it costs
    if (argc == 3 && std::strcmp(argv[1], "--open") == 0)
        return openFirst(QString::fromLocal8Bit(argv[2]));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
