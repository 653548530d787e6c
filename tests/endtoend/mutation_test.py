#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Damages stores in every way that a disk, an editor or another program can, and works with them:
no crash, no hang, no file changed that was refused, no link lost by an addition, and no output much
larger than the store. Each tenth is shown in the panel. STRANDLOOM_MUTATIONS is how many stores, each
from its own seed."""

import contextlib
import json
import os
import pathlib
import random
import resource
import shutil
import sqlite3
import subprocess
import sys
import tempfile

from desktop import Desktop, Failure, wait_until, windows
from home import Home, expect, is_sanitized, main_thread_seconds, peak_memory, start

NEW = "https://new.example"
PLANTED = [
    "CREATE VIEW v AS SELECT * FROM links",
    "CREATE VIEW v AS WITH r(n) AS (SELECT 1 UNION ALL SELECT n+1 FROM r) SELECT n FROM r",
    "CREATE TRIGGER t AFTER INSERT ON links BEGIN DELETE FROM links WHERE seq < new.seq; END",
    "CREATE TRIGGER t BEFORE INSERT ON links BEGIN SELECT RAISE(IGNORE); END",
    "CREATE UNIQUE INDEX i ON links(isVisible, copiedAt / 1000000000000000)",
    "CREATE INDEX i ON links(url || zeroblob(100000))",
    "ALTER TABLE links ADD COLUMN x DEFAULT 1",
    "ALTER TABLE links RENAME TO l; CREATE VIEW links AS SELECT seq, id, zeroblob(900000000) || url"
    " AS url, title, summary, copiedAt, isExported, isVisible FROM l",
    "DROP INDEX visibleLinks",
    "CREATE TABLE sqlitestat1(x)",
    "PRAGMA writable_schema=ON; UPDATE sqlite_master SET rootpage=3 WHERE type='index'",
    "PRAGMA writable_schema=ON; UPDATE sqlite_master SET sql='x' WHERE name='links'",
]
VALUES = ["0", "7", "-9223372036854775808", "9223372036854775807", "1e300", "0.5", "''", "x''",
          "'x'", "x'00'", "x'0123456789abcdef0123456789abcdef'", "randomblob(16)", "char(0)",
          "CAST(x'ff00fe' AS TEXT)", "'NaN'", "1==1"]
LARGE = ["printf('%.*c', 20000000, 'x')", "zeroblob(20000000)", "printf('https://%.*c', 900000, 'x')"]
COLUMNS = ["seq", "id", "url", "title", "summary", "copiedAt", "isExported", "isVisible"]


def make_store(binary, path, has_log):
    """One whose newest links are still in its log, as after a crash, or one without a log."""
    seed = Home(binary, path.with_name("seed"))
    links = [{"url": f"https://{n}.example/{'x' * (n * 37 % 900)}", "isVisible": n % 7 > 0,
              **({"title": f"T{n}"} if n % 3 else {}), **({"summary": "S" * n} if n % 2 else {}),
              "copiedAt": f"2026-11-{1 + n % 20:02}T08:30:00.{n:06}Z"} for n in range(150)]
    path.mkdir()
    seed.run("import", "-", input=json.dumps(links).encode())
    connection = sqlite3.connect(seed.store)
    connection.execute("PRAGMA wal_autocheckpoint=0")
    if has_log:
        connection.execute("UPDATE links SET title=url WHERE seq % 5 = 0")
        connection.commit()
    for suffix in ("", "-wal") if has_log else ("",):
        shutil.copy(f"{seed.store}{suffix}", f"{path}/strandloom.sqlite{suffix}")
    connection.close()
    shutil.rmtree(seed.path)


def limit_memory():
    resource.setrlimit(resource.RLIMIT_AS, (1 << 30, 1 << 30))


def overwrite(path, chance):
    data = bytearray(path.read_bytes())
    page = chance.randrange(len(data) // 4096 + 1) * 4096
    other = chance.randrange(len(data) // 4096 + 1) * 4096
    match chance.randrange(6):
        case 0:
            for _ in range(chance.choice((1, 5, 50))):
                data[chance.randrange(len(data))] ^= 1 << chance.randrange(8)
        case 1:
            data[page:page + 4096] = bytes(len(data[page:page + 4096]))
        case 2:
            data[page:page + 4096] = data[other:other + 4096]
        case 3:
            data[page:page + 12] = chance.randbytes(12)  # the page's own header
        case 4:
            begin = chance.randrange(len(data))
            data[begin:begin + 200] = chance.randbytes(200)
        case 5:
            del data[chance.randrange(len(data)):]
    path.write_bytes(data)


def change_rows(path, chance):
    with sqlite3.connect(path) as connection:
        for _ in range(chance.choice((1, 1, 3, 20))):
            column, value = chance.choice(COLUMNS), chance.choice(VALUES * 4 + LARGE)
            where = chance.choice(("1", "seq=40", "seq%9=1", "seq<4")) if value in VALUES else "seq=40"
            try:
                connection.execute(f"UPDATE links SET {column}={value} WHERE {where}")
            except sqlite3.Error:
                pass  # not every column takes every value
    connection.close()


def mutate(home, chance):
    store = home / "strandloom.sqlite"
    log = home / "strandloom.sqlite-wal"
    kind = chance.randrange(10)
    if kind < 5:
        overwrite(log if log.exists() and kind < 2 else store, chance)
    elif kind < 9:
        change_rows(store, chance)
    else:
        connection = sqlite3.connect(store)
        connection.executescript(chance.choice(PLANTED))
        connection.close()
    return kind


def content(home):
    return {path.name: path.read_bytes() for path in home.iterdir()
            if path.name not in ("store.lock", "strandloom.sqlite-shm")}


def work_with(home, layout):
    """What the commands do to the store in `home`, and whether the store was accepted."""
    folder = home.store.parent
    limit = None if is_sanitized(home.binary) else limit_memory
    size = sum(len(data) for data in content(folder).values())

    def checked(*arguments, codes=(0, 1, 2)):
        before, used = content(folder), resource.getrusage(resource.RUSAGE_CHILDREN)
        done = home.run(*arguments, preexec_fn=limit)
        used_now = resource.getrusage(resource.RUSAGE_CHILDREN)
        seconds = used_now.ru_utime + used_now.ru_stime - used.ru_utime - used.ru_stime
        what = f"{arguments}: {done.returncode} {done.stderr[:200]}"
        expect(done.returncode in codes, what)
        expect(seconds < 5, f"{seconds} s: {what}")
        expect(len(done.stdout) <= 10 * size + 1000, f"{len(done.stdout)} bytes of {size}: {what}")
        expect((done.returncode == 2) <= done.stderr.startswith(b"strandloom: "), what)
        if done.returncode == 2 or arguments[0] in ("list", "export"):
            changed = dict(content(folder).items() ^ before.items())
            expect(not changed, f"changed {[*changed]}: {what}")
        return done

    def listed():
        done = checked("list", "--json")
        return done.returncode, [link["id"] for link in json.loads(done.stdout or b"[]")]

    code, before = listed()
    expect(len(before) == len({*before}) or code, "a link twice")
    done = checked("export", "--format", "json", "--output", "-", "--layout", layout)
    expect(done.returncode == 2 or len(json.loads(done.stdout)) == len(before), layout)
    added = checked("add", NEW)
    after_code, after = listed()
    expect(code == 2 or after_code == 2 or {*before} <= {*after}, f"lost: {added.stderr}")
    expect(added.returncode or len({*after} - {*before}) == 1, f"not stored: {added.stderr}")
    return code != 2


def show(desktop, home):
    """Opens the panel and goes to its end. The information file is as bad as the store."""
    huge = home.path / "information"
    huge.touch()
    os.truncate(huge, 1 << 40)
    if not (program := start(desktop, home, STRANDLOOM_INFO=str(huge))):
        return
    panel = program.open_panel()
    for key in ("End", "Escape"):
        desktop.run("xdotool", "windowfocus", "--sync", panel, "key", key)
    wait_until(lambda: not windows(desktop), "the panel to close")
    expect(main_thread_seconds(program.process) < 5, "5 s for the panel")
    expect(is_sanitized(home.binary) or peak_memory(program.process) < 400, "too much memory")
    expect(program.quit() == 0, "a bad end")


def main(binary):
    count = int(os.environ.get("STRANDLOOM_MUTATIONS", "60"))
    first = int(os.environ.get("STRANDLOOM_SEED", "0"))
    failures = accepted = 0
    with (tempfile.TemporaryDirectory(prefix="strandloom-mutations-") as temporary,
          contextlib.closing(Desktop(tray=False)) as desktop):
        good = pathlib.Path(temporary) / "good"
        for has_log in (False, True):
            make_store(binary, good.with_name(f"good-{has_log}"), has_log)
        for seed in range(first, first + count):
            chance = random.Random(seed)
            home = Home(binary, temporary + "/home")
            shutil.copytree(good.with_name(f"good-{chance.random() < 0.4}"), home.store.parent)
            try:
                mutate(home.store.parent, chance)
                isAccepted = work_with(home, chance.choice(("compact", "window")))
                if isAccepted and seed % 10 == 0:
                    show(desktop, home)
                accepted += isAccepted
            except sqlite3.DatabaseError:
                pass  # damaged too much to be changed further
            except (Failure, subprocess.TimeoutExpired, ValueError) as error:
                failures += 1
                print(f"seed {seed}: {error}", flush=True)
            shutil.rmtree(home.path)
    print(f"{count} stores, {accepted} accepted, {failures} failures")
    return bool(failures)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
