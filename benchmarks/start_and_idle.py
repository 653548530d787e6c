#!/usr/bin/python3
"""How long a start takes, and what the program costs while nobody copies: `start_and_idle.py BINARY
[SECONDS]`. Drives the release build on a virtual desktop."""

import pathlib
import statistics
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "tests/endtoend"))
from desktop import Desktop, Program  # noqa: E402


def threads(pid):
    return pathlib.Path(f"/proc/{pid}/task").iterdir()


def cpu_milliseconds(pid):
    """Of all threads, from the scheduler's own account."""
    return sum(int((thread / "schedstat").read_text().split()[0]) for thread in threads(pid)) / 1e6


def wake_ups(pid):
    def of(thread):
        status = (thread / "status").read_text()
        return int(status.split("voluntary_ctxt_switches:")[1].split()[0])
    return sum(of(thread) for thread in threads(pid))


def memory_mebibytes(pid):
    status = pathlib.Path(f"/proc/{pid}/status").read_text()
    return int(status.split("VmRSS:")[1].split()[0]) / 1024


def main(binary, seconds):
    with Desktop() as desktop:
        walls, cpus = [], []
        for _ in range(10):
            begin = time.monotonic()
            program = Program(desktop, binary, "--background")
            while not any("Tray icon shown" in line for line in program.lines()):
                time.sleep(0.0005)
            walls.append((time.monotonic() - begin) * 1000)
            cpus.append(cpu_milliseconds(program.process.pid))
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
        time.sleep(6)
        pid = program.process.pid
        before, woken = cpu_milliseconds(pid), wake_ups(pid)
        time.sleep(seconds)
        print(f"idle for {seconds} s: {wake_ups(pid) - woken} wake-ups, "
              f"{cpu_milliseconds(pid) - before:.2f} ms CPU")


if __name__ == "__main__":
    main(sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 60)
