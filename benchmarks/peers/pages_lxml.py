#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""What lxml needs to take the same facts from the same pages.

Usage: pages_lxml.py PROGRAM
PROGRAM is our benchmark: it writes the pages, and is measured in the same run.
"""
import json
import pathlib
import subprocess
import sys
import tempfile
import time

import lxml.html

WANTED = 1.3
ROUNDS = 5
NOT_READ = ("script", "style", "nav", "footer", "header")


def facts(page):
    document = lxml.html.fromstring(page)
    title = document.findtext(".//title")
    metas = {
        meta.get("name") or meta.get("property"): meta.get("content")
        for meta in document.iter("meta")
    }
    headings = [heading.text_content() for heading in document.iter("h1", "h2")][:5]
    for element in list(document.iter(*NOT_READ, lxml.etree.Comment)):
        element.drop_tree()
    text = " ".join(document.text_content().split())[:1500]
    return title, metas, headings, text


def our_rate(program):
    """Bytes per CPU-second, the best of the rounds."""
    report = json.loads(
        subprocess.run(
            [program, "--benchmark_filter=^readPages$", "--benchmark_format=json",
             f"--benchmark_repetitions={ROUNDS}"],
            check=True, capture_output=True, text=True,
        ).stdout
    )
    return max(run["bytes_per_second"] for run in report["benchmarks"]
               if run["run_type"] == "iteration")


def peer_rate(program):
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([program, f"--write-pages={folder}"], check=True)
        pages = [path.read_bytes() for path in pathlib.Path(folder).iterdir()]
    best = 0.0
    for _ in range(ROUNDS):
        begin = time.process_time()
        for page in pages:
            facts(page)
        best = max(best, sum(map(len, pages)) / (time.process_time() - begin))
    return best


def main():
    program = sys.argv[1]
    ours, peer = our_rate(program), peer_rate(program)
    print(f"pages: ours {ours / 1e6:.0f} MB/CPU-s, lxml {peer / 1e6:.0f} MB/CPU-s, "
          f"ratio {ours / peer:.1f} (wanted {WANTED})")
    sys.exit(ours < WANTED * peer)


main()
