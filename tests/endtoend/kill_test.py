#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Kills the program in the middle of copies, again and again: a link whose capture was reported is
never lost, and the store is sound each time."""

import os
import random
import re
import sqlite3
import sys
import threading
import time

from desktop import Desktop, Failure, Program

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


def main(binary):
    rounds = int(os.environ.get("STRANDLOOM_KILLS", "20"))
    random.seed(rounds)
    with Desktop(tray=False) as desktop:
        for number in range(rounds):
            kill_round(desktop, binary, number)
            links = check(desktop)
    print(f"{rounds} kills, {links} links reported, none lost")


if __name__ == "__main__":
    main(sys.argv[1])
