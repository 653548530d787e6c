#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""What other programs on the session bus can do to the running program."""

import os
import sys
import unittest

import dbus

from desktop import Desktop, Program, wait_until, windows
from home import is_sanitized, main_thread_seconds, peak_memory

BINARY = sys.argv.pop(1)
LINKS = "app.strandloom.Links"
MEBIBYTE = 1 << 20


class Bus(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.desktop = Desktop(tray=False)
        cls.addClassCleanup(cls.desktop.close)
        pipe = cls.desktop.home / "information"  # which nobody will write to
        os.mkfifo(pipe)
        cls.program = Program(cls.desktop, BINARY, STRANDLOOM_INFO=str(pipe))
        cls.program.wait_for_line("Started")

    def connect(self):
        return dbus.bus.BusConnection(self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"])

    def call(self, method, signature, *arguments):
        """The answer, or the name of the error."""
        try:
            return self.connect().call_blocking("app.strandloom", "/app/strandloom", LINKS, method,
                                                signature, arguments, timeout=120)
        except dbus.DBusException as error:
            return error.get_dbus_name().removeprefix("app.strandloom.Error.")

    def urls(self, part):
        return [link["url"] for link in self.program.list()[1] if part in link["url"]]

    def test_what_is_too_much_is_refused(self):
        known = "00000000-0000-4000-8000-000000000001"
        link = f'{{"url":"https://known.example","id":"{known}"}}'.encode()
        before = peak_memory(self.program.process)
        for method, signature, argument, answer in (
                ("Import", "ay", [b"[" + link + b"]"], (1, 0, 0, 0)),
                ("Add", "s", [" " * (100 * MEBIBYTE)], "Invalid"),
                ("Add", "s", ["https://large.example/" + "a" * (52 * MEBIBYTE)], "Invalid"),
                ("Add", "s", [" " * MEBIBYTE], "not a web address"),
                ("Add", "s", ["https://large.example/" + "a" * (MEBIBYTE - 22)], ""),
                ("SetTitle", "ss", [known, "t" * (50 * MEBIBYTE)], "Invalid"),
                ("SetTitle", "ss", ["no id", "title"], "Invalid"),
                ("Remove", "as", [[known, "no id"]], "Invalid"),
                ("HideExported", "as", [[known] * 1001], "Invalid"),
                ("Import", "ay", [b"[" + b"{}," * 1000 + b"{}]"], "Invalid"),
                ("Import", "ay", [b"[" + b" " * (50 * MEBIBYTE)], "Invalid"),
                ("Import", "ay", [b"[" * (4 * MEBIBYTE)], (0, 0, 0, 0)),
                ("Import", "ay", [b'{"url":"https://large.example"}'], "Invalid")):
            with self.subTest(method=method, answer=answer):
                self.assertEqual(self.call(method, signature, *argument), answer)
        print(f"{before} MiB before, at most {peak_memory(self.program.process)} MiB", file=sys.stderr)
        if not is_sanitized(BINARY):
            self.assertLess(peak_memory(self.program.process), before + 400)  # the bus hands on 100 MiB, in UTF-16
        self.assertEqual(len(self.urls("known")), 1)
        self.assertEqual([len(url) for url in self.urls("large")], [MEBIBYTE])

    def flood(self, number):
        peer = self.connect()
        for call in range(10_000):
            message = dbus.lowlevel.MethodCallMessage("app.strandloom", "/app/strandloom", LINKS,
                                                      "Add")
            message.append(f"https://flood.example/{number}/{call}", signature="s")
            peer.send_message(message)
        peer.flush()

    def test_a_flood_leaves_the_panel_to_its_user(self):
        """Once a key is sent, the program does little else before it is heard."""
        for number in range(4):
            panel = self.program.open_panel()
            self.desktop.run("xdotool", "windowfocus", "--sync", panel)
            self.flood(number)
            self.desktop.key("Escape")
            begin = main_thread_seconds(self.program.process)
            wait_until(lambda: not windows(self.desktop), "the panel to close")
            used = main_thread_seconds(self.program.process) - begin
            print(f"{used:.3f} s of the processor until the key was heard", file=sys.stderr)
            self.assertLess(used, 0.1)
        self.assertEqual(self.call("Add", "s", "https://other.example"), "")
        self.assertLess(len(self.urls("flood")), 4 * 1000, "calls nobody waited for")


if __name__ == "__main__":
    unittest.main()
