#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""What a start costs, beside the smallest tray program in the same run, on both kinds of tray; and
what the program costs while nobody copies: `start_and_idle.py PROGRAM FLOOR [STARTS] [SECONDS]`.
Drives the release build on a virtual desktop."""

import json
import pathlib
import signal
import statistics
import subprocess
import sys
import time
import uuid

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "demo"))
from desktop import TRAY_HOST, Desktop, Program  # noqa: E402

STORES = (0, 100, 100_000)  # links


def cpu_milliseconds(pid):
    """Of all threads, those that have ended too."""
    return time.clock_gettime(~pid << 3 | 2) * 1000


def wake_ups(pid):
    """Of the threads that live now."""
    counts = (status.read_text().split("voluntary_ctxt_switches:")[1].split()[0]
              for status in pathlib.Path(f"/proc/{pid}/task").glob("*/status"))
    return sum(map(int, counts))


def unique_mebibytes(pid):
    """Memory that nobody else uses, and how much of that was written."""
    rollup = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text()
    clean, written = (int(rollup.split(f"Private_{kind}:")[1].split()[0]) / 1024
                      for kind in ("Clean", "Dirty"))
    return clean + written, written


def fill(desktop, program, count):
    """The folder of a store with `count` links."""
    folder = desktop.home / f"data-{count}"
    links = [{"id": str(uuid.UUID(int=number + 1)),
              "url": f"https://site{number % 500}.example/news/article-{number}?ref=list",
              "title": f"Article {number} and what became of it",
              "summary": f"What became of article {number}, told in one sentence of some length.",
              "copiedAt": time.strftime("%Y-%m-%dT%H:%M:%S.000000Z",
                                        time.gmtime(1_763_712_300 - 315 * number))}
             for number in range(count)]
    file = desktop.home / "links.json"
    file.write_text(json.dumps(links), encoding="utf-8")
    subprocess.run([program, "import", file], check=count > 0, capture_output=True,
                   env={**desktop.environment, "XDG_DATA_HOME": str(folder)})
    return folder


class Start:
    """One start of a program, until the second after its tray icon is over."""

    def __init__(self, desktop, *command, **environment):
        begin = time.monotonic()
        process = subprocess.Popen(command, env={**desktop.environment, **environment},
                                   stdin=subprocess.DEVNULL, stderr=subprocess.PIPE)
        while b"Tray icon shown" not in process.stderr.readline():
            pass
        self.wall = (time.monotonic() - begin) * 1000
        time.sleep(1)
        self.cpu = cpu_milliseconds(process.pid)
        self.unique, self.written = unique_mebibytes(process.pid)
        process.send_signal(signal.SIGTERM)
        process.stderr.close()
        process.wait(10)


def compare_starts(desktop, program, floor, rounds):
    stores = {f"{count:,} links": fill(desktop, program, count) for count in STORES}
    starts = {name: [] for name in ("floor", *stores)}
    for number in range(rounds + 1):
        found = {"floor": Start(desktop, floor)}
        for name, folder in stores.items():
            found[name] = Start(desktop, program, "--background", XDG_DATA_HOME=str(folder))
        for name, start in found.items() if number > 0 else ():  # the first one warms up
            starts[name].append(start)

    least = {}
    for name, found in starts.items():
        figures = {what: statistics.median(getattr(start, what) for start in found)
                   for what in ("wall", "cpu", "unique", "written")}
        least = least or figures
        print(f"  {name:14} {figures['wall']:6.1f} ms wall ({figures['wall'] / least['wall']:.2f})"
              f" {figures['cpu']:6.1f} ms CPU ({figures['cpu'] / least['cpu']:.2f})"
              f" {figures['unique']:6.1f} MiB unique, {figures['written']:.1f} written", flush=True)


def watch_open_and_idle(desktop, binary, floor, seconds):
    with_window = subprocess.Popen([floor, "--window"], env=desktop.environment,
                                   stderr=subprocess.DEVNULL)
    time.sleep(3)
    print("memory with a window: floor %.1f MiB unique, %.1f written"
          % unique_mebibytes(with_window.pid))
    with_window.terminate()
    with_window.wait(10)
    for count in STORES:
        program = Program(desktop, binary, XDG_DATA_HOME=str(desktop.home / f"data-{count}"))
        program.wait_for_line("Tray icon shown")
        program.open_panel()
        time.sleep(3)
        pid = program.process.pid
        print("memory with the panel, %d links: %.1f MiB unique, %.1f written"
              % (count, *unique_mebibytes(pid)), flush=True)
        desktop.key("Escape")
        if count == STORES[-1]:
            time.sleep(40)  # idle threads of pools have ended by then
            before = wake_ups(pid), cpu_milliseconds(pid)
            time.sleep(seconds)
            print(f"idle for {seconds} s: {wake_ups(pid) - before[0]} wake-ups, "
                  f"{cpu_milliseconds(pid) - before[1]:.2f} ms CPU")
        program.quit()


def main(program, floor, rounds=15, seconds=60):
    for tray in ("embedding", "StatusNotifier"):
        with Desktop(tray=tray == "embedding") as desktop:
            del desktop.environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"]  # which costs its own
            if tray == "StatusNotifier":
                host = desktop.start("/usr/bin/python3", TRAY_HOST, stdin=subprocess.PIPE)
                desktop.wait_for_bus_name("org.kde.StatusNotifierWatcher")
                host.stdin.write(b"host\n")
                host.stdin.flush()
                time.sleep(0.5)
            print(f"{tray} tray, medians of {rounds} starts (and times the floor's)")
            compare_starts(desktop, program, floor, rounds)
            if tray == "embedding":
                watch_open_and_idle(desktop, program, floor, seconds)


if __name__ == "__main__":
    main(*map(str, map(pathlib.Path.absolute, map(pathlib.Path, sys.argv[1:3]))),
         *map(int, sys.argv[3:]))
