#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Fails the n-th call of each kind on the user's files while commands run, and while the program
starts, captures and keeps a setting: a file is the old or the new one and whole, no link that was
there or was reported is lost, and what could not be done is said, with the right exit code.
STRANDLOOM_FAULTS is how far n goes; without it, a sample is taken."""

import errno
import json
import os
import pathlib
import random
import sqlite3
import subprocess
import sys
import tempfile

from accessible import Accessibility
from desktop import Desktop, Failure, wait_until
from home import Home, expect, links_in, start

KINDS = {"open": ("EIO", "EACCES"), "read": ("EIO",), "write": ("ENOSPC", "EIO"), "sync": ("EIO",),
         "name": ("EIO",), "close": ("EIO",), "lock": ("ENOLCK",), "look": ("EIO", "ESTALE", "ENOMEM")}
OLD = [f"https://old.example/{n}" for n in range(20)]
NEW = "https://new.example"
EXPORTS = ["text", "markdown", "pdf", "json", "netscape"]
COMMANDS = {
    "list": ["list", "--json"],
    "add": ["add", NEW],
    "import": ["import", "links.txt"],
    "backup": ["backup", "--force", "out"],
    "restore": ["restore", "backup.sqlite"],
    "remove": ["remove", OLD[0]],
    "hide": ["export", "--format", "json", "--output", "out", "--hide"],
    **{f"export {name}": ["export", "--format", name, "--output", "out"] for name in EXPORTS},
}
UNCHANGED, OUT_OLD = set(OLD), b"an old file"
PREFERENCES = {"emailSendHour": "9", "clearAfterEmail": "false"}


def make_files(home):
    """A store of `OLD` and what the commands take."""
    (home.path / "links.txt").write_text(NEW + "\n")
    home.run("import", "-", input="\n".join(OLD).encode())
    home.run("backup", "backup.sqlite")
    (home.path / "out").write_bytes(OUT_OLD)
    lines = [f"{key}={value}\n" for key, value in PREFERENCES.items()]
    (home.path / "strandloom/settings.ini").write_text("[General]\n" + "".join(lines))


def check_command(home, name, done):
    code, links = done.returncode, links_in(home.store)
    expect(code in (0, 1, 2), f"exit code {code}")
    expect(code == 0 or done.stderr.startswith(b"strandloom: "), "no sentence")
    isPartial = code == 1 and b"damaged links are left out" in done.stderr
    hidden = {url for url, visible in links.items() if not visible}
    taken, removed = {*links} - UNCHANGED, UNCHANGED - {*links}
    isDone = {"add": taken, "import": taken, "remove": removed, "hide": hidden}.get(name, True)
    expect(isDone or code, "not done, and not said")
    expect(taken <= {NEW} and (not taken or name in ("add", "import")), f"taken: {taken}")
    expect(removed <= {OLD[0]} and (not removed or name == "remove"), f"lost: {removed}")
    expect(not hidden or (name == "hide" and (hidden == UNCHANGED or isPartial)), f"hidden: {hidden}")
    out = (home.path / "out").read_bytes()
    writes = name.startswith(("export", "hide", "backup"))
    expect(code or not writes or out != OUT_OLD, "the old file, and no error")
    expect(out == OUT_OLD or isPartial or (writes and is_whole(home, name, out)), "half a file")
    expect(name != "list" or code == 2 or isPartial or len(json.loads(done.stdout)) == len(OLD),
           "links missing from the list")


def is_whole(home, name, out):
    if name == "backup":
        return {*links_in(home.path / "out")} == UNCHANGED
    if name.endswith("pdf"):
        return out.startswith(b"%PDF") and out.rstrip().endswith(b"%%EOF")
    return all(url.encode() in out for url in OLD)


class Session:
    """The program on a desktop: it starts, captures a copy, keeps a setting, and ends."""

    def __init__(self, home):
        self.home, self.desktop = home, Desktop(tray=False)
        self.widgets = Accessibility(self.desktop)

    def run(self, fault):
        program = start(self.desktop, self.home, **fault)
        if not program:
            return self.check(False, "")
        try:
            self.use(program)
        finally:
            if program.process.poll() is None:
                program.kill()  # or the next start would be its second
        self.check(True, "\n".join(program.lines()))

    def use(self, program):
        program.open_panel()
        self.desktop.copy(NEW)
        program.wait_for_line("Captured link")
        self.widgets.act("press", "push button", "Settings")
        self.widgets.act("press", "check box", "Launch at Login")
        entry = self.home.path / "autostart/app.strandloom.desktop"
        wait_until(lambda: entry.exists() or "Failed to set" in "".join(program.lines()), entry)
        expect(program.quit() == 0, "another exit code than 0")
        expect(not entry.exists() or "Exec=" in entry.read_text(), f"{entry} is half a file")

    def lose_the_store(self):
        """What is captured while it is away is in a file in the end, which can be imported."""
        store = self.home.store
        program = start(self.desktop, self.home)
        program.open_panel()
        away = store.rename(self.home.path / "away")
        self.desktop.copy(NEW)
        program.wait_for_line(f"Captured link, only in memory: {NEW}")
        expect(program.quit() == 0, "another exit code than 0")
        (file,) = store.parent.glob("unsaved-*.json")
        expect(str(file) in "".join(program.lines()), f"{file} is not named")
        away.rename(store)
        self.home.run("import", str(file), check=True)
        expect({*links_in(store)} == UNCHANGED | {NEW}, f"links: {links_in(store)}")

    def check(self, isStarted, said):
        links = [*links_in(self.home.store)]
        for file in self.home.store.parent.glob("unsaved-*.json"):
            expect(str(file) in said, f"{file} is not named")
            links += [link["url"] for link in json.loads(file.read_text())]
        expect({*links} == UNCHANGED | ({NEW} if isStarted else set()), f"links: {links}")
        text = (self.home.store.parent / "settings.ini").read_text()
        kept = dict(line.split("=") for line in text.splitlines()[1:] if line)
        isFailed = not isStarted or "Failed to write preferences" in said
        expect(kept in ([PREFERENCES] if isFailed else []) + [
            {**PREFERENCES, "launchAtLogin": "true"}], f"settings: {kept}")


def main(binary, library):
    limit = int(os.environ.get("STRANDLOOM_FAULTS", "0"))
    random.seed(1)
    failures = count = 0
    with tempfile.TemporaryDirectory(prefix="strandloom-faults-") as folder:
        good, failed = pathlib.Path(folder) / "good", pathlib.Path(folder) / "home.failed"
        home = Home(binary, folder + "/home")
        make_files(home)
        home.path.rename(good)
        home.renew(good)
        session = Session(home)
        session.lose_the_store()
        kinds = [(kind, code) for kind, codes in KINDS.items() for code in codes]
        for name in ("session", *COMMANDS):
            for kind, code in kinds if limit else random.sample(kinds, 3):
                for number in range(1, limit + 1) if limit else [random.randint(1, 12)]:
                    home.renew(good)
                    failed.unlink(missing_ok=True)
                    fault = {"LD_PRELOAD": str(pathlib.Path(library).resolve()), "STRANDLOOM_FAULT":
                             f"{kind} {number} {getattr(errno, code)} {home.path}"}
                    stderr = b""
                    try:
                        if name == "session":
                            session.run(fault)
                        else:
                            done = home.run(*COMMANDS[name], extra=fault)
                            stderr = done.stderr
                            check_command(home, name, done)
                    except (Failure, sqlite3.Error, subprocess.TimeoutExpired) as error:
                        failures += 1
                        print(f"{name}, {kind} {number} {code}: {error} {stderr}", flush=True)
                    if not failed.exists():
                        break
                    count += 1
        session.desktop.close()
    print(f"{count} faults, {failures} failures")
    return bool(failures)


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
