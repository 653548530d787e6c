#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Fails the n-th call of each kind on the user's files while commands run, and while the program
starts, captures and keeps a setting: a file is the old or the new one and whole, no link that was
there or was reported is lost, and a command that could not do its work says so and with the right
exit code. STRANDLOOM_FAULTS is how far n goes; without it, a sample is taken."""

import errno
import json
import os
import pathlib
import random
import shutil
import sqlite3
import subprocess
import sys
import tempfile

from desktop import Desktop, Failure, Program

KINDS = {"open": ("EIO", "EACCES"), "read": ("EIO",), "write": ("ENOSPC", "EIO"), "sync": ("EIO",),
         "name": ("EIO",), "look": ("EIO", "ESTALE", "ENOMEM")}
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


def expect(holds, what):
    if not holds:
        raise Failure(what)


class Home:
    """A user's files, with a store of `OLD`, and what a command leaves of them."""

    def __init__(self, binary, library):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="strandloom-faults-"))
        self.binary, self.library = binary, library
        self.good, self.path = self.folder / "good", self.folder / "home"
        self.failed = self.folder / "home.failed"
        self.environment = {"PATH": os.environ["PATH"], "HOME": str(self.path), "LC_ALL": "C.UTF-8",
                            "XDG_DATA_HOME": str(self.path), "XDG_RUNTIME_DIR": str(self.path),
                            "XDG_CONFIG_HOME": str(self.path), "XDG_CACHE_HOME": str(self.path),
                            "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere", "no_proxy": "*",
                            "http_proxy": "http://127.0.0.1:9", "https_proxy": "http://127.0.0.1:9"}
        self.path.mkdir()
        (self.path / "links.txt").write_text(NEW + "\n")
        self.run("import", "-", stdin="\n".join(OLD).encode())
        self.run("backup", "backup.sqlite")
        (self.path / "out").write_bytes(OUT_OLD)
        self.path.rename(self.good)

    def run(self, *arguments, fault="", stdin=b""):
        extra = self.faulty(fault) if fault else {}
        return subprocess.run([self.binary, *arguments], env={**self.environment, **extra},
                              cwd=self.path, input=stdin, capture_output=True, timeout=60)

    def faulty(self, fault):
        return {"LD_PRELOAD": self.library, "STRANDLOOM_FAULT": f"{fault} {self.path}"}

    def renew(self):
        shutil.rmtree(self.path, ignore_errors=True)
        shutil.copytree(self.good, self.path)
        self.failed.unlink(missing_ok=True)

    def links(self, store="strandloom/strandloom.sqlite"):
        with sqlite3.connect(self.path / store) as connection:
            expect(connection.execute("PRAGMA integrity_check").fetchone() == ("ok",), "damaged")
            return dict(connection.execute("SELECT url, isVisible FROM links"))

    def check(self, name, done):
        code, links = done.returncode, self.links()
        expect(code in (0, 1, 2), f"exit code {code}")
        expect((code == 2) <= done.stderr.startswith(b"strandloom: "), f"no sentence {done.stderr}")
        hidden = {url for url, visible in links.items() if not visible}
        taken, removed = {*links} - UNCHANGED, UNCHANGED - {*links}
        isDone = {"add": taken, "import": taken, "remove": removed, "hide": hidden}.get(name, True)
        expect(isDone or code, f"not done, and not said: {done.stderr}")
        expect(taken <= {NEW} and (not taken or name in ("add", "import")), f"taken: {taken}")
        expect(removed <= {OLD[0]} and (not removed or name == "remove"), f"lost: {removed}")
        expect(hidden in (set(), UNCHANGED), f"hidden: {hidden}")
        out = (self.path / "out").read_bytes()
        writes = name.startswith(("export", "hide", "backup"))
        expect(code or not writes or out != OUT_OLD, "the old file, and no error")
        expect(out == OUT_OLD or (writes and self.isWhole(name, out)), "half a file")
        if name == "list" and code == 0:
            expect(len(json.loads(done.stdout)) == len(OLD), "links missing from the list")
        else:
            expect(name != "list" or code == 2, f"list ends with {code}")

    def isWhole(self, name, out):
        if name == "backup":
            return {*self.links("out")} == UNCHANGED
        if name.endswith("pdf"):
            return out.startswith(b"%PDF") and out.rstrip().endswith(b"%%EOF")
        return all(url.encode() in out for url in OLD)


def command_faults(home, name, kind, code, numbers):
    for number in numbers:
        home.renew()
        done = home.run(*COMMANDS[name], fault=f"{kind} {number} {getattr(errno, code)}")
        if not home.failed.exists():
            return
        try:
            home.check(name, done)
        except (Failure, sqlite3.Error) as error:
            raise Failure(f"{name}, {kind} {number} {code}: {error}; {done.stderr}") from error


def main(binary, library):
    limit = int(os.environ.get("STRANDLOOM_FAULTS", "0"))
    home = Home(str(pathlib.Path(binary).resolve()), str(pathlib.Path(library).resolve()))
    cases = [(name, kind, code) for name in COMMANDS for kind, codes in KINDS.items()
             for code in codes]
    failures = []
    random.seed(1)
    for name, kind, code in cases if limit else random.sample(cases, 40):
        try:
            command_faults(home, name, kind, code,
                           range(1, limit + 1) if limit else [random.randint(1, 12)])
        except Failure as failure:
            failures.append(str(failure))
            print(failure, flush=True)
    shutil.rmtree(home.folder)
    print(f"{len(failures)} failures")
    return bool(failures)


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
