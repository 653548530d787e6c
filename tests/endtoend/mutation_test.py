#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Damages stores in every way that a disk, an editor or another program can, and works with them:
no crash, no hang, no file changed that was refused, no link lost by an addition, and no output much
larger than the store. STRANDLOOM_MUTATIONS is how many stores, each from its own seed."""

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

NEW = "https://new.example"
PLANTED = [
    "CREATE VIEW v AS SELECT * FROM links",
    "CREATE VIEW v AS WITH r(n) AS (SELECT 1 UNION ALL SELECT n+1 FROM r) SELECT n FROM r",
    "CREATE TRIGGER t AFTER INSERT ON links BEGIN DELETE FROM links WHERE seq < new.seq; END",
    "CREATE TRIGGER t BEFORE INSERT ON links BEGIN SELECT RAISE(IGNORE); END",
    "CREATE UNIQUE INDEX i ON links(isVisible, copiedAt / 1000000000000000)",
    "CREATE INDEX i ON links(url || zeroblob(100000000))",
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
          "CAST(x'ff00fe' AS TEXT)", "printf('%.*c', 20000000, 'x')", "zeroblob(20000000)",
          "printf('https://%.*c', 900000, 'x')", "'NaN'", "1==1"]
COLUMNS = ["seq", "id", "url", "title", "summary", "copiedAt", "isExported", "isVisible"]


def make_store(path, has_log):
    """One whose newest links are still in its log, as after a crash, or one without a log."""
    seed = path.with_name("seed")
    links = [{"url": f"https://{n}.example/{'x' * (n * 37 % 900)}", "isVisible": n % 7 > 0,
              **({"title": f"T{n}"} if n % 3 else {}), **({"summary": "S" * n} if n % 2 else {}),
              "copiedAt": f"2026-11-{1 + n % 20:02}T08:30:00.{n:06}Z"} for n in range(150)]
    path.mkdir()
    run(seed, "import", "-", stdin=json.dumps(links).encode())
    store = seed / "strandloom/strandloom.sqlite"
    connection = sqlite3.connect(store)
    connection.execute("PRAGMA wal_autocheckpoint=0")
    if has_log:
        connection.execute("UPDATE links SET title=url WHERE seq % 5 = 0")
        connection.commit()
    for suffix in ("", "-wal") if has_log else ("",):
        shutil.copy(f"{store}{suffix}", f"{path}/strandloom.sqlite{suffix}")
    connection.close()
    shutil.rmtree(seed)


def run(home, *arguments, stdin=b""):
    environment = {"PATH": os.environ["PATH"], "HOME": str(home), "XDG_DATA_HOME": str(home),
                   "XDG_RUNTIME_DIR": str(home), "LC_ALL": "C.UTF-8", "http_proxy": "http://127.0.0.1:9",
                   "https_proxy": "http://127.0.0.1:9", "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"}
    return subprocess.run([BINARY, *arguments], env=environment, input=stdin, capture_output=True,
                          timeout=60, preexec_fn=None if IS_SANITIZED else
                          lambda: resource.setrlimit(resource.RLIMIT_AS, (1 << 30, 1 << 30)))


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
            column, where = chance.choice(COLUMNS), chance.choice(("1", "seq=40", "seq%9=1", "seq<4"))
            try:
                connection.execute(f"UPDATE links SET {column}={chance.choice(VALUES)} WHERE {where}")
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


def expect(holds, what):
    if not holds:
        raise AssertionError(what)


def work_with(home):
    """What every command does to the store in `home`, and whether the store was accepted."""
    folder = home / "strandloom"
    size = sum(len(data) for data in content(folder).values())

    def checked(*arguments, codes=(0, 1, 2)):
        before, used = content(folder), resource.getrusage(resource.RUSAGE_CHILDREN)
        done = run(home, *arguments)
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
    for layout in ("compact", "window"):
        done = checked("export", "--format", "json", "--output", "-", "--layout", layout)
        expect(done.returncode == 2 or len(json.loads(done.stdout)) == len(before), layout)
    added = checked("add", NEW)
    after_code, after = listed()
    expect(code == 2 or after_code == 2 or {*before} <= {*after}, f"lost: {added.stderr}")
    expect(added.returncode or len({*after} - {*before}) == 1, f"not stored: {added.stderr}")
    return code != 2


def main():
    count = int(os.environ.get("STRANDLOOM_MUTATIONS", "60"))
    first = int(os.environ.get("STRANDLOOM_SEED", "0"))
    failures = accepted = 0
    with tempfile.TemporaryDirectory(prefix="strandloom-mutations-") as temporary:
        folder = pathlib.Path(temporary)
        for has_log in (False, True):
            make_store(folder / f"good-{has_log}", has_log)
        home = folder / "home"
        for seed in range(first, first + count):
            chance = random.Random(seed)
            shutil.rmtree(home, ignore_errors=True)
            shutil.copytree(folder / f"good-{chance.random() < 0.4}", home / "strandloom")
            try:
                mutate(home / "strandloom", chance)
                accepted += work_with(home)
            except sqlite3.DatabaseError:
                pass  # damaged too much to be changed further
            except (AssertionError, subprocess.TimeoutExpired, ValueError) as error:
                failures += 1
                print(f"seed {seed}: {error}", flush=True)
    print(f"{count} stores, {accepted} accepted, {failures} failures")
    return bool(failures)


if __name__ == "__main__":
    BINARY = str(pathlib.Path(sys.argv[1]).resolve())
    IS_SANITIZED = b"__asan_init" in pathlib.Path(BINARY).read_bytes()
    sys.exit(main())
