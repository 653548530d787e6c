// SPDX-License-Identifier: MIT
#include "ExportDocument.h"
#include "LinkSelection.h"
#include "ManyLinks.h"
#include "MarkdownWriter.h"
#include "PdfWriter.h"
#include "TextWriter.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace
{

ExportDocument documentOf(int links)
{
    return {manyLinks(links), ExportLayout::window, Instant(std::chrono::seconds(1'763'712'300)),
            u"en_US"_s};
}

/// Of the process so far, so it means something only where a case runs alone.
double peakMiB()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024;
}

template <typename Writer>
void writeDocuments(benchmark::State &state, Writer write)
{
    const ExportDocument document = documentOf(int(state.range(0)));
    const double before = peakMiB();
    qint64 bytes = 0;
    for (auto _ : state) {
        bytes = 0;
        write(document, [&bytes](QByteArrayView part) {
            bytes += part.size();
            return true;
        });
    }
    state.counters["bytes"] = double(bytes);
    state.counters["peakMiB"] = peakMiB();
    state.counters["grownMiB"] = peakMiB() - before;
}

void pdf(benchmark::State &state)
{
    writeDocuments(state, [&state](const ExportDocument &document, const ByteSink &sink) {
        if (!writePdf(document, sink))
            state.SkipWithError("not written");
    });
}
BENCHMARK(pdf)->Arg(1000)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond)->Iterations(1);

void text(benchmark::State &state)
{
    writeDocuments(state, writeText);
}
BENCHMARK(text)->Arg(100'000)->Unit(benchmark::kMillisecond);

void markdown(benchmark::State &state)
{
    writeDocuments(state, writeMarkdown);
}
BENCHMARK(markdown)->Arg(100'000)->Unit(benchmark::kMillisecond);

const LocalizedSearch search(u"en_US"_s);

void foldCandidates(benchmark::State &state)
{
    const auto links = manyLinks(int(state.range(0)));
    for (auto _ : state) {
        for (const CapturedLink &link : links)
            benchmark::DoNotOptimize(candidateOf(link, search));
    }
}
BENCHMARK(foldCandidates)->Arg(100'000)->Unit(benchmark::kMillisecond);

void searchAsTyped(benchmark::State &state)
{
    std::vector<Candidate> candidates;
    for (const CapturedLink &link : manyLinks(100'000))
        candidates.push_back(candidateOf(link, search));
    const QString typed = u"Quiet Laptop of Köln"_s;
    const LinkSelection selection({}, typed.first(state.range(0)), search);
    for (auto _ : state)
        benchmark::DoNotOptimize(
            std::count_if(candidates.begin(), candidates.end(),
                          [&](const Candidate &each) { return selection.accepts(each); }));
}
BENCHMARK(searchAsTyped)->Arg(0)->Arg(1)->Arg(2)->Arg(5)->Arg(20)->Unit(benchmark::kMillisecond);

/// The same links for the programs to compare with.
void printHtml(int count)
{
    std::puts("<!DOCTYPE html><meta charset='utf-8'><title>Strandloom Export</title><style>"
              "@page{size:letter;margin:50pt} body{font-family:'Noto Sans',sans-serif;margin:0}"
              "p{margin:0 0 3pt} .t{font:bold 14pt 'Noto Sans';margin-top:15pt}"
              ".s{font:italic 10pt 'Noto Sans';margin-left:10pt;color:#555}"
              ".u{font-size:11pt;color:#007aff;word-break:break-all}"
              ".c{font-size:10pt;color:#888}</style><h1>Strandloom Export</h1>");
    for (const CapturedLink &link : manyLinks(count))
        std::printf("<p class=t>%s<p class=s>%s<p class=u>%s<p class=c>Copied: today\n",
                    qUtf8Printable(displayTitle(link).toHtmlEscaped()),
                    qUtf8Printable(link.summary.value_or(QString()).toHtmlEscaped()),
                    qUtf8Printable(link.url.toHtmlEscaped()));
}

} // namespace

int main(int count, char **arguments)
{
    if (count == 3 && QByteArrayView(arguments[1]) == "--html") {
        printHtml(QByteArrayView(arguments[2]).toInt());
        return 0;
    }
    benchmark::Initialize(&count, arguments);
    benchmark::RunSpecifiedBenchmarks();
}
