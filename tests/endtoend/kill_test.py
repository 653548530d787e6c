#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Kills the program in the middle of copies, again and again: a link whose capture was reported is
never lost, and the store is sound each time. Then kills commands: each has done all or nothing."""

import contextlib
import os
import pathlib
import random
import re
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import threading
import time

from accessible import Accessibility
from desktop import Desktop, Failure, Program, wait_until
from home import Home, links_in, start

MANY = 4000  # links, which are one transaction
CAPTURED = re.compile(r"Captured link: (\S+)")


def kill_round(desktop, binary, number):
    program = Program(desktop, binary, "--background")
    stop = threading.Event()

    def copy_on():
        count = 0
        while not stop.is_set():
            desktop.copy(f"https://kill.example/{number}/{count}")
            count += 1

    program.wait_for_line("Started")
    program.open_panel()
    copying = threading.Thread(target=copy_on)
    copying.start()
    program.wait_for_line(f"Captured link: https://kill.example/{number}/")
    time.sleep(random.uniform(0, 0.25))
    program.kill()
    stop.set()
    copying.join()


def check(desktop):
    log = (desktop.home / "diagnostics.log").read_text(errors="replace")
    reported = set(CAPTURED.findall(log))
    lost = reported - {*links_in(desktop.home / "data/strandloom/strandloom.sqlite")}
    if lost:
        raise Failure(f"reported but lost: {sorted(lost)[:5]}")
    return len(reported)


class KilledHome(Home):
    """One with what belongs to that which is killed."""

    def __init__(self, binary, folder, desktop, widgets):
        super().__init__(binary, folder)
        self.desktop, self.widgets = desktop, widgets
        self.many, self.backup = self.path / "many", self.path / "many.sqlite"
        self.many.write_text("".join(f"https://many.example/{n}\n" for n in range(MANY)))
        self.run("import", str(self.many), check=True)
        self.run("backup", str(self.backup), check=True)
        self.small = self.path / "small.sqlite"
        shutil.rmtree(self.store.parent)
        self.run("add", "https://old.invalid", check=True)
        self.run("backup", str(self.small), check=True)
        (self.path / "out").mkdir()
        self.out = self.path / "out/file"

    def begin(self, *arguments):
        return subprocess.Popen([self.binary, *arguments], env=self.environment,
                                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def start_anew(self, backup):
        shutil.rmtree(self.store.parent)
        self.run("restore", str(backup), check=True)

    def drafts(self):
        return [path.name for path in self.path.rglob(".strandloom-*")]


def kill_import(home):
    home.start_anew(home.small)
    yield home.begin("import", str(home.many))
    yield len(links_in(home.store)) in (1, 1 + MANY)


def kill_restore(home):
    home.start_anew(home.small)
    yield home.begin("restore", str(home.backup))
    yield len(links_in(home.store)) in (1, MANY)
    home.run("restore", str(home.backup))  # which cleans up


def kill_backup(home):
    home.start_anew(home.backup)
    shutil.copy(home.small, home.out)
    yield home.begin("backup", "--force", str(home.out))
    yield len(links_in(home.out)) in (1, MANY)
    home.run("backup", "--force", str(home.out))  # which cleans up


def kill_export(home):
    home.start_anew(home.backup)
    arguments = ("export", "--format", "json", "--hide", "--output")
    new = home.run(*arguments[:3], "--output", "-").stdout
    home.out.write_bytes(b"old")
    yield home.begin(*arguments, str(home.out))
    visible = sum(links_in(home.store).values())
    yield (home.out.read_bytes(), visible) in ((b"old", MANY), (new, MANY), (new, 0))


def kill_prune(home):
    """Links get too old, and the panel is opened for the first time."""
    home.start_anew(home.backup)
    with sqlite3.connect(home.store) as database:
        database.execute("UPDATE links SET copiedAt = copiedAt - 1000000000000000")
    database.close()
    (home.path / "strandloom/settings.ini").write_text("[General]\nautoPruneDays=7\n")
    program = start(home.desktop, home, "--background")
    second = home.desktop.start(home.binary)
    yield program.process
    second.kill()  # or it would take the place of the first
    second.wait()
    yield len(links_in(home.store)) in (0, MANY)


def kill_delete_all(home):
    home.start_anew(home.backup)
    program = start(home.desktop, home, "--background")
    program.open_panel()
    for role, name in (("push button", "Settings"), ("page tab", "Data"),
                       ("push button", "Clear All History"), ("push button", "Delete All")):
        home.widgets.act("press", role, name)
    yield program.process
    yield len(links_in(home.store)) in (0, MANY)


def kill_again_and_again(kill, home, rounds):
    """At moments all over the time that it takes, which is what it took when it was last not killed."""
    limit, killed = 0, 0
    for _ in range(rounds + 1):
        steps = kill(home)
        process = next(steps)
        begin = time.monotonic()
        if limit:
            with contextlib.suppress(subprocess.TimeoutExpired):
                process.wait(random.uniform(0, limit))
        else:  # the program does not end by itself
            wait_until(lambda: process.poll() is not None or not links_in(home.store), "its end")
        if not limit or process.poll() is not None:
            limit = time.monotonic() - begin
        killed += process.poll() is None
        process.kill()
        process.wait()
        if not next(steps):
            raise Failure(f"{kill.__name__}: neither all nor nothing")
        next(steps, None)
        if home.drafts():
            raise Failure(f"{kill.__name__} left {home.drafts()} behind")
    print(f"{kill.__name__}: {killed} of {rounds + 1} killed, in up to {limit:.3f} s")


def main(binary):
    rounds = int(os.environ.get("STRANDLOOM_KILLS", "10"))
    random.seed(rounds)
    with Desktop(tray=False) as desktop:
        for number in range(rounds):
            kill_round(desktop, binary, number)
            links = check(desktop)
        print(f"{rounds} kills, {links} links reported, none lost")
        widgets = Accessibility(desktop)
        for kill in (kill_import, kill_restore, kill_backup, kill_export, kill_prune, kill_delete_all):
            with tempfile.TemporaryDirectory(prefix="strandloom-kills-") as folder:
                kill_again_and_again(kill, KilledHome(binary, folder, desktop, widgets), rounds // 2)


if __name__ == "__main__":
    main(sys.argv[1])
