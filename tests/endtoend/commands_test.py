#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Runs the commands as scripts do, beside the running program and without it."""

import contextlib
import fcntl
import json
import os
import pathlib
import random
import re
import resource
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import threading
import unittest

from desktop import LEAK_OPTIONS, Desktop, Program, Site, wait_until

BINARY = str(pathlib.Path(sys.argv.pop(1)).resolve())
IS_SANITIZED = b"__asan_init" in pathlib.Path(BINARY).read_bytes()

LINKS = [
    {"id": f"{n:08x}-0000-4000-8000-000000000000", "url": url, "isExported": n == 2,
     "isVisible": True, "copiedAt": f"2026-11-2{n}T08:30:00.{n:06}Z", **texts}
    for n, (url, texts) in enumerate([
        ("https://one.example/?a=1&b=%22", {"title": "A <b> & \"c\" \U0001f9f5", "summary": ""}),
        ("https://two.example/\u00e9/", {"summary": "\ufeffTwo\nlines."}),
        ("http://three.example/|x", {"title": "} ] \\\" {"}),
        ("https://four.example", {"title": "\ufeff\u202e rtl"})])]


class Home:
    """A user's files, without a desktop and without a bus."""

    def __init__(self, test):
        self.path = pathlib.Path(tempfile.mkdtemp(prefix="strandloom-commands-"))
        test.addCleanup(shutil.rmtree, self.path, ignore_errors=True)
        self.store = self.path / "strandloom/strandloom.sqlite"
        self.environment = {"PATH": os.environ["PATH"], "HOME": str(self.path), "no_proxy": "*",
                            "XDG_DATA_HOME": str(self.path), "LC_ALL": "C.UTF-8",
                            "XDG_RUNTIME_DIR": str(self.path),
                            "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere",
                            "LSAN_OPTIONS": LEAK_OPTIONS}

    def run(self, *arguments, stdin=b"", stdout_to=subprocess.PIPE, **options):
        return subprocess.run([BINARY, *arguments], env=self.environment, input=stdin,
                              stdout=stdout_to, stderr=subprocess.PIPE, timeout=300, **options)

    def list(self):
        return json.loads(self.run("list", "--json").stdout)


class Commands(unittest.TestCase):
    def setUp(self):
        self.home = Home(self)

    def check(self, code, *arguments, stdout=None, stderr="", **options):
        done = self.home.run(*arguments, **options)
        self.assertEqual(done.returncode, code, (arguments, done.stderr))
        if stdout is not None:
            self.assertEqual(done.stdout.decode(), stdout)
        self.assertIn(stderr, done.stderr.decode())
        return done

    def import_links(self, links=LINKS):
        self.check(0, "import", "-", stdin=json.dumps(links).encode())

    def test_wrong_usage(self):
        for arguments in (["add"], ["open"], ["open", "a", "b"], ["remove"], ["search"], ["import"],
                          ["backup"], ["restore"], ["export"], ["export", "--format", "json"],
                          ["export", "--format", "odt", "--output", "-"],
                          ["export", "--format", "json", "--output", "-", "--range", "someday"],
                          ["export", "--format", "pdf", "--output", "-", "--layout", "wide"],
                          ["--nonsense"], ["nonsense"], ["list", "--limit", "x"], ["list", "more"],
                          ["inspect"], ["digest", "more"], ["--pause", "--resume"]):
            self.check(2, *arguments, stdout="", stderr="Try 'strandloom --help'")
        self.check(2, "list", "\x1b[2J\a", stdout="", stderr="unexpected argument ' [2J '")

    def test_help_for_all_and_for_each(self):
        help_text = self.check(0, "--help").stdout.decode()
        self.assertTrue(all(len(line) <= 80 for line in help_text.splitlines()))
        for command in re.findall(r"^ +strandloom ([a-z]+)", help_text, re.M):
            for arguments in ([command, "--help"], [command, "--nonsense", "x", "-h"]):
                own = self.check(0, *arguments).stdout.decode()
                self.assertTrue(own.startswith(f"Usage: strandloom {command} "), own)
                self.assertIn(own.split("\n\n")[1], help_text)
        self.check(1, "add", "--", "--help", stderr="--help: not a web address")

    def test_help_and_version_need_no_display(self):
        for option in ("--help", "--version"):
            done = subprocess.run([BINARY, option], capture_output=True, text=True, env={})
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertIn("trandloom", done.stdout)

    def test_commands_load_nothing_of_a_desktop(self):
        self.import_links()
        self.home.environment["LD_DEBUG"] = "files"
        for arguments in (["list"], ["search", "one"], ["add", LINKS[0]["url"]], ["digest"],
                          ["export", "--format", "text", "--output", "-"], ["--version"]):
            with self.subTest(arguments[0]):
                loaded = self.home.run(*arguments).stderr
                self.assertIn(b"libc.so", loaded)
                self.assertNotIn(b"libQt6" if arguments == ["--version"] else b"libQt6Gui", loaded)

    def test_listing_makes_no_store(self):
        with Desktop(tray=False) as desktop:
            done = subprocess.run([BINARY, "list"], env=desktop.environment, capture_output=True)
            self.assertEqual(done.returncode, 1)
            self.assertFalse((desktop.home / "data").exists())

    def test_inspect_prints_what_can_be_read_and_names_what_cannot(self):
        page = b"<title>\xef\xbb\xbfA &amp; B</title><meta name='description' content='What it is about'>"
        site = Site({"/page": (200, {}, page)})
        self.addCleanup(site.close)
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "page.html"
            file.write_bytes(page)
            targets = [site.url("/page"), str(file), site.url("/gone"), folder + "/none",
                       site.url("/page").replace("//", "///")]
            done = subprocess.run([BINARY, "inspect", "--url", "https://file.example/x", *targets],
                                  capture_output=True, text=True, timeout=60)
        self.assertEqual(done.returncode, 1)
        pages = [json.loads(line) for line in done.stdout.splitlines()]
        self.assertEqual([page["target"] for page in pages], targets[:2])
        self.assertEqual([page["packet"]["domain"] for page in pages],
                         ["127.0.0.1", "file.example"])
        for page in pages:
            self.assertEqual((page["linkTitle"], page["summary"]), ("\ufeffA & B", "What it is about."))
        self.assertIn(targets[2] + ": Failed to fetch page", done.stderr)
        self.assertIn(targets[3], done.stderr)
        self.assertIn(targets[4] + ": The address names no host.", done.stderr)

    def test_list_and_digest_read_beside_the_running_program(self):
        with Desktop(tray=False) as desktop:
            program = Program(desktop, BINARY, "--background")
            program.wait_for_line("Started")
            self.assertEqual(program.list(), (1, []))
            program.open_panel()
            for name in ("One", "two"):
                desktop.copy(f"https://{name}.example/\u00e9")
                program.wait_for_line(f"Captured link: https://{name}.example/\u00e9")
            self.assertEqual([link["url"] for link in program.list("--search", "ONE")[1]],
                             ["https://One.example/\u00e9"])
            self.assertEqual(len(program.list("--limit", "1")[1]), 1)
            digest = desktop.run(BINARY, "digest")
            self.assertEqual(digest.count('<div class="link-card">'), 2)
            refused = subprocess.run([BINARY, "digest", "--output", "/nowhere/digest.html"],
                                     env=desktop.environment, capture_output=True, text=True)
            self.assertEqual(refused.returncode, 2)
            self.assertIn("/nowhere/digest.html", refused.stderr)

    def test_json_comes_back_as_it_was(self):
        self.import_links()
        exported = self.check(0, "export", "--format", "json", "--output", "-").stdout
        self.assertEqual(json.loads(exported), LINKS)
        self.assertEqual(sorted(self.home.list(), key=lambda link: link["id"]), LINKS)
        self.home = Home(self)
        self.check(0, "import", "-", stdin=exported)
        self.check(0, "export", "--format", "json", "--output", "-", stdout=exported.decode())
        self.check(1, "import", "--json", "-", stdin=exported, stdout='{"alreadyStored":4,'
                   '"excluded":0,"noWebAddress":0,"taken":0}\n')
        twins = [{**LINKS[0], "url": f"https://{name}.example"} for name in ("twin", "other")]
        self.import_links(twins)  # of one id, which does not take the place of any link
        self.assertEqual({link["url"] for link in self.home.list()},
                         {link["url"] for link in [*LINKS, *twins]})
        to_file = ["--output", "-", "--format"]
        for arguments in (["digest"], *(["export", *to_file, name] for name in ("text", "markdown"))):
            texts = self.check(0, *arguments).stdout.decode()
            self.assertTrue("\ufeff\u202e rtl" in texts and "\ufeffTwo" in texts, (arguments, texts))
        bookmarks = self.check(0, "export", *to_file, "netscape").stdout
        self.home = Home(self)
        self.check(0, "import", "-", stdin=bookmarks)
        self.assertIn(LINKS[3]["title"], [link.get("title") for link in self.home.list()])

    @unittest.skipUnless(shutil.which("buku"), "buku is not installed")
    def test_bookmarks_go_through_another_program(self):
        self.import_links()
        ours, theirs = self.home.path / "ours.html", self.home.path / "theirs.html"
        self.check(0, "export", "--format", "netscape", "--output", str(ours))
        for option, file in (("--import", ours), ("--export", theirs)):
            subprocess.run(["buku", "--nostdin", "--nc", "--tacit", option, str(file)], check=True,
                           env=self.home.environment, capture_output=True)
        self.home = Home(self)
        self.check(0, "import", str(theirs))
        self.assertEqual({link["url"]: link["title"] for link in self.home.list()},
                         {link["url"].removesuffix("/"): link.get("title", "two.example")
                          for link in LINKS})
        self.home = Home(self)
        self.check(0, "import", str(ours))
        self.assertEqual([link["copiedAt"][:19] for link in self.home.list()],
                         [link["copiedAt"][:19] for link in LINKS[::-1]])

    def test_export_selects_and_hides(self):
        self.import_links()
        file = self.home.path / "links.md"
        self.check(1, "export", "--format", "markdown", "--output", str(file), "--search", "zzz")
        self.check(0, "export", "--format", "text", "--output", str(file), "--range",
                   "2026-11-21..2026-11-22", "--layout", "compact", "--hide")
        text = file.read_text()
        self.assertLess(text.index("three.example/|x"), text.index("https://two.example"))
        self.assertEqual([link["id"] for link in self.home.list()],
                         [LINKS[3]["id"], LINKS[0]["id"]])
        self.check(1, "add", LINKS[1]["url"] + "/", stderr="already stored")

    def test_add_fetches_titles_and_says_what_it_refuses(self):
        site = Site({"/page": (200, {}, b"<title>A &amp; B</title>")})
        self.addCleanup(site.close)
        for refused, reason in ((site.url("/page"), "already stored"), ("ftp://x", "not a web address"),
                                ("https://a b.example", "not a web address")):
            self.check(1, "add", site.url("/page/"), refused, stderr=f"{refused}: {reason}")
        self.assertEqual([(link["url"], link["title"]) for link in self.home.list()],
                         [(site.url("/page"), "A & B")])

    def test_links_are_named_by_url_or_by_the_beginning_of_their_id(self):
        twins = [{**LINKS[0], "id": f"{begin}-1000-4000-8000-000000000000",
                  "url": f"https://{begin}.example"} for begin in ("00000000", "f0000000")]
        self.import_links([*LINKS, *twins])
        self.check(1, "remove", "0000000", "f", "f00", "https://none.example",
                   stderr=f"  {LINKS[3]['id']}  {LINKS[3]['url']}\n")
        self.assertEqual(len(self.home.list()), 6)
        self.check(0, "remove", "00000000-1", "f000", "00000003", " http://three.example/|x/ ")
        self.assertEqual({link["url"] for link in self.home.list()},
                         {LINKS[0]["url"], LINKS[1]["url"]})
        opener = self.home.path / "xdg-open"
        opener.write_text('#!/bin/sh\necho "$1" >> "$HOME/opened"\n')
        opener.chmod(0o755)
        self.home.environment["PATH"] = f"{self.home.path}:{os.environ['PATH']}"
        with sqlite3.connect(self.home.store) as store:
            store.execute("UPDATE links SET url = 'file:///etc/passwd' WHERE hex(id) LIKE '00000000%'")
        store.close()
        self.check(1, "open", "00000000")
        self.check(0, "open", "00000001")
        opened = self.home.path / "opened"
        wait_until(lambda: opened.exists() and opened.read_text(), "the browser")
        self.assertEqual(opened.read_text(), "https://two.example/%C3%A9/\n")

    def test_output_that_takes_no_more_is_a_failure(self):
        self.import_links([{"url": f"https://{n}.example"} for n in range(3000)])
        reading, closed = os.pipe()
        os.close(reading)
        self.addCleanup(os.close, closed)
        full = os.open("/dev/full", os.O_WRONLY)
        self.addCleanup(os.close, full)
        formats = ("text", "markdown", "pdf", "json", "netscape")
        for name in formats:
            self.check(2, "export", "--output", "/dev/full", "--format", name,
                       stderr="/dev/full: No space left")
        for arguments in (["list"], ["search", "e", "--json"], ["digest"], ["--help"],
                          *(["export", "--output", "-", "--format", name] for name in formats)):
            self.check(2, *arguments, stdout_to=closed, stderr="Broken pipe")
            self.check(2, *arguments, stdout_to=full, stderr="No space left")

        def small_files():
            resource.setrlimit(resource.RLIMIT_FSIZE, (20_000, 20_000))
        file = str(self.home.path / "output")
        for arguments in (["export", "--format", "json", "--output", file], ["backup", file]):
            self.check(2, *arguments, preexec_fn=small_files)
            self.assertEqual([path.name for path in self.home.path.iterdir()], ["strandloom"])

    def test_output_goes_to_pipes_and_devices(self):
        self.import_links()
        export = ("export", "--format", "json", "--output")
        expected = self.check(0, *export, "-").stdout
        with open(self.home.path / "log", "ab") as log:
            log.write(b"before\n")
            log.flush()
            self.check(0, *export, "/dev/stdout", stdout_to=log)
        self.assertEqual((self.home.path / "log").read_bytes(), b"before\n" + expected)
        pipe = self.home.path / "pipe"
        os.mkfifo(pipe)
        read = []
        reading = threading.Thread(target=lambda: read.append(pipe.read_bytes()))
        reading.start()
        self.check(0, *export, str(pipe))
        reading.join()
        self.assertEqual(read, [expected])
        self.check(2, "backup", "--force", str(pipe), stderr=f"{pipe}: not a regular file")

    def test_bookmarks_are_read_as_they_are_written(self):
        page = ('<A HREF="https://a.example/?x=1&amp;y=2" ADD_DATE="253402300799">'
                "A &lt;b&gt; &amp; &quot;c&quot;</A>\n"
                '<A HREF="https://b.example/?x=1&y=2" ADD_DATE="253402300800">'
                "B & C &no; &#x1f9f5;&amp;lt;</A>")
        self.check(0, "import", "-", stdin=page.encode())
        first, second = sorted(self.home.list(), key=lambda link: link["url"])
        self.assertEqual((first["url"], first["title"], first["copiedAt"][:19]),
                         ("https://a.example/?x=1&y=2", 'A <b> & "c"', "9999-12-31T23:59:59"))
        self.assertEqual((second["url"], second["title"]),
                         ("https://b.example/?x=1&y=2", "B & C &no; \U0001f9f5&lt;"))
        self.assertEqual(second["copiedAt"][:2], "20", "no such date, so as copied now")

    def test_import_takes_what_it_can_of_anything(self):
        mark = b"\xef\xbb\xbf"
        page = b'<!DOCTYPE x><DL><DT><A HREF="https://a.example/?x=1&amp;y=%s" ADD_DATE="%s">T%s'
        many = b"".join(b"https://m.example/%d\n" % n for n in range(100_000))
        noise = random.Random(1).randbytes(100_000)
        rows = {
            "lines": (mark + b"\n https://a.example/ \r\nnothing\nhttps://a.example\n", 1, 1, 1),
            "not UTF-8": (b"https://a.example/\xff\nhttps://b.example", 1, 0, 1),
            "random bytes": (noise, 0, 0, len([line for line in noise.split(b"\n") if line.strip()])),
            "zeros": (bytes(1_000_000), 0, 0, 1),
            "cut bookmark": (page % (b"2", b"1", b"") + b'</A><A HREF="https://b.exa', 1, 0, 1),
            "odd quotes": (page % (b"2", b'1" x="', b"") + page % (b'"3', b"1", b""), 2, 0, 0),
            "odd dates": (page % (b"1", b"-7", b"") + page % (b"2", b"9" * 40, b""), 2, 0, 0),
            "script": (b"<A HREF='javascript:alert(1)'>x</A><a href=https://a.example>y</a>", 1, 0, 1),
            "cut JSON": (b'[{"url":"https://a.example"},{"url":"https://b', 1, 0, 1),
            "other JSON": (b'[1,{"url":7},{"url":" https://a.example"},{"id":"x",'
                           b'"url":"https://b.example","copiedAt":"?","title":[]}]', 2, 0, 1),
            "JSON from elsewhere": (b'[{"url":"https://a.example/"},{"url":"https://a.example"}]', 1, 1, 0),
            "a backslash at the end": (b'[{"url":"https://a.example","title":"\\\\"},'
                                       b'{"url":"https://b.example"}]', 2, 0, 0),
            "a huge address": (b'[{"url":"https://a.example/' + b"a" * 2_000_000 + b'"},'
                               b'{"url":"https://b.example"}]', 1, 0, 1),
            "a hundred thousand": (many, 100_000, 0, 0),
        }
        for name, (content, taken, stored, invalid) in rows.items():
            with self.subTest(name):
                self.home = Home(self)
                done = self.check(0 if taken else 1, "import", "--json", "-", stdin=content)
                counts = json.loads(done.stdout)
                self.assertEqual((counts["taken"], counts["alreadyStored"]), (taken, stored))
                self.assertEqual(counts["noWebAddress"], invalid)
                for layout in ("window", "compact"):
                    exported = json.loads(self.home.run("export", "--format", "json", "--output",
                                                        "-", "--layout", layout).stdout)
                    self.assertEqual(len({link["id"] for link in exported}), taken)
                    times = [link["copiedAt"] for link in exported]
                    self.assertEqual(times, sorted(times, reverse=layout == "compact"))
        for path in ("/nowhere", "/"):
            self.check(2, "import", path, stderr=path)

    def test_import_of_a_huge_file_needs_little_memory(self):
        chunk = {"line": b"x", "bookmark": b">", "object": b"{"}
        frames = {"line": (b"https://a.example\n", b"\nhttps://b.example"),
                  "bookmark": (b'<A HREF="https://a.example">a</A><A HREF="',
                               b'">c</A><A HREF="https://b.example">b</A>'),
                  "object": (b'[{"url":"https://a.example"},{"url":"',
                             b'"},{"url":"https://b.example"}]')}
        for name, (begin, end) in frames.items():
            with self.subTest(name):
                self.home = Home(self)
                command = subprocess.Popen([BINARY, "import", "-"], env=self.home.environment,
                                           stdin=subprocess.PIPE, stdout=subprocess.PIPE)
                command.stdin.write(begin)
                for _ in range(150):
                    command.stdin.write(chunk[name] * 2_000_000)
                command.stdin.write(end)
                command.stdin.close()
                self.assertIn(b"2 taken, 1 not", command.stdout.read())
                command.stdout.close()
                _, _, usage = os.wait4(command.pid, 0)
                command.returncode = 0
                self.assertLess(usage.ru_maxrss, 600_000 if IS_SANITIZED else 100_000)


class Writing(unittest.TestCase):
    """Several who write at once."""

    def test_nothing_is_lost_with_the_program_or_without(self):
        site = Site({"/added": (200, {}, b"<title>Added</title>")})
        self.addCleanup(site.close)
        for has_program in (False, True):
            with self.subTest(has_program=has_program), Desktop(tray=False) as desktop:
                commands = []
                for writer in range(2):
                    file = desktop.home / f"links-{writer}"
                    file.write_text("".join(f"https://{writer}.example/{n}\n"
                                            for n in range(20_000)) + "https://both.example\n")
                    commands.append(subprocess.Popen([BINARY, "import", str(file)],
                                                     env=desktop.environment,
                                                     stdout=subprocess.PIPE,
                                                     stderr=subprocess.DEVNULL))
                if has_program:  # it starts while they write
                    program = Program(desktop, BINARY, "--background")
                    program.wait_for_line("Started")
                    program.open_panel()
                    desktop.copy("https://copied.example")
                    program.wait_for_line("Captured link: https://copied.example")
                desktop.run(BINARY, "add", site.url("/added"))
                taken = [int(command.communicate(timeout=120)[0].split()[0])
                         for command in commands]
                self.assertEqual([command.returncode for command in commands], [0, 0])
                self.assertEqual(sum(taken), 40_001)
                links = json.loads(desktop.run(BINARY, "list", "--json"))
                self.assertEqual(len({link["url"] for link in links}), 40_002 + has_program)
                wait_until(lambda: '"title":"Added"' in
                           desktop.run(BINARY, "search", "/added", "--json"), "the title")

    def test_a_store_in_use_by_what_cannot_be_reached_is_said(self):
        home = Home(self)
        home.run("import", "-", stdin=b"https://a.example")
        with open(home.store.parent / "store.lock", "rb") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            for arguments in (["add", "https://b.example"], ["restore", str(home.store)]):
                done = home.run(*arguments)
                self.assertEqual(done.returncode, 3, done.stderr)
        self.assertEqual(len(home.list()), 1)


class Backup(unittest.TestCase):
    def setUp(self):
        self.home = Home(self)
        self.file = self.home.path / "backup"
        self.home.run("import", "-", stdin=b"https://old.example")

    def test_a_backup_made_beside_the_program_comes_back(self):
        with Desktop(tray=False) as desktop:
            desktop.environment["XDG_DATA_HOME"] = str(self.home.path)
            program = Program(desktop, BINARY, "--background")
            program.wait_for_line("Started")
            desktop.run(BINARY, "add", "https://new.invalid")
            desktop.run(BINARY, "backup", str(self.file))
            self.assertEqual(subprocess.run([BINARY, "restore", str(self.file)], check=False,
                                            env=desktop.environment,
                                            stderr=subprocess.DEVNULL).returncode, 3)
        self.assertEqual(self.file.stat().st_mode & 0o777, 0o600)
        self.assertEqual(self.home.run("backup", str(self.file)).returncode, 1)
        self.assertEqual(self.home.run("backup", "--force", str(self.file)).returncode, 0)
        before = self.home.list()
        self.home.run("remove", "https://old.example")
        done = self.home.run("restore", str(self.file))
        self.assertEqual((done.returncode, self.home.list()), (0, before))
        kept = pathlib.Path(done.stdout.decode().split(" as ")[1].strip())
        self.assertEqual(self.home.run("restore", str(kept)).returncode, 0)
        self.assertEqual([link["url"] for link in self.home.list()], ["https://new.invalid"])

    def test_the_log_of_a_damaged_store_is_kept_and_not_played_into_another(self):
        self.home.run("backup", str(self.file))
        before = self.home.list()
        log = self.home.store.with_name(self.home.store.name + "-wal")
        with contextlib.closing(sqlite3.connect(self.home.store)) as store:
            store.execute("UPDATE links SET title = 'from the log'")
            store.commit()
            written = log.read_bytes()
        self.home.store.write_bytes(self.home.store.read_bytes()[:5000])
        log.write_bytes(written)
        done = self.home.run("restore", str(self.file))
        self.assertEqual((done.returncode, self.home.list()), (0, before), done.stderr)
        kept = done.stdout.decode().split(" as ")[1].strip()
        self.assertEqual(pathlib.Path(kept + "-wal").read_bytes(), written)

    def test_nothing_but_a_sound_store_is_restored(self):
        self.home.run("backup", str(self.file))
        sound = self.file.read_bytes()
        before = self.home.list()

        def execute(sql):
            connection = sqlite3.connect(self.file)
            connection.executescript(sql)
            connection.close()
        for damage in (lambda: self.file.write_bytes(sound[:len(sound) // 2]),
                       lambda: self.file.write_bytes(sound[:8192] + os.urandom(4096) + sound[12288:]),
                       lambda: self.file.write_bytes(b""), self.file.unlink,
                       lambda: execute("PRAGMA application_id=7"),
                       lambda: execute("PRAGMA user_version=10001")):
            self.file.write_bytes(sound)
            damage()
            done = self.home.run("restore", str(self.file))
            self.assertEqual((done.returncode, self.home.list()), (2, before), done.stderr)
        self.assertEqual([path.name for path in self.home.store.parent.iterdir()
                          if path.name not in ("store.lock", self.home.store.name)], [])


if __name__ == "__main__":
    unittest.main()
