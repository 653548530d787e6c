#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Compares the import of a bookmarks file, alone and through the running program, with buku's.

Usage: imports.py PROGRAM [BOOKMARKS]
buku is given a tenth of the bookmarks, because it takes long, and compared by the bookmark.
"""
import os
import pathlib
import subprocess
import sys
import tempfile
import time


def write_bookmarks(path, count):
    with open(path, "w", encoding="utf-8") as file:
        file.write("<!DOCTYPE NETSCAPE-Bookmark-file-1>\n<TITLE>Bookmarks</TITLE>\n<DL><p>\n")
        for number in range(count):
            file.write(
                f'<DT><A HREF="https://site{number % 500}.example/news/article-{number}?ref=list"'
                f' ADD_DATE="{1_600_000_000 + number * 61}">Article {number} &amp; what became of it'
                "</A>\n")
        file.write("</DL><p>\n")


def cpu_seconds(command, environment):
    pid = os.fork()
    if pid == 0:
        silent = os.open(os.devnull, os.O_WRONLY)
        os.dup2(silent, 1)
        os.dup2(silent, 2)
        os.execvpe(command[0], command, environment)
    _, status, usage = os.wait4(pid, 0)
    if status:
        sys.exit(f"{command} failed with {os.waitstatus_to_exitcode(status)}")
    return usage.ru_utime + usage.ru_stime


def seconds_of(pid):
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def through_the_program(program, bookmarks, environment):
    """CPU seconds of the import and of the program that does the writing."""
    running = subprocess.Popen([program, "--background"], env=environment,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        wait_for = time.monotonic() + 20
        while b"true" not in subprocess.run(
                ["gdbus", "call", "--session", "-d", "org.freedesktop.DBus", "-o", "/", "-m",
                 "org.freedesktop.DBus.NameHasOwner", "app.strandloom"],
                env=environment, capture_output=True, check=False).stdout:
            if time.monotonic() > wait_for:
                sys.exit("the program does not start")
            time.sleep(0.1)
        before = seconds_of(running.pid)
        own = cpu_seconds([program, "import", bookmarks], environment)
        return own + seconds_of(running.pid) - before
    finally:
        running.terminate()
        running.wait(20)


def main():
    program = os.path.abspath(sys.argv[1])
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 100_000
    if "STRANDLOOM_BENCH_BUS" not in os.environ:  # a session bus of our own
        os.environ["STRANDLOOM_BENCH_BUS"] = "1"
        os.execvp("dbus-run-session", ["dbus-run-session", "--", sys.executable, *sys.argv])
    with tempfile.TemporaryDirectory() as folder:
        environment = {**os.environ, "QT_QPA_PLATFORM": "offscreen", "HOME": folder}
        for name in ("XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR", "XDG_CACHE_HOME"):
            environment[name] = os.path.join(folder, name)
            os.mkdir(environment[name], 0o700)
        bookmarks = os.path.join(folder, "bookmarks.html")
        write_bookmarks(bookmarks, count)
        alone = cpu_seconds([program, "import", bookmarks], environment)
        print(f"{'strandloom':12} {alone:8.2f} CPU-s for {count:,} bookmarks", flush=True)
        environment["XDG_DATA_HOME"] = os.path.join(folder, "other")
        both = through_the_program(program, bookmarks, environment)
        print(f"{'through it':12} {both:8.2f} CPU-s, in both processes", flush=True)
        write_bookmarks(bookmarks, count // 10)
        peer = cpu_seconds(["buku", "--nostdin", "--tacit", "--import", bookmarks], environment)
        print(f"{'buku':12} {peer:8.2f} CPU-s for {count // 10:,}")
        print(f"{'':12} {peer * 10 / alone:8.1f} times ours by the bookmark")


if __name__ == "__main__":
    main()
