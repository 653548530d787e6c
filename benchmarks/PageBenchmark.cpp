// SPDX-License-Identifier: MIT
// What reading a page costs. With `--write-pages=FOLDER` it writes the pages instead, for peers;
// with
// `--compare=COUNT` it compares what is read from that many with what ICU's expressions find.

#include "PageComparison.h"
#include "PageEvidence.h"
#include "PageMaker.h"
#include "PageTitle.h"
#include "SummaryText.h"

#include <QString>

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <vector>

namespace
{

/// From 20 KB to 2 MB, as many bytes of each size.
const std::vector<std::string> &pages()
{
    static const std::vector<std::string> made = [] {
        PageMaker maker(4);
        std::vector<std::string> all;
        for (const std::size_t size : {20'000, 100'000, 500'000, 2'000'000})
            for (std::size_t bytes = 0; bytes < 2'000'000; bytes += size)
                all.push_back(maker.page(size));
        return all;
    }();
    return made;
}

void read(const std::string &html)
{
    static const QString url = QStringLiteral("https://example.org/a");
    benchmark::DoNotOptimize(extractTitle(html));
    benchmark::DoNotOptimize(composeSummary(parsePacket(html, url, {})));
}

void readPages(benchmark::State &state)
{
    int64_t bytes = 0;
    for ([[maybe_unused]] const auto &_ : state) {
        for (const std::string &page : pages()) {
            read(page);
            bytes += static_cast<int64_t>(page.size());
        }
    }
    state.SetBytesProcessed(bytes);
}
BENCHMARK(readPages)->Unit(benchmark::kMillisecond);

void readSmallPages(benchmark::State &state)
{
    PageMaker maker(5);
    std::vector<std::string> small;
    for (int i = 0; i < 100; ++i)
        small.push_back(maker.page(1700)); // which makes 2.3 KB
    for ([[maybe_unused]] const auto &_ : state) {
        for (const std::string &page : small)
            read(page);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(small.size()));
}
BENCHMARK(readSmallPages)->Unit(benchmark::kMicrosecond);

/// Nothing but one start that never ends: the time must grow with the size and no faster.
void readHostilePage(benchmark::State &state, const std::string &start)
{
    std::string html;
    while (html.size() < static_cast<std::size_t>(state.range(0)))
        html += start;
    for ([[maybe_unused]] const auto &_ : state)
        read(html);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(html.size()));
}

/// Random `<meta`s that nothing ends, with all that patterns look for in them.
std::string metasWithoutEnd()
{
    std::mt19937 random(7);
    const std::string parts[] = {"<meta ", "content='", "name=\"description\" ", "' ",
                                 "\" ",    "x",         "property='og:title' ",  "\n"};
    std::string start;
    while (start.size() < 60'000)
        start += parts[random() % std::size(parts)];
    return start;
}

void registerHostilePages()
{
    benchmark::RegisterBenchmark("hostile metas", readHostilePage, metasWithoutEnd())
        ->RangeMultiplier(8)
        ->Range(64 << 10, 4 << 20)
        ->Unit(benchmark::kMillisecond);
    for (const std::string start : {"<title",
                                    "<title>",
                                    "<meta ",
                                    "<meta>",
                                    "<meta name=\"description\" ",
                                    "<meta content='",
                                    "<meta property='og:title' content='",
                                    "<h1",
                                    "<h1>",
                                    "<nav",
                                    "<nav>",
                                    "<nav><a>",
                                    "<a",
                                    "<button",
                                    "<button>",
                                    "<script",
                                    "<script>",
                                    "<style",
                                    "<style>",
                                    "<!--",
                                    "<header>",
                                    "<footer>",
                                    "<",
                                    "<>",
                                    "&",
                                    "&amp;",
                                    "$",
                                    "$ ",
                                    "$1",
                                    "\xCC\x81",
                                    "\xF0\x9F\x87\xA8",
                                    "x"})
        benchmark::RegisterBenchmark(("hostile " + start).c_str(), readHostilePage, start)
            ->RangeMultiplier(8)
            ->Range(64 << 10, 4 << 20)
            ->Unit(benchmark::kMillisecond);
}

void writePages(const std::string &folder)
{
    for (std::size_t index = 0; index < pages().size(); ++index)
        std::ofstream(folder + '/' + std::to_string(index) + ".html") << pages()[index];
}

} // namespace

int main(int argc, char **argv)
{
    const std::string_view argument = argc == 2 ? argv[1] : "";
    if (const std::string_view option = "--write-pages="; argument.starts_with(option)) {
        writePages(argv[1] + option.size());
        return 0;
    }
    if (const std::string_view option = "--compare="; argument.starts_with(option)) {
        const auto difference = firstDifference(6, std::atoi(argv[1] + option.size()));
        std::puts(difference ? difference->c_str() : "no difference");
        return difference ? 1 : 0;
    }
    registerHostilePages();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
