#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Drives the real program on a virtual desktop as a user does."""

import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest

import dbus

from desktop import Desktop, Program, Site, wait_until, windows

BINARY = str(pathlib.Path(sys.argv.pop(1)).resolve())
FATAL = "Could not create ModelContainer: "


class Starting(unittest.TestCase):
    def test_many_starts_leave_one_process(self):
        for environment in ({}, {"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"}):
            with self.subTest(environment), Desktop() as desktop:
                starts = [Program(desktop, BINARY, **environment) for _ in range(50)]
                wait_until(lambda: sum(s.process.poll() is None for s in starts) == 1, "one process")
                self.assertEqual({s.process.poll() for s in starts}, {None, 0})
                desktop.window("Strandloom")

    def test_second_start_without_a_bus_opens_the_panel(self):
        with Desktop() as desktop:
            desktop.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nowhere"
            program = Program(desktop, BINARY, "--background")
            program.wait_for_line("Started")
            self.assertEqual(windows(desktop), [])
            program.open_panel()
            desktop.copy("https://no-bus.example")
            program.wait_for_line("Captured link: https://no-bus.example")

    def test_a_start_that_reaches_nobody_says_so(self):
        with Desktop(tray=False) as desktop:
            deaf = dbus.bus.BusConnection(desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
            deaf.request_name("app.strandloom")
            done = subprocess.run([BINARY], env=desktop.environment, capture_output=True, timeout=30)
            self.assertEqual(done.returncode, 3)
            self.assertIn(b"does not answer", done.stderr)

    def test_a_lock_that_was_left_behind_signals_nobody(self):
        with Desktop(tray=False) as desktop:
            desktop.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nowhere"
            namesake = shutil.copy("/bin/sleep", desktop.home / "strandloom")
            stranger = desktop.start(namesake, "60")
            lock = desktop.home / "runtime/strandloom.lock"
            lock.write_text(f"{stranger.pid}\nstrandloom\n{socket.gethostname()}\n")
            done = subprocess.run([BINARY, "--quit"], env=desktop.environment, capture_output=True)
            self.assertEqual(done.returncode, 3)
            Program(desktop, BINARY, "--background").wait_for_line("Started")
            self.assertIsNone(stranger.poll())

    def test_without_a_tray_a_window_opens_unless_in_the_background(self):
        with Desktop(tray=False) as desktop:
            background = Program(desktop, BINARY, "--background")
            background.wait_for_line("Started")
            time.sleep(6)  # longer than the program waits for a tray
            self.assertEqual(windows(desktop), [])
            self.assertEqual(background.quit(), 0)
            Program(desktop, BINARY)
            desktop.window("Strandloom")

    def test_help_and_version_need_no_display(self):
        for option in ("--help", "--version"):
            done = subprocess.run([BINARY, option], capture_output=True, text=True, env={})
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertIn("trandloom", done.stdout)


class Store(unittest.TestCase):
    def test_an_unusable_store_is_said_and_left_as_it_is(self):
        def folder_in_its_place(path):
            path.mkdir()

        faults = {
            "random": lambda path: path.write_bytes(os.urandom(8192)),
            "empty": lambda path: path.write_bytes(b""),
            "folder": folder_in_its_place,
        }
        for name, make in faults.items():
            with self.subTest(name), Desktop(tray=False) as desktop:
                path = desktop.home / "data/strandloom/strandloom.sqlite"
                path.parent.mkdir(parents=True)
                make(path)
                before = path.read_bytes() if path.is_file() else None
                program = Program(desktop, BINARY)
                program.wait_for_line(FATAL)
                dialog = desktop.window("Strandloom")
                self.assertEqual(program.list(), (2, []))
                desktop.run("xdotool", "windowfocus", "--sync", dialog, "key", "Escape")
                self.assertEqual(program.process.wait(10), 1)
                self.assertEqual(path.read_bytes() if path.is_file() else None, before)

    def test_listing_makes_no_store(self):
        with Desktop(tray=False) as desktop:
            done = subprocess.run([BINARY, "list"], env=desktop.environment, capture_output=True)
            self.assertEqual(done.returncode, 1)
            self.assertFalse((desktop.home / "data").exists())


class Commands(unittest.TestCase):
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


class Capturing(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.desktop = Desktop()
        cls.addClassCleanup(cls.desktop.close)
        cls.program = Program(cls.desktop, BINARY)
        cls.program.wait_for_line("Tray icon shown")
        cls.panel = cls.program.open_panel()

    def urls(self):
        return [link["url"] for link in self.program.list()[1]]

    def test_twenty_quick_copies_are_twenty_links(self):
        expected = [f"https://quick.example/{number}" for number in range(20)]
        for url in expected:
            self.desktop.copy(url)
            time.sleep(0.02)
        self.program.wait_for_line("Captured link: " + expected[-1])
        quick = [url for url in self.urls() if "quick" in url]
        self.assertEqual(quick, expected[::-1])

    def test_the_panel_copies_and_deletes_by_keyboard(self):
        self.desktop.copy("https://keyboard.example/older")
        self.program.wait_for_line("Captured link: https://keyboard.example/older")
        self.desktop.copy("https://keyboard.example/newest")
        self.program.wait_for_line("Captured link: https://keyboard.example/newest")
        self.program.open_panel()
        self.desktop.run("xdotool", "windowfocus", "--sync", self.panel)
        self.desktop.key("Home", "Down", "ctrl+c")
        wait_until(lambda: self.desktop.clipboard() == "https://keyboard.example/older", "the copy")
        self.desktop.key("Delete")
        wait_until(lambda: "https://keyboard.example/older" not in self.urls(), "the deletion")
        self.desktop.key("Escape")
        wait_until(lambda: not windows(self.desktop), "the panel to close")

    def test_quits_cleanly_on_each_signal(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            with Desktop() as desktop:
                program = Program(desktop, BINARY, "--background")
                program.wait_for_line("Started")
                program.process.send_signal(number)
                self.assertEqual(program.process.wait(10), 0)


if __name__ == "__main__":
    unittest.main()
