#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""How long a start takes, and what the program costs while nobody copies: `start_and_idle.py BINARY
[SECONDS]`. Drives the release build on a virtual desktop."""

import pathlib
import statistics
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "demo"))
from desktop import Desktop, Program  # noqa: E402


def accounts(pid):
    """What each thread has cost so far: {thread: (CPU nanoseconds, wake-ups)}."""
    costs = {}
    for thread in pathlib.Path(f"/proc/{pid}/task").iterdir():
        cpu = int((thread / "schedstat").read_text().split()[0])
        status = (thread / "status").read_text()
        costs[thread.name] = cpu, int(status.split("voluntary_ctxt_switches:")[1].split()[0])
    return costs


def cost_since(pid, before):
    """CPU milliseconds and wake-ups of the threads that live now."""
    now = accounts(pid)
    cpu = sum(costs[0] - before.get(thread, (0, 0))[0] for thread, costs in now.items())
    wake_ups = sum(costs[1] - before.get(thread, (0, 0))[1] for thread, costs in now.items())
    return cpu / 1e6, wake_ups


def memory_mebibytes(pid):
    status = pathlib.Path(f"/proc/{pid}/status").read_text()
    return int(status.split("VmRSS:")[1].split()[0]) / 1024


def main(binary, seconds):
    with Desktop() as desktop:
        del desktop.environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"]  # which costs its own
        walls, cpus = [], []
        for _ in range(10):
            begin = time.monotonic()
            program = Program(desktop, binary, "--background")
            while not any("Tray icon shown" in line for line in program.lines()):
                time.sleep(0.0005)
            walls.append((time.monotonic() - begin) * 1000)
            cpus.append(cost_since(program.process.pid, {})[0])
            program.quit()
        print(f"start to tray: {statistics.median(walls):.1f} ms wall, "
              f"{statistics.median(cpus):.1f} ms CPU (medians of 10)")

        program = Program(desktop, binary)
        program.wait_for_line("Tray icon shown")
        print(f"memory at start: {memory_mebibytes(program.process.pid):.1f} MiB")
        program.open_panel()
        time.sleep(3)
        print(f"memory with the panel open: {memory_mebibytes(program.process.pid):.1f} MiB")
        desktop.key("Escape")
        time.sleep(40)  # idle threads of pools have ended by then
        pid = program.process.pid
        before = accounts(pid)
        time.sleep(seconds)
        cpu, wake_ups = cost_since(pid, before)
        print(f"idle for {seconds} s: {wake_ups} wake-ups, {cpu:.2f} ms CPU")


if __name__ == "__main__":
    main(sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 60)
