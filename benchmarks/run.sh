#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Every benchmark, and the peers in the same run: `run.sh BUILD_FOLDER [FILTER]`. Figures are of this
# machine at this moment; the ratios are what counts.
set -euo pipefail
cd "$(dirname "$0")/.."
build=$(readlink -f "$1")
filter=${2:-.}
mkdir -p build/bench
for program in "$build"/benchmarks/*Benchmark; do
    echo "== $(basename "$program")"
    (cd build/bench && QT_QPA_PLATFORM=offscreen "$program" --benchmark_filter="$filter" \
        --benchmark_enable_random_interleaving=true --benchmark_repetitions=3 --benchmark_min_time=0.2 \
        --benchmark_report_aggregates_only=true)
done
if [ "$filter" = . ]; then
    echo "== 100,000 pages against ICU's regular expressions"
    "$build/benchmarks/PageBenchmark" --compare=100000
    echo "== against lxml"
    /usr/bin/python3 benchmarks/peers/pages_lxml.py "$build/benchmarks/PageBenchmark"
    echo "== against wkhtmltopdf and WeasyPrint"
    /usr/bin/python3 benchmarks/peers/pdf.py "$build/benchmarks/ExportBenchmark"
    echo "== against buku"
    /usr/bin/python3 benchmarks/peers/imports.py "$build/src/app/strandloom"
    echo "== start and idle"
    /usr/bin/python3 benchmarks/start_and_idle.py "$build/src/app/strandloom" \
        "$build/benchmarks/FloorTray"
fi
