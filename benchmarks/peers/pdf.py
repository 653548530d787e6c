#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares the PDF export with other ways from links to PDF, in one run.

Usage: pdf.py EXPORT_BENCHMARK [LINKS]
WeasyPrint is given a tenth of the links, because it takes long, and compared by the link.
"""
import os
import resource
import subprocess
import sys
import tempfile


def run(name, command, folder):
    """Runs `command` alone; its CPU seconds and peak memory in MiB."""
    pid = os.fork()
    if pid == 0:
        silent = os.open(os.devnull, os.O_WRONLY)
        os.dup2(silent, 1)
        os.dup2(silent, 2)
        os.chdir(folder)
        os.execvp(command[0], command)
    _, status, usage = os.wait4(pid, 0)
    seconds = usage.ru_utime + usage.ru_stime
    outcome = "" if status == 0 else f"  (failed with {os.waitstatus_to_exitcode(status)})"
    print(f"{name:12} {seconds:8.2f} CPU-s {usage.ru_maxrss / 1024:8.0f} MiB{outcome}", flush=True)
    return seconds


def main():
    program = os.path.abspath(sys.argv[1])
    links = int(sys.argv[2]) if len(sys.argv) > 2 else 10_000
    with tempfile.TemporaryDirectory() as folder:
        ours = run("strandloom", [program, f"--benchmark_filter=^pdf/{links}/"], folder)
        peers = {
            "wkhtmltopdf": (links, ["wkhtmltopdf", "-q", "-s", "Letter", "links.html", "w.pdf"]),
            "weasyprint": (links // 10, ["weasyprint", "-q", "links.html", "p.pdf"]),
        }
        for name, (count, command) in peers.items():
            with open(os.path.join(folder, "links.html"), "wb") as page:
                subprocess.run([program, "--html", str(count)], stdout=page, check=True)
            seconds = run(name, command, folder)
            print(f"{'':12} {seconds / count / (ours / links):8.1f} times ours by the link"
                  f" ({count:,} links)")


if __name__ == "__main__":
    resource.setrlimit(resource.RLIMIT_CPU, (600, 600))
    os.environ.setdefault("QT_QPA_PLATFORM", "offscreen")
    main()
