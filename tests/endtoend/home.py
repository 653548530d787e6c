# SPDX-License-Identifier: MIT
"""A user's files for the tests that drive the program to its limits, and what is in them afterwards."""

import contextlib
import os
import pathlib
import re
import shutil
import sqlite3
import subprocess

from desktop import LEAK_OPTIONS, Failure, Program, wait_until

FATAL = "Could not create ModelContainer: "


def is_sanitized(binary):
    return b"__asan_init" in pathlib.Path(binary).read_bytes()


def expect(holds, what):
    if not holds:
        raise Failure(what)


def links_in(store):
    """Which links a store holds, and which of them are visible; a `Failure` where it is not sound."""
    with contextlib.closing(sqlite3.connect(store)) as connection:
        (verdict,) = connection.execute("PRAGMA integrity_check").fetchone()
        expect(verdict == "ok", f"integrity_check of {store}: {verdict}")
        return dict(connection.execute("SELECT url, isVisible FROM links"))


def peak_memory(process):
    """The most that it has used so far, in MiB."""
    status = pathlib.Path(f"/proc/{process.pid}/status").read_text()
    return int(re.search(r"VmHWM:\s+(\d+)", status)[1]) // 1024


def main_thread_seconds(process):
    """What the main thread has used of a processor so far, however busy the machine is."""
    schedule = pathlib.Path(f"/proc/{process.pid}/task/{process.pid}/schedstat").read_text()
    return int(schedule.split()[0]) / 1e9


class Home:
    """A user's files in a folder. Commands run there without a desktop and a bus."""

    def __init__(self, binary, folder):
        self.binary = str(pathlib.Path(binary).resolve())
        self.path = pathlib.Path(folder)
        self.path.mkdir(exist_ok=True)
        self.store = self.path / "strandloom/strandloom.sqlite"
        self.files = {name: str(folder) for name in
                      ("HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME")}
        self.environment = {**self.files, "XDG_RUNTIME_DIR": str(folder), "PATH": os.environ["PATH"],
                            "QT_QPA_PLATFORM": "offscreen", "LC_ALL": "C.UTF-8",
                            "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere",
                            "LSAN_OPTIONS": LEAK_OPTIONS,
                            "http_proxy": "http://127.0.0.1:9", "https_proxy": "http://127.0.0.1:9"}

    def run(self, *arguments, extra=(), **options):
        return subprocess.run([self.binary, *arguments], env={**self.environment, **dict(extra)},
                              cwd=self.path, capture_output=True, timeout=60, **options)

    def renew(self, good):
        """The same files as in another folder."""
        shutil.rmtree(self.path, ignore_errors=True)
        shutil.copytree(good, self.path)


def start(desktop, home, *arguments, **environment):
    """The program on a desktop with the files of `home`, or None where it said that it cannot start."""
    program = Program(desktop, home.binary, *arguments, **home.files, **environment)

    def said(*texts):
        return any(text in line for line in program.lines() for text in texts)
    wait_until(lambda: said("Started", FATAL) or program.process.poll() is not None, "the start")
    if said("Started"):
        return program
    expect(said(FATAL), f"ended with {program.process.poll()}: {program.lines()}")
    desktop.run("xdotool", "windowfocus", "--sync", desktop.window("Strandloom"), "key", "Escape")
    expect(program.process.wait(10) == 1, "another exit code than 1")
    return None
