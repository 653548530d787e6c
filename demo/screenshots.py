#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Takes the pictures of every screen for the documents: light and dark, at both common scale factors."""

import pathlib
import sys

from accessible import Accessibility
from demonstration import KEY, PAGES, copy_things, settings_tab
from desktop import Desktop, Program, Site, wait_until

SCREENS = ("panel-empty", "panel", "panel-menu", "settings-general", "settings-email", "setup",
           "settings-email-configured", "settings-excluded", "settings-data", "export-compact",
           "confirmation", "export", "window-general", "window-email", "window-excluded",
           "window-storage", "updates")


class Photographer:
    def __init__(self, desktop, folder, suffix):
        self.desktop, self.folder, self.suffix = desktop, folder, suffix

    def take(self, screen, window):
        assert screen in SCREENS, screen
        self.desktop.run("xdotool", "mousemove", "5", "700")
        self.desktop.run("sleep", "0.4")
        path = self.folder / f"{screen}-{self.suffix}.png"
        self.desktop.screenshot(path, window)
        self.desktop.run("convert", str(path), "-strip", "+dither", "-colors", "255", f"PNG8:{path}")


def photograph_panel(desktop, program, widgets, photographer, site):
    panel = desktop.window("Strandloom")
    photographer.take("panel-empty", panel)
    copy_things(desktop, program, site)
    widgets.click("Generate AI summaries for 5 links")
    program.wait_for_line("Batch summarization complete")
    x, y, width, _ = desktop.geometry(panel)
    row = x + width // 2, y + width // 6
    desktop.click(*row)  # expands it
    photographer.take("panel", panel)
    desktop.click(*row, button=3)
    photographer.take("panel-menu", "root")
    desktop.key("Escape")

    settings_tab(widgets, "General")
    photographer.take("settings-general", panel)
    widgets.click("Check for Updates Now")
    photographer.take("updates", desktop.window("Software Update.*"))
    desktop.key("Escape")
    desktop.run("sleep", "0.5")
    program.open_panel()
    settings_tab(widgets, "Email")
    photographer.take("settings-email", panel)
    widgets.click("Set Up Email...")
    photographer.take("setup", desktop.window("Resend API Setup.*"))
    widgets.type("API Key", KEY)
    widgets.type("From Email", "loom@example.org")
    widgets.click("Save")
    widgets.find("Sending from: loom@example.org")
    photographer.take("settings-email-configured", panel)
    settings_tab(widgets, "Excluded")
    for domain in ("ads.example", "intranet.example:8080"):
        widgets.type("Domain to exclude", domain)
        desktop.key("Return")
        widgets.find(f"Remove {domain}")
    photographer.take("settings-excluded", panel)
    settings_tab(widgets, "Data")
    photographer.take("settings-data", panel)
    widgets.click("Clear All History")
    widgets.find("Delete All")
    photographer.take("confirmation", "root")
    desktop.key("Escape")
    widgets.click("Export Links...")
    photographer.take("export-compact", panel)
    desktop.key("Escape")


def photograph_windows(desktop, program, widgets, photographer):
    desktop.run(program.binary, "--export")
    photographer.take("export", desktop.window("Export Links.*"))
    desktop.key("Escape")
    widgets.gone("Filter links...")
    desktop.run(program.binary, "--settings")
    window = desktop.window("Settings.*")
    for tab in ("General", "Email", "Excluded", "Storage"):
        widgets.click(tab, "page tab")
        photographer.take(f"window-{tab.lower()}", window)


def main(binary, folder):
    folder = pathlib.Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    site = Site(PAGES)
    for scale in (1, 2):
        for scheme in ("light", "dark"):
            print(f"{scheme}, {scale} times", flush=True)
            with Desktop(size=f"{1000 * scale}x{720 * scale}x24") as desktop:
                desktop.environment["QT_SCALE_FACTOR"] = str(scale)
                desktop.start_keyring()
                desktop.start_portal(scheme)
                information = pathlib.Path(__file__).parents[1] / "packaging/strandloom.ini"
                program = Program(desktop, binary, STRANDLOOM_INFO=str(information))
                program.wait_for_line(f"Colour scheme: {scheme}")
                desktop.click(*wait_until(desktop.tray_icon, "the icon in the tray"))
                photographer = Photographer(desktop, folder, f"{scheme}-{scale}x")
                widgets = Accessibility(desktop)
                photograph_panel(desktop, program, widgets, photographer, site)
                photograph_windows(desktop, program, widgets, photographer)
    site.close()


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2])
