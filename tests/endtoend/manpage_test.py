#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Installs the program and runs the examples of its man page as they stand, in their order. The
help, the man page and the completions know the same commands and options."""

import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import unittest

from desktop import Desktop, Program, wait_until

BUILD = sys.argv.pop(1)
PACKAGING = pathlib.Path(__file__).resolve().parents[2] / "packaging"
MAN_PAGE = (PACKAGING / "strandloom.1").read_text().replace("\\-", "-")
EXAMPLES = re.findall(r"^\$ (.+)$", MAN_PAGE.split(".SH EXAMPLES")[1], re.M)
BROWSER = "#!/bin/sh\necho \"$@\" >>opened\n"
BOOKMARKS = ('<!DOCTYPE NETSCAPE-Bookmark-file-1>\n<DL><p>\n<DT><A HREF="https://lwn.net/" '
             'ADD_DATE="1600000000">Linux Weekly News</A>\n</DL><p>\n')


class ManPage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        prefix = tempfile.TemporaryDirectory(prefix="strandloom-installed-")
        cls.addClassCleanup(prefix.cleanup)
        subprocess.run(["cmake", "--install", BUILD, "--prefix", prefix.name], check=True,
                       stdout=subprocess.DEVNULL)
        cls.binary = pathlib.Path(prefix.name) / "bin/strandloom"

    def test_every_example_does_what_it_says(self):
        with Desktop() as desktop:
            desktop.start_keyring()
            folder = self.prepare(desktop)
            program = None
            for example in EXAMPLES:
                with self.subTest(example):
                    if example.endswith("&"):
                        program = Program(desktop, self.binary, *shlex.split(example)[1:-1])
                        program.wait_for_line("Tray icon shown")
                        continue
                    done = subprocess.run(["sh", "-c", example], env=desktop.environment,
                                          cwd=folder, capture_output=True, text=True, timeout=60)
                    self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
                    self.check(example, folder)
                    if example.endswith("--quit"):
                        wait_until(lambda: program.process.poll() == 0, "the program's end")
            self.assertEqual({link["url"] for link in program.list()[1]},
                             {"https://www.debian.org/doc", "https://lwn.net"})
            self.assertEqual((folder / "opened").read_text(), "https://www.debian.org/doc\n")
            self.assertIn("https://strandloom.app", (folder / "digest.html").read_text(),
                          "the installed information file is read")

    def prepare(self, desktop):
        """A folder with what a user has, and no network but a proxy that refuses."""
        folder = desktop.home / "examples"
        folder.mkdir()
        (folder / "xdg-open").write_text(BROWSER)
        (folder / "xdg-open").chmod(0o755)
        (folder / "page.html").write_text("<title>The Universal Operating System</title>")
        (folder / "bookmarks.html").write_text(BOOKMARKS)
        del desktop.environment["no_proxy"]
        desktop.environment.update(PATH=f"{folder}:{self.binary.parent}:{os.environ['PATH']}",
                                   http_proxy="http://127.0.0.1:9", https_proxy="http://127.0.0.1:9")
        return folder

    def check(self, example, folder):
        """The files that an example names are there, with something in them."""
        words = shlex.split(example)
        if "--output" in words and words[words.index("--output") + 1] != "-":
            self.assertGreater((folder / words[words.index("--output") + 1]).stat().st_size, 0)

    def test_the_bus_starts_it_when_activated_and_not_when_it_is_asked_to_end(self):
        with Desktop() as desktop:
            folder = desktop.home / "data/dbus-1/services"
            folder.mkdir(parents=True)
            service = (PACKAGING / "app.strandloom.service.in").read_text()
            (folder / "app.strandloom.service").write_text(
                service.replace("@CMAKE_INSTALL_FULL_BINDIR@", str(self.binary.parent)))
            desktop.run("dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus",
                        "/", "org.freedesktop.DBus.ReloadConfig")
            for request in "--quit", "--pause", "--resume":
                done = subprocess.run([self.binary, request], env=desktop.environment, timeout=30)
                self.assertEqual(done.returncode, 3)
            activate = ("gdbus", "call", "--session", "--dest", "app.strandloom", "--object-path",
                        "/app/strandloom", "--method", "org.freedesktop.Application.Activate",
                        "@a{sv} {}")
            desktop.run(*activate)
            desktop.window("Strandloom")

    def test_every_command_has_an_example(self):
        commands = set(re.findall(r"^\.B strandloom ([a-z]+)$", MAN_PAGE, re.M))
        self.assertLessEqual(commands, {shlex.split(example)[1] for example in EXAMPLES})

    def test_help_man_page_and_completions_know_the_same(self):
        usage = subprocess.run([self.binary, "--help"], capture_output=True, text=True, check=True).stdout
        commands = set(re.findall(r"^ +strandloom ([a-z]+)", usage, re.M))
        options = set(re.findall(r"--([a-z]+)", usage))
        self.assertEqual(commands, set(re.findall(r"^\.B strandloom ([a-z]+)$", MAN_PAGE, re.M)))
        self.assertEqual(options, set(re.findall(r"--([a-z]+)", MAN_PAGE)))
        for file in (PACKAGING / "completions").iterdir():
            with self.subTest(file.name):
                text = file.read_text()
                pattern = r"^complete .*-l ([a-z]+)" if file.suffix == ".fish" else r"--([a-z]+)"
                self.assertEqual(options, set(re.findall(pattern, text, re.M)))
                self.assertEqual({command for command in commands
                                  if not re.search(rf"\b{command}\b", text)}, set())


if __name__ == "__main__":
    unittest.main()
