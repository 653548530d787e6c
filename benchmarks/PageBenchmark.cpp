// SPDX-License-Identifier: MIT
// What reading a page costs. With `--write-pages=FOLDER` it writes the pages instead, for peers.

#include "PageEvidence.h"
#include "PageMaker.h"
#include "PageTitle.h"
#include "SummaryText.h"

#include <QString>

#include <benchmark/benchmark.h>
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

void registerHostilePages()
{
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
    const std::string_view option = "--write-pages=";
    if (argc == 2 && std::string_view(argv[1]).starts_with(option)) {
        writePages(argv[1] + option.size());
        return 0;
    }
    registerHostilePages();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
