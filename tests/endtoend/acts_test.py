#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A user without a plan, whose acts are drawn from a seed. Whatever was done, the panel opens from the tray,
takes a key and closes. STRANDLOOM_ACTS says how many acts, STRANDLOOM_SEED which."""

import os
import pathlib
import random
import subprocess
import sys
import time
import unittest

from accessible import Accessibility
from desktop import Desktop, Program, wait_until, windows

BINARY = str(pathlib.Path(sys.argv.pop(1)).resolve())
ACTS = int(os.environ.get("STRANDLOOM_ACTS", "40"))
SEED = int(os.environ.get("STRANDLOOM_SEED", "1"))
WAYS = [("General", "Check for Updates Now"), ("Email", "Set Up Email..."), ("Excluded",),
        ("Data", "Clear All History"), ("Data", "Export Links...", "Export")]
WINDOWS = ("Strandloom", "Settings", "Export Links", "Resend API Setup", "Software Update", "Save")


class Acts(unittest.TestCase):
    def setUp(self):
        self.desktop = Desktop(size="1400x1000x24")
        self.addCleanup(self.desktop.close)
        self.desktop.start_keyring()
        self.set_scheme = self.desktop.start_portal("light")
        self.random = random.Random(SEED)
        self.done = []
        self.start("1")

    def start(self, scale):
        self.desktop.environment["QT_SCALE_FACTOR"] = scale
        self.program = Program(self.desktop, BINARY)
        self.program.wait_for_line("Tray icon shown")
        self.icon = wait_until(self.desktop.tray_icon, "the icon in the tray")
        self.widgets = Accessibility(self.desktop)

    def rescale(self):
        self.widgets.process.terminate()
        self.assertEqual(self.program.quit(), 0)
        self.start(self.random.choice(["1", "1.25", "1.5", "2"]))

    def click_icon(self):
        self.desktop.click(*self.icon)

    def escape(self):
        self.desktop.key("Escape")

    def change_scheme(self):
        self.set_scheme(self.random.choice(["dark", "light"]))

    def turn_wheel(self):
        """Over a window, or over the background, where it leads to another workspace."""
        x, y = self.random.randrange(900, 1400), self.random.randrange(30, 600)
        self.desktop.click(x, y, button=self.random.choice([4, 5]))

    def press(self):
        """Any button or tab of any window, as assistive technology does, which reaches those that a
        dialog blocks. Quitting is an end, and no act."""
        found = [(role, name) for window in WINDOWS for _, role, name, _ in self.widgets.tree(window)
                 if role in ("push button", "page tab") and name and "Quit" not in name]
        if found:
            chosen = self.random.choice(found)
            self.widgets.try_to("press", *chosen)
            return chosen

    def go(self):
        """To a screen or a dialog of the panel, as far as the way is free."""
        self.widgets.try_to("press", "push button", "Settings")
        tab, *buttons = self.random.choice(WAYS)
        self.widgets.try_to("press", "page tab", tab)
        for button in buttons:
            self.widgets.try_to("press", "push button", button)
        return tab, *buttons

    def start_again(self):
        option = self.random.choice(["--settings", "--export", "--pause", "--resume", None])
        subprocess.run([BINARY, *filter(None, [option])], env=self.desktop.environment, timeout=30)
        return option

    def waiting(self):
        """The title of the dialog that waits for its answer; None when none does. The windows that the
        user opens from the tray are dialogs too, but wait for nothing."""
        return next((name for title in ("Save", "Strandloom", "Resend API Setup")
                     for depth, role, name, _ in self.widgets.tree(title)
                     if depth == 0 and role in ("dialog", "alert")), None)

    def is_in_front(self, title):
        """On the workspace that is in view, and with the keyboard."""
        asked = subprocess.run(["xdotool", "getactivewindow"], env=self.desktop.environment,
                               capture_output=True, text=True)
        return asked.stdout.strip() in windows(self.desktop, title)

    def ask_for_the_panel(self):
        if self.random.random() < 0.5:
            subprocess.run([BINARY], env=self.desktop.environment, timeout=30)
        else:
            self.icon = wait_until(self.desktop.tray_icon, "the icon in the tray")  # it may have moved
            self.desktop.click(*self.icon)

    def answer_dialogs(self):
        """Who asks for the panel while a dialog waits gets the dialog, wherever it was left. What is
        edited in it, and each dialog of its own, takes an Escape of its own."""
        for _ in range(10):
            title = self.waiting()
            if not title:
                return
            self.ask_for_the_panel()
            wait_until(lambda: (waiting := self.waiting()) is None or self.is_in_front(waiting),
                       f"the dialog '{title}' in front, or its end", 10)
            self.desktop.key("Escape")
            time.sleep(0.5)
        self.fail(f"the dialog '{title}' does not close")

    def the_panel_opens_takes_a_key_and_closes(self):
        time.sleep(1)  # what was asked for last may still be on its way
        self.answer_dialogs()
        if windows(self.desktop):
            self.desktop.click(*wait_until(self.desktop.tray_icon, "the icon in the tray"))
            wait_until(lambda: not windows(self.desktop), "the panel to close", 10)
        self.ask_for_the_panel()
        wait_until(lambda: self.is_in_front("Strandloom"), "the panel to open", 10)
        wait_until(lambda: self.widgets.all("0 links"), "the links", 10)
        self.desktop.key("Tab")
        wait_until(lambda: any("focused" in states for _, role, _, states in
                               self.widgets.tree("Strandloom") if role == "push button"),
                   "the key to be taken", 10)
        self.desktop.key("Escape")
        wait_until(lambda: not windows(self.desktop), "the panel to close", 10)

    def test_the_panel_is_never_stuck(self):
        try:
            self.act_at_random()
        except Exception:
            print("The last acts were:", *self.done[-40:], sep="\n  ", file=sys.stderr)
            raise

    def act_at_random(self):
        acts = [(5, self.click_icon), (3, self.start_again), (4, self.go), (4, self.press),
                (2, self.escape), (3, self.turn_wheel), (1, self.change_scheme)]
        weights, choices = zip(*acts)
        for number in range(1, ACTS + 1):
            act = self.random.choices(choices, weights)[0]
            self.done.append(f"{number} {act.__name__} {act() or ''}")
            if self.program.process.poll() is not None:
                self.fail("\n".join([f"it ended at act {number}", *self.program.lines()[-10:]]))
            if number % 40 == 0:
                self.the_panel_opens_takes_a_key_and_closes()
                self.rescale()
        self.the_panel_opens_takes_a_key_and_closes()
        settings = self.desktop.home / "config/strandloom/settings.ini"
        text = settings.read_text() if settings.exists() else ""
        for key in ("autoPruneDays", "emailSendHour"):
            self.assertNotIn(key, text, "the wheel changed what it only passed")


if __name__ == "__main__":
    unittest.main()
