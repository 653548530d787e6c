#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""How the real program gets on with the desktop around it: starts, launchers, trays that
come and go, a pause, and what `doctor` makes of it all."""

import json
import os
import pathlib
import shutil
import signal
import socket
import sqlite3
import subprocess
import sys
import time
import unittest
import uuid

import dbus

from accessible import Accessibility
from desktop import TRAY_HOST, Desktop, Program, wait_until, windows
from wayland import start_mutter, start_sway

BINARY = str(pathlib.Path(sys.argv.pop(1)).resolve())
NO_BUS = {"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"}
FATAL = "Could not create ModelContainer: "


def ask(desktop, *options, **environment):
    """A further start with these options: its exit code."""
    return subprocess.run([BINARY, *options], env={**desktop.environment, **environment},
                          capture_output=True, timeout=30).returncode


def launcher(desktop):
    """The running program as launchers see it."""
    bus = dbus.bus.BusConnection(desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
    return dbus.Interface(bus.get_object("app.strandloom", "/app/strandloom"),
                          "org.freedesktop.Application")


def damage(path):
    """Many links, and nonsense in the last page of an index that is not read at the start."""
    with sqlite3.connect(path) as store:
        store.executemany("INSERT INTO links (id, url, copiedAt, isExported, isVisible) "
                          "VALUES (?, ?, ?, 0, 1)",
                          [(uuid.uuid4().bytes, f"https://many.example/{n}", n) for n in range(5000)])
        (root,) = store.execute("SELECT rootpage FROM sqlite_master "
                                "WHERE name = 'sqlite_autoindex_links_1'").fetchone()
    store.close()
    with open(path, "r+b") as file:
        file.seek((root - 1) * 4096 + 8)
        file.seek((int.from_bytes(file.read(4), "big") - 1) * 4096)
        file.write(b"nonsense" * 512)


class Starting(unittest.TestCase):
    def test_many_starts_leave_one_process(self):
        for environment in ({}, NO_BUS):
            with self.subTest(environment), Desktop() as desktop:
                starts = [Program(desktop, BINARY, **environment) for _ in range(50)]
                wait_until(lambda: sum(s.process.poll() is None for s in starts) == 1, "one process")
                self.assertEqual({s.process.poll() for s in starts}, {None, 0})
                desktop.window("Strandloom")

    def test_a_start_that_reaches_nobody_says_so(self):
        with Desktop(tray=False) as desktop:
            deaf = dbus.bus.BusConnection(desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
            deaf.request_name("app.strandloom")
            done = subprocess.run([BINARY], env=desktop.environment, capture_output=True, timeout=30)
            self.assertEqual(done.returncode, 3)
            self.assertIn(b"does not answer", done.stderr)

    def test_a_lock_that_was_left_behind_signals_nobody(self):
        with Desktop(tray=False) as desktop:
            desktop.environment.update(NO_BUS)
            namesake = shutil.copy("/bin/sleep", desktop.home / "strandloom")
            stranger = desktop.start(namesake, "60")
            lock = desktop.home / "runtime/strandloom.lock"
            lock.write_text(f"{stranger.pid}\nstrandloom\n{socket.gethostname()}\n")
            done = subprocess.run([BINARY, "--quit"], env=desktop.environment, capture_output=True)
            self.assertEqual(done.returncode, 3)
            Program(desktop, BINARY, "--background").wait_for_line("Started")
            self.assertIsNone(stranger.poll())

    def test_without_a_tray_a_window_opens_unless_in_the_background(self):
        with Desktop(tray=False) as desktop, Desktop(tray=False) as other:
            background = Program(desktop, BINARY, "--background")
            background.wait_for_line("Started")
            Program(other, BINARY)
            other.window("Strandloom")  # as long as this takes, the first waits for a tray too
            time.sleep(1)
            self.assertEqual(windows(desktop), [])

    def test_the_keyring_is_started_only_for_a_daily_mail(self):
        with Desktop() as desktop:
            bus = dbus.bus.BusConnection(desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
            program = Program(desktop, BINARY)
            program.open_panel()
            time.sleep(1)  # the keyring would be there by then
            self.assertFalse(bus.name_has_owner("org.freedesktop.secrets"))
            program.quit()
            settings = desktop.home / "config/strandloom/settings.ini"
            settings.parent.mkdir(parents=True, exist_ok=True)
            settings.write_text("[General]\nemailDigestEnabled=true\n")
            Program(desktop, BINARY).open_panel()
            wait_until(lambda: bus.name_has_owner("org.freedesktop.secrets"), "a keyring")

    def test_quits_cleanly_on_each_signal(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            with Desktop() as desktop:
                program = Program(desktop, BINARY, "--background")
                program.wait_for_line("Started")
                program.process.send_signal(number)
                self.assertEqual(program.process.wait(10), 0)

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

    def test_twenty_quick_copies_are_twenty_links(self):
        expected = [f"https://quick.example/{number}" for number in range(20)]
        with Desktop() as desktop:
            program = Program(desktop, BINARY)
            program.wait_for_line("Tray icon shown")
            program.open_panel()
            for url in expected:
                desktop.copy(url)
                time.sleep(0.02)
            program.wait_for_line("Captured link: " + expected[-1])
            self.assertEqual([link["url"] for link in program.list()[1]], expected[::-1])


class Activation(unittest.TestCase):
    def test_options_act_on_the_running_program(self):
        for environment in ({}, NO_BUS):
            with self.subTest(environment), Desktop() as desktop:
                desktop.environment.update(environment)
                program = Program(desktop, BINARY, "--background")
                program.wait_for_line("Started")
                for option, title in (("--settings", "Settings"), ("--export", "Export Links")):
                    self.assertEqual(ask(desktop, option), 0)
                    desktop.window(title)
                self.assertEqual(windows(desktop), [])  # and no panel
                self.assertEqual(ask(desktop), 0)
                desktop.window("Strandloom")
                self.assertEqual(ask(desktop, "--quit"), 0)
                self.assertEqual(program.process.wait(1), 0)
                for option in ("--quit", "--pause", "--resume"):
                    self.assertEqual(ask(desktop, option), 3)
                self.assertEqual(ask(desktop, "--quit", "--pause"), 2)

    def test_a_window_can_be_all_that_a_start_opens(self):
        with Desktop() as desktop:
            Program(desktop, BINARY, "--export").wait_for_line("Tray icon shown")
            desktop.window("Export Links")
            desktop.copy("https://nothing-runs.example")
            self.assertEqual((ask(desktop, "list"), windows(desktop)), (1, []))

    def test_launchers_call_the_actions(self):
        with Desktop() as desktop:
            program = Program(desktop, BINARY, "--background")
            program.wait_for_line("Started")
            application = launcher(desktop)
            application.Open(dbus.Array(signature="s"), {"activation-token": "a token"})
            desktop.window("Strandloom")

            def activate(action):
                application.ActivateAction(action, dbus.Array(signature="v"), {"": ""})
            activate("settings")
            desktop.window("Settings")
            self.assertRaisesRegex(dbus.DBusException, "no action", activate, "nonsense")
            activate("quit")
            self.assertEqual(program.process.wait(10), 0)


class Screens(unittest.TestCase):
    def test_an_open_dialog_comes_first_and_is_in_nobodys_way(self):
        with Desktop() as desktop:
            desktop.start_keyring()
            program = Program(desktop, BINARY)
            program.wait_for_line("Tray icon shown")
            icon = wait_until(desktop.tray_icon, "the icon")
            self.assertEqual(ask(desktop, "--export"), 0)
            other = desktop.window("Export Links")
            desktop.click(*icon)
            panel = desktop.window("Strandloom")
            widgets = Accessibility(desktop)
            for role, name in (("push button", "Settings"), ("page tab", "Email"),
                               ("push button", "Set Up Email...")):
                widgets.act("press", role, name)
            sheet = desktop.window("Resend API Setup")

            def is_open(*expected):
                return [windows(desktop, title) for title in
                        ("Resend API Setup", "Strandloom", "Settings")] == list(expected)
            for act in (lambda: desktop.click(*icon), lambda: ask(desktop),
                        lambda: ask(desktop, "--settings")):
                act()
                time.sleep(0.3)
                self.assertTrue(is_open([sheet], [panel], []))
            desktop.run("xdotool", "windowactivate", "--sync", other)  # as to look up the key
            wait_until(lambda: is_open([sheet], [], []), "the panel to go out of the way")
            desktop.click(*icon)
            wait_until(lambda: desktop.run("xdotool", "getactivewindow").strip() == sheet, "the sheet")
            self.assertTrue(is_open([sheet], [], []))
            desktop.key("Escape")
            wait_until(lambda: is_open([], [panel], []), "the panel to come back")
            widgets.find("Set Up Email...")

    def test_light_and_dark_change_live(self):
        with Desktop() as desktop:
            set_scheme = desktop.start_portal("light")
            program = Program(desktop, BINARY)
            panel = program.open_panel()

            def brightness():
                return float(desktop.run("convert", f"x:{panel}", "-format", "%[fx:mean]", "info:"))
            for scheme, is_right in (("dark", lambda: brightness() < 0.4),
                                     ("light", lambda: brightness() > 0.8)) * 2:
                set_scheme(scheme)
                wait_until(is_right, scheme, 20)


class StatusNotifierTray:
    """A tray host that a test starts and ends."""

    def __init__(self, desktop):
        self.log = desktop.home / "tray.log"
        with open(self.log, "w") as log:
            self.process = subprocess.Popen(["/usr/bin/python3", TRAY_HOST], env=desktop.environment,
                                            stdin=subprocess.PIPE, stdout=log, text=True)
        desktop.processes.append(self.process)
        desktop.wait_for_bus_name("org.kde.StatusNotifierWatcher")

    def order(self, what):
        self.process.stdin.write(what + "\n")
        self.process.stdin.flush()

    def wait_for(self, tool_tip):
        """Of the icon that has come or changed last."""
        wait_until(lambda: self.log.read_text().splitlines()[-1:] == [tool_tip], tool_tip, 20)

    def end(self):
        self.process.kill()
        self.process.wait()


class Tray(unittest.TestCase):
    def test_icon_follows_a_host_that_is_late_and_comes_again(self):
        with Desktop(tray=False) as desktop:
            program = Program(desktop, BINARY, "--background")
            program.wait_for_line("Started")
            for is_open in (True, False, True):
                tray = StatusNotifierTray(desktop)
                tray.order("host")
                tray.wait_for("Strandloom")
                tray.order("click")
                wait_until(lambda: bool(windows(desktop)) == is_open, f"open: {is_open}")
                tray.end()  # also while the panel is open
            self.assertEqual(ask(desktop), 0)
            desktop.window("Strandloom")
            self.assertEqual(program.quit(), 0)

    def test_icon_follows_an_embedding_tray_that_is_late_and_comes_again(self):
        with Desktop(tray=False) as desktop:
            program = Program(desktop, BINARY, "--background")
            program.wait_for_line("Started")
            for _ in range(2):
                tray = desktop.start_tray()
                wait_until(lambda: desktop.tray_icon(), "the icon")
                place = desktop.tray_icon()
                desktop.click(*place)
                desktop.window("Strandloom")
                desktop.click(*place)
                wait_until(lambda: not windows(desktop), "the panel to close")
                tray.kill()
                wait_until(lambda: not desktop.tray_icon(), "no icon")
            self.assertEqual(ask(desktop), 0)
            desktop.window("Strandloom")
            self.assertEqual(program.quit(), 0)


class Pause(unittest.TestCase):
    def test_nothing_copied_in_a_pause_is_captured(self):
        with Desktop(tray=False) as desktop:
            program = Program(desktop, BINARY, "--background")
            tray = StatusNotifierTray(desktop)
            tray.order("host")
            tray.wait_for("Strandloom")
            self.assertEqual(ask(desktop, "--pause"), 0)  # before the first opening
            program.open_panel()
            for number in range(2):
                tray.wait_for("Strandloom (capturing is paused)")
                desktop.copy(f"https://paused.example/{number}")
                self.assertEqual(ask(desktop, "--resume"), 0)
                tray.wait_for("Strandloom")
                desktop.copy(f"https://resumed.example/{number}")
                program.wait_for_line(f"Captured link: https://resumed.example/{number}")
                self.assertEqual(ask(desktop, "--pause"), 0)
            self.assertEqual([link["url"] for link in program.list()[1]],
                             ["https://resumed.example/1", "https://resumed.example/0"])


class Wayland(unittest.TestCase):
    def start(self, desktop):
        """The program with its panel open, which may come to the front."""
        desktop.environment["QT_QPA_PLATFORM"] = "wayland"
        program = Program(desktop, BINARY, "--background", WAYLAND_DEBUG="1")
        program.wait_for_line("Started")
        self.assertEqual(ask(desktop, XDG_ACTIVATION_TOKEN="a token"), 0)
        program.wait_for_line('activate("a token", ')
        return program

    def copies_are_links(self, desktop, program):
        """Copies of a Wayland program, and one more right after a pause."""
        def copy(url):
            subprocess.run(["wl-copy", url], env=desktop.environment, check=True, timeout=10)
        urls = [f"https://quick.example/{number}" for number in range(5)]
        for url in urls:
            copy(url)
            program.wait_for_line("Captured link: " + url)
        self.assertEqual(ask(desktop, "--pause"), 0)
        copy("https://paused.example")
        self.assertEqual(ask(desktop, "--resume"), 0)
        urls.append("https://resumed.example")
        copy(urls[-1])
        program.wait_for_line("Captured link: " + urls[-1])
        self.assertEqual([link["url"] for link in program.list()[1]], urls[::-1])

    def what_the_compositor_keeps_is_no_copy(self, desktop, program):
        """It announces the copy of a program that ends again, which is told by its types alone."""
        kept = "https://kept.example"

        def holds_kept():
            return desktop.clipboard() == kept  # as an X11 program, which needs no keyboard
        self.assertEqual(ask(desktop, "--pause"), 0)
        copying = subprocess.Popen(["wl-copy", "--foreground", kept], env=desktop.environment)
        wait_until(holds_kept, "the copy")
        self.assertEqual(ask(desktop, "--resume"), 0)
        copying.terminate()
        copying.wait()
        wait_until(holds_kept, "what is kept")
        subprocess.run(["wl-copy", "https://last.example"], env=desktop.environment, check=True,
                       timeout=10)
        program.wait_for_line("Captured link: https://last.example")
        self.assertNotIn(kept, [link["url"] for link in program.list()[1]])

    def test_sway(self):
        with Desktop(tray=False) as desktop:
            start_sway(desktop)
            self.copies_are_links(desktop, self.start(desktop))
            widgets = Accessibility(desktop)
            widgets.act("focus", "list item", "https://quick.example/4, ")
            widgets.act("press", "push button", "Copy URL")
            wait_until(lambda: desktop.run("wl-paste", "--no-newline") ==
                       "https://quick.example/4", "the panel's copy")

    @unittest.skipUnless(shutil.which("mutter"), "mutter is not installed")
    def test_mutter(self):
        with Desktop(tray=False) as desktop:
            start_mutter(desktop)
            program = self.start(desktop)
            # A program that copies while the keyboard passes to the panel is refused.
            wait_until(lambda: any("wl_keyboard@" in line and ".enter(" in line
                                   for line in program.lines()), "the keyboard")
            self.copies_are_links(desktop, program)
            self.what_the_compositor_keeps_is_no_copy(desktop, program)
            report = subprocess.run([BINARY, "doctor"], env=desktop.environment, text=True,
                                    capture_output=True).stdout
            self.assertIn("the compositor offers no data control but shares all copies", report)


class Doctor(unittest.TestCase):
    def problems(self, desktop):
        """What `doctor` finds, after a look at what it says in both forms."""
        text, report = (subprocess.run([BINARY, "doctor", *options], env=desktop.environment,
                                       capture_output=True, text=True, timeout=7)
                        for options in ([], ["--json"]))
        answer = json.loads(report.stdout)
        problems = {check["name"]: check["text"] for check in answer["checks"]
                    if not check["isWell"]}
        self.assertEqual(text.stdout.splitlines(),
                         [f"{'ok     ' if check['isWell'] else 'problem'}  {check['name']}: "
                          f"{check['text']}" for check in answer["checks"]])
        self.assertEqual({text.returncode, report.returncode}, {1 if problems else 0})
        self.assertEqual(answer["isWell"], not problems)
        return problems

    def test_x11(self):
        with Desktop() as desktop:
            desktop.start_keyring()
            wait_until(lambda: not self.problems(desktop), "all well")
            desktop.environment.update(NO_BUS)
            self.assertEqual(list(self.problems(desktop)), ["secret service"])
            del desktop.environment["DISPLAY"]
            self.assertEqual(list(self.problems(desktop)), ["clipboard", "tray", "secret service"])
            self.assertFalse((desktop.home / "data/strandloom").exists())

    def test_sway(self):
        with Desktop(tray=False) as desktop:
            start_sway(desktop)
            desktop.start_keyring()
            self.assertEqual(list(self.problems(desktop)), ["tray"])
            StatusNotifierTray(desktop).order("host")
            wait_until(lambda: not self.problems(desktop), "all well")

    def test_services_that_hang(self):
        with Desktop() as desktop:
            bus = dbus.bus.BusConnection(desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
            for name in ("org.freedesktop.secrets", "org.kde.StatusNotifierWatcher"):
                bus.request_name(name)  # and never answers a call
            self.assertEqual(self.problems(desktop), {"secret service": "It does not answer."})

    def test_a_damaged_store(self):
        with Desktop() as desktop:
            program = Program(desktop, BINARY, "--background")
            program.wait_for_line("Started")
            program.quit()
            damage(desktop.home / "data/strandloom/strandloom.sqlite")
            self.assertIn("The store is damaged", self.problems(desktop)["store"])


if __name__ == "__main__":
    unittest.main()
