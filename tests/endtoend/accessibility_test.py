#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""What a screen reader is told of every screen, and the way through them by keyboard alone."""

import pathlib
import sys
import unittest

from accessible import Accessibility
from desktop import Desktop, MailApi, Program, Site, wait_until

BINARY = str(pathlib.Path(sys.argv.pop(1)).resolve())
PAGES = {"/one": (200, {}, b"<title>First Page</title>"),
         "/two": (200, {}, b"<title>Second Page</title>")}


def spoken(widgets, window):
    """What can be told of a window, in its order: role and name of all but the mere containers."""
    silent = ("filler", "layered pane", "panel", "frame", "dialog", "page tab list", "scroll bar")
    return [f"{role}: {name}" for _, role, name, _ in widgets.tree(window)
            if role not in silent and (name or role != "label")]


def settings_screen(*content):
    return ["push button: Back", "label: Settings", "page tab: General", "page tab: Email",
            "page tab: Excluded", "page tab: Data", *content]


class Screens(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.desktop = Desktop()
        self.addCleanup(self.desktop.close)
        self.desktop.start_keyring()
        self.api = MailApi()
        self.addCleanup(self.api.close)
        information = self.desktop.home / "strandloom.ini"
        information.write_text(f"MailAPI=http://127.0.0.1:{self.api.server.server_port}\n")
        self.program = Program(self.desktop, BINARY, STRANDLOOM_INFO=str(information))
        self.program.wait_for_line("Tray icon shown")
        self.panel = self.program.open_panel()
        self.widgets = Accessibility(self.desktop)

    def expect(self, window, content):
        try:
            wait_until(lambda: spoken(self.widgets, window) == content, window, 5)
        finally:
            self.assertEqual(spoken(self.widgets, window), content)

    def focused(self):
        """Role and name of the panel's widget with the keyboard. A chosen tab always says that it has it."""
        found = [f"{role}: {name}" for _, role, name, states in self.widgets.tree("Strandloom")
                 if "focused" in states and role not in ("filler", "page tab list")]
        return min(found, key=lambda text: text.startswith("page tab"), default=None)

    def tab_to(self, target):
        for _ in range(20):
            if self.focused() == target:
                return
            before = self.focused()
            self.desktop.key("Tab")
            wait_until(lambda: self.focused() not in (None, before), f"the focus to leave {before}", 5)
        self.fail(f"no way to {target}")

    def test_every_screen_is_told(self):
        self.widgets.find("0 links")
        self.expect("Strandloom", [
            "label: Strandloom", "label: 0 today", "label: No Links Yet",
            "label: Copy a URL to get started", "label: 0 links",
            "push button: All links have summaries", "push button: Settings",
            "push button: Quit Strandloom"])
        self.widgets.click("Settings", "push button")
        self.expect("Strandloom", settings_screen(
            "check box: Launch at Login", "label: Updates",
            "check box: Automatically install updates", "push button: Check for Updates Now",
            "label: Strandloom runs in your menu bar and captures URLs you copy."))
        self.widgets.click("Email", "page tab")
        self.expect("Strandloom", settings_screen(
            "label: Email Setup Required",
            "label: To send emails, you'll need a free Resend API key. This keeps your data "
            "private - emails are sent directly from your Mac.",
            "push button: Set Up Email...",
            "label: Send your captured links to your inbox with AI summaries.",
            "check box: Enable Daily Email Digest", "label: Send To", "text: Send To",
            "label: Send Time", "label: Send at", "combo box: Send at",
            "check box: Clear links after sending", "label: 0 links", "push button: Send Now"))
        self.widgets.click("Excluded", "page tab")
        self.expect("Strandloom", settings_screen(
            "label: URLs from these domains won't be captured.", "text: Domain to exclude",
            "push button: Add", "label: No excluded domains"))
        self.widgets.click("Data", "page tab")
        self.expect("Strandloom", settings_screen(
            "label: Stored Links: 0", "label: Auto-delete after", "combo box: Auto-delete after",
            "push button: Export Links...", "push button: Clear All History",
            "label: Clearing history cannot be undone."))
        self.widgets.click("Export Links...")
        self.expect("Strandloom", settings_screen(
            "label: Date Range", "combo box: Date Range", "text: Search links...",
            "label: Format", "combo box: Format", "label: Links to export: 0",
            "check box: Clear from list after export", "push button: Cancel",
            "push button: Export"))
        self.desktop.key("Escape")
        self.desktop.run(BINARY, "--export")
        self.expect("Export Links", [
            "label: Export Links", "label: Date Range", "combo box: Date Range",
            "text: Filter links...", "label: Format", "combo box: Format",
            "label: 0 links to export", "check box: Clear from list after export",
            "push button: Cancel", "push button: Export"])

    def test_the_keyboard_reaches_everything(self):
        site = Site(PAGES)
        self.addCleanup(site.close)
        for path, title in (("/one", "First Page"), ("/two", "Second Page")):
            self.desktop.copy(site.url(path))
            self.program.wait_for_line(f"Fetched title: {title}")
        self.desktop.key("Escape")
        wait_until(lambda: not self.widgets.all("2 links"), "the panel to close")
        self.program.open_panel()
        wait_until(lambda: self.focused() == "list: Links", "the list to have the keyboard")
        self.desktop.key("Down", "Down", "ctrl+c")
        wait_until(lambda: self.desktop.clipboard() == site.url("/one"), "the address to be copied")
        self.desktop.key("Delete")
        wait_until(lambda: [link["url"] for link in self.program.list()[1]] == [site.url("/two")],
                   "the link to be deleted")
        self.tab_to("push button: Generate AI summaries for 1 links")
        self.desktop.key("space")
        self.program.wait_for_line("Batch summarization complete")
        self.tab_to("push button: Settings")
        self.desktop.key("space")
        self.tab_to("page tab: General")
        self.tab_to("check box: Launch at Login")
        self.desktop.key("space")
        wait_until((self.desktop.home / "config/autostart/app.strandloom.desktop").exists,
                   "the login item")
        self.mail_by_keyboard()
        self.tab_to("push button: Back")
        self.tab_to("page tab: Email")
        self.desktop.key("Right")
        self.tab_to("text: Domain to exclude")
        self.desktop.run("xdotool", "type", "a.example")
        self.desktop.key("Return")
        self.widgets.find("Remove a.example")
        self.tab_to("push button: Remove a.example")
        self.desktop.key("space")
        self.widgets.gone("Remove a.example")
        self.export_by_keyboard()
        self.tab_to("push button: Back")
        self.desktop.key("space")
        self.widgets.find("1 links")
        self.tab_to("push button: Quit Strandloom")
        self.desktop.key("space")
        self.assertEqual(self.program.process.wait(10), 0)

    def mail_by_keyboard(self):
        self.tab_to("push button: Back")
        self.tab_to("page tab: General")
        self.desktop.key("Right")
        self.tab_to("push button: Set Up Email...")
        self.desktop.key("space")
        self.desktop.window("Resend API Setup.*")
        self.widgets.find("API Key", "password text")
        self.desktop.run("xdotool", "type", "re_keyboard_0123456789")
        self.desktop.key("Tab")
        self.desktop.run("xdotool", "type", "loom@example.org")
        self.desktop.key("Return")
        self.widgets.find("Sending from: loom@example.org")
        self.tab_to("text: Send To")
        self.desktop.run("xdotool", "type", "reader@example.org")
        self.tab_to("push button: Send Now")
        self.desktop.key("space")
        self.widgets.find("Email sent successfully!")
        self.assertEqual(self.api.received[0][2]["to"], ["reader@example.org"])

    def export_by_keyboard(self):
        self.tab_to("push button: Back")
        self.tab_to("page tab: Excluded")
        self.desktop.key("Right")
        self.tab_to("push button: Export Links...")
        self.desktop.key("space")
        self.tab_to("push button: Export")
        self.desktop.key("space")
        self.desktop.window("Save.*")
        path = self.desktop.home / "links.md"
        self.desktop.key("ctrl+a")
        self.desktop.run("xdotool", "type", str(path))
        self.desktop.key("Return")
        wait_until(path.exists, path)
        self.widgets.find("Stored Links: 1")


if __name__ == "__main__":
    unittest.main()
