// SPDX-License-Identifier: MIT
#include "Digest.h"

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

QList<CapturedLink> links(int count)
{
    QList<CapturedLink> links;
    for (int i = 0; i < count; ++i) {
        CapturedLink link;
        link.id = QUuid::createUuid();
        link.url = u"https://www.example.com/articles/%1?from=list&page=%2"_s.arg(i).arg(i % 7);
        link.title = u"Article %1 about <links> & what becomes of them"_s.arg(i);
        link.summary =
            u"A page of example.com that tells in some detail what is in article %1."_s.arg(i);
        link.copiedAt = Instant(std::chrono::seconds(1'700'000'000) + i * 61s);
        links.append(link);
    }
    return links;
}

void composeDigest(benchmark::State &state)
{
    const QList<CapturedLink> all = links(int(state.range(0)));
    const DigestContext context{Instant(1'800'000'000s), u"en_US"_s, u"https://example.com"_s};
    for (auto _ : state)
        benchmark::DoNotOptimize(composeDigestHTML(all, context));
    state.SetComplexityN(state.range(0));
}
BENCHMARK(composeDigest)
    ->Arg(1'000)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);

} // namespace

BENCHMARK_MAIN();
