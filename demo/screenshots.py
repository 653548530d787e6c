#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Takes pictures of every screen into a folder: light and dark at all common scale factors, and from right
to left. For the documents it takes only those that they show: screenshots.py PROGRAM docs/images --documents"""

import datetime
import json
import pathlib
import sys

from accessible import Accessibility
from demonstration import KEY, settings_tab
from desktop import Desktop, Program, wait_until

SCREENS = ("panel-empty", "panel", "panel-hover", "panel-menu", "panel-search", "panel-paused",
           "settings-general", "settings-email", "setup", "setup-error", "settings-email-configured",
           "settings-excluded", "settings-data", "export-compact", "confirmation", "export", "save",
           "window-general", "window-email", "window-excluded", "window-storage", "updates")
# Colours, scale factor, and what the program is started with.
VARIANTS = {f"{scheme}-{scale}": (scheme, scale, ()) for scale in (1, 1.25, 1.5, 1.75, 2)
            for scheme in ("light", "dark")}
VARIANTS["light-rtl"] = ("light", 1, ("-reverse",))
VARIANTS["dark-rtl"] = ("dark", 1.5, ("-reverse",))
DOCUMENTS = {"light-2": {"panel": "panel", "panel-search": "search", "export": "export"},
             "dark-2": {"settings-email-configured": "settings"}}
# What somebody copied in one week: minutes ago, address, title, summary.
LINKS = (
    (4, "https://looms.example/warping", "Warping a Rigid Heddle Loom, Step by Step",
     "How to measure, wind and tension a warp alone, with a table of yarn weights and setts."),
    (31, "https://git.example/weft/issues/212", "Crash when a pattern has no repeat · Issue #212 · weft", None),
    (58, "https://news.example/2026/rail", "Night trains return to the northern line in spring", None),
    (125, "https://recipes.example/rye", "Dark Rye Bread with a 20-Hour Sourdough",
     "A loaf of rye and spelt that rests overnight and keeps for a week."),
    (190, "https://docs.example/sqlite/wal", "Write-Ahead Logging", None),
    (1500, "https://video.example/watch?v=loom", "A four-shaft loom from plywood, in one weekend", None),
    (1720, "https://maps.example/route/4711", None, None),
    (2900, "https://library.example/item/88", "Weaving by Hand and by Loom: a Short History of Cloth", None),
    (3100, "https://shop.example/yarn", "Wool, Linen and Cotton Yarns for Weavers — by Weight and Colour", None),
    (4400, "https://blog.example/notes", "Notes on keeping notes", None),
)


class Photographer:
    """Takes the pictures in `names`, each under the name given there."""

    def __init__(self, desktop, folder, names):
        self.desktop, self.folder, self.names = desktop, folder, names

    def take(self, screen, window="root", with_pointer=False):
        assert screen in SCREENS, screen
        if screen not in self.names:
            return
        if not with_pointer:
            self.desktop.run("xdotool", "mousemove", "5", "700")
        self.desktop.run("sleep", "0.6")
        path = self.folder / f"{self.names[screen]}.png"
        self.desktop.screenshot(path, window)
        self.desktop.run("convert", str(path), "-strip", "+dither", "-colors", "255", f"PNG8:{path}")


def import_links(desktop, program):
    now = datetime.datetime.now(datetime.timezone.utc)
    links = [{"url": url, "copiedAt": (now - datetime.timedelta(minutes=ago)).isoformat(),
              **({"title": title} if title else {}), **({"summary": summary} if summary else {})}
             for ago, url, title, summary in LINKS]
    path = desktop.home / "links.json"
    path.write_text(json.dumps(links))
    desktop.run(program.binary, "import", str(path))


def photograph_list(desktop, program, widgets, photographer):
    panel = desktop.window("Strandloom")
    photographer.take("panel-empty", panel)
    import_links(desktop, program)
    x, y, width, height = wait_until(lambda: desktop.geometry(panel), "the panel")
    row = x + width // 2, y + width // 5
    desktop.click(*row)  # expands it
    photographer.take("panel", panel)
    desktop.run("xdotool", "mousemove", str(row[0]), str(y + height // 2))
    photographer.take("panel-hover", panel, with_pointer=True)
    desktop.click(*row, button=3)
    photographer.take("panel-menu")
    desktop.key("Escape")
    desktop.run("xdotool", "type", "--delay", "20", "loom")
    photographer.take("panel-search", panel)
    desktop.key("Escape")
    desktop.key("Escape")
    desktop.run(program.binary, "--pause")
    photographer.take("panel-paused", panel)
    desktop.run(program.binary, "--resume")


def photograph_settings(desktop, program, widgets, photographer):
    panel = desktop.window("Strandloom")
    settings_tab(widgets, "General")
    photographer.take("settings-general", panel)
    widgets.click("Check for Updates Now")
    photographer.take("updates", desktop.window("Software Update.*"))
    desktop.key("Escape")
    widgets.gone("Close")
    program.open_panel()
    settings_tab(widgets, "Email")
    photographer.take("settings-email", panel)
    widgets.click("Set Up Email...")
    setup = desktop.window("Resend API Setup.*")
    photographer.take("setup", setup)
    widgets.type("API Key", "key")
    widgets.type("From Email", "loom")
    desktop.key("Return")
    photographer.take("setup-error", setup)
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
    photographer.take("confirmation")
    desktop.key("Escape")
    widgets.gone("Delete All")
    widgets.click("Export Links...")
    photographer.take("export-compact", panel)
    desktop.key("Escape")


def photograph_windows(desktop, program, widgets, photographer):
    desktop.run(program.binary, "--export")
    export = desktop.window("Export Links.*")
    photographer.take("export", export)
    desktop.key("Return")
    photographer.take("save", desktop.window("Save"))
    desktop.key("Escape")
    widgets.gone("File name:")
    desktop.run("xdotool", "windowactivate", "--sync", export, "key", "Escape")
    widgets.gone("Filter links...")
    desktop.run(program.binary, "--settings")
    window = desktop.window("Settings.*")
    for tab in ("General", "Email", "Excluded", "Storage"):
        widgets.click(tab, "page tab")
        photographer.take(f"window-{tab.lower()}", window)


def photograph(binary, folder, variant, names):
    scheme, scale, arguments = VARIANTS[variant]
    print(f"{variant}", flush=True)
    with Desktop(size=f"{round(1000 * scale)}x{round(720 * scale)}x24") as desktop:
        desktop.environment["QT_SCALE_FACTOR"] = str(scale)
        desktop.start_keyring()
        desktop.start_portal(scheme)
        information = pathlib.Path(__file__).parents[1] / "packaging/strandloom.ini"
        program = Program(desktop, binary, *arguments, STRANDLOOM_INFO=str(information))
        program.wait_for_line(f"Colour scheme: {scheme}")
        desktop.click(*wait_until(desktop.tray_icon, "the icon in the tray"))
        photographer = Photographer(desktop, folder, names)
        widgets = Accessibility(desktop)
        for part in (photograph_list, photograph_settings, photograph_windows):
            part(desktop, program, widgets, photographer)


def main(binary, folder, *options):
    folder = pathlib.Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    if options == ("--documents",):
        wanted = DOCUMENTS
    else:
        wanted = {variant: {screen: f"{screen}-{variant}" for screen in SCREENS}
                  for variant in options or VARIANTS}
    for variant, names in wanted.items():
        photograph(binary, folder, variant, names)


if __name__ == "__main__":
    main(*sys.argv[1:])
