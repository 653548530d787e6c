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

from desktop import Desktop, Failure, Program

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
    with sqlite3.connect(desktop.home / "data/strandloom/strandloom.sqlite") as store:
        (verdict,) = store.execute("PRAGMA integrity_check").fetchone()
        stored = {url for (url,) in store.execute("SELECT url FROM links")}
    if verdict != "ok":
        raise Failure(f"integrity_check: {verdict}")
    if reported - stored:
        raise Failure(f"reported but lost: {sorted(reported - stored)[:5]}")
    return len(reported)


class Home:
    """A user's files with a store of one link, and what belongs to a command that is killed."""

    def __init__(self, binary, folder):
        self.binary, self.path = binary, pathlib.Path(folder)
        self.store = self.path / "strandloom/strandloom.sqlite"
        self.environment = {"PATH": os.environ["PATH"], "HOME": folder, "XDG_DATA_HOME": folder,
                            "XDG_CONFIG_HOME": folder, "XDG_RUNTIME_DIR": folder,
                            "QT_QPA_PLATFORM": "offscreen", "LC_ALL": "C.UTF-8",
                            "QT_LOGGING_RULES": "strandloom.debug=true",
                            "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"}
        self.many = self.path / "many"
        self.many.write_text("".join(f"https://many.example/{n}\n" for n in range(MANY)))
        self.run("import", str(self.many))
        self.backup = self.path / "many.sqlite"
        self.run("backup", str(self.backup))
        self.small = self.path / "small.sqlite"
        self.start_anew()
        self.run("add", "https://old.invalid")
        self.run("backup", str(self.small))
        (self.path / "out").mkdir()
        self.out = self.path / "out/file"

    def run(self, *arguments):
        return subprocess.run([self.binary, *arguments], env=self.environment, check=True,
                              capture_output=True, timeout=60).stdout

    def start(self, *arguments):
        return subprocess.Popen([self.binary, *arguments], env=self.environment,
                                stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)

    def start_anew(self, backup=None):
        shutil.rmtree(self.store.parent)
        if backup:
            self.run("restore", str(backup))

    def count(self, store):
        with contextlib.closing(sqlite3.connect(store)) as database:
            (verdict,) = database.execute("PRAGMA integrity_check").fetchone()
            if verdict != "ok":
                raise Failure(f"integrity_check of {store}: {verdict}")
            return database.execute("SELECT count(*) FROM links").fetchone()[0]

    def drafts(self):
        return [path.name for path in self.path.rglob(".strandloom-*")]


def kill_import(home):
    home.start_anew(home.small)
    yield home.start("import", str(home.many))
    yield home.count(home.store) in (1, 1 + MANY)


def kill_restore(home):
    home.start_anew(home.small)
    yield home.start("restore", str(home.backup))
    yield home.count(home.store) in (1, MANY)
    home.run("restore", str(home.backup))  # which cleans up


def kill_backup(home):
    home.start_anew(home.backup)
    shutil.copy(home.small, home.out)
    yield home.start("backup", "--force", str(home.out))
    yield home.count(home.out) in (1, MANY)
    home.run("backup", "--force", str(home.out))  # which cleans up


def kill_export(home):
    home.start_anew(home.backup)
    arguments = ("export", "--format", "json", "--output")
    new = home.run(*arguments, "-")
    home.out.write_bytes(b"old")
    yield home.start(*arguments, str(home.out))
    yield home.out.read_bytes() in (b"old", new)


def kill_prune(home):
    """Links get too old, and the panel is opened for the first time."""
    home.start_anew(home.backup)
    with contextlib.closing(sqlite3.connect(home.store)) as database, database:
        database.execute("UPDATE links SET copiedAt = copiedAt - 1000000000000000")
    (home.path / "strandloom/settings.ini").write_text("[General]\nautoPruneDays=7\n")
    program = home.start("--background")
    while b"Started" not in program.stderr.readline():
        if program.poll() is not None:
            raise Failure("the program does not start")
    home.run()
    yield program
    yield home.count(home.store) in (0, MANY)


def kill_again_and_again(kill, home, rounds):
    """At moments all over the time that it takes unless it is killed, which the first time tells."""
    limit, killed = 0, 0
    for _ in range(rounds + 1):
        steps = kill(home)
        process = next(steps)
        begin = time.monotonic()
        try:
            process.wait(random.uniform(0, limit) if limit else 3)
            limit = limit or time.monotonic() - begin
        except subprocess.TimeoutExpired:
            limit, killed = limit or 0.5, killed + 1  # the program does not end by itself
            process.kill()
            process.wait()
        process.stderr.close()
        if not next(steps):
            raise Failure(f"{kill.__name__}: neither all nor nothing")
        next(steps, None)
        if home.drafts():
            raise Failure(f"{kill.__name__} left {home.drafts()} behind")
    print(f"{kill.__name__}: {killed} of {rounds} killed in time, all or nothing each time")


def main(binary):
    rounds = int(os.environ.get("STRANDLOOM_KILLS", "20"))
    random.seed(rounds)
    with Desktop(tray=False) as desktop:
        for number in range(rounds):
            kill_round(desktop, binary, number)
            links = check(desktop)
    print(f"{rounds} kills, {links} links reported, none lost")
    for kill in (kill_import, kill_restore, kill_backup, kill_export, kill_prune):
        with tempfile.TemporaryDirectory(prefix="strandloom-kills-") as folder:
            kill_again_and_again(kill, Home(binary, folder), rounds // 2)


if __name__ == "__main__":
    main(sys.argv[1])
