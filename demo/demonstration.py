#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A scripted user's first week: starts Strandloom on a virtual desktop, opens the panel from the tray, copies
this and that, sets everything up, mails, exports, and comes back. Fails when an expectation does not
hold."""

import datetime
import pathlib
import sqlite3
import subprocess
import sys

from accessible import Accessibility
from desktop import Desktop, Failure, MailApi, Program, Site, wait_until

KEY = "re_demonstration_0123456789"

PAGES = {
    "/plain": (200, {"Content-Type": "text/html"},
               b"<html><head><title>Weaving by Hand &amp; by Loom</title></head></html>"),
    "/slash/": (200, {}, b"<title>Not asked for: the slash is dropped</title>"),
    "/slash": (200, {}, b"<TITLE>\n  A Trailing Slash\n</TITLE>"),
    "/latin": (200, {}, "<title>Caf\u00e9 cr\u00e8me \u00e0 Z\u00fcrich</title>".encode("latin-1")),
    "/gone": (404, {}, b"<title>404: not a title</title>"),
    "/shared": (200, {}, b'<title> </title><meta property="og:title" content="Only for Sharing">'
                b'<meta name="description" content="A page that has nothing to say for itself, but a '
                b'lot to those it is shared with. It says so in more than one sentence.">'),
}


def expect(condition, what):
    print(("  ok: " if condition else "  FAILED: ") + what, flush=True)
    if not condition:
        raise Failure(what)


def copy_things(desktop, program, site):
    print("Copying.", flush=True)
    desktop.copy(f"  {site.url('/plain')}\n")
    program.wait_for_line("Fetched title: Weaving by Hand & by Loom")
    desktop.copy(site.url("/slash/"))
    program.wait_for_line("Fetched title: A Trailing Slash")
    desktop.copy(site.url("/slash"))
    program.wait_for_line("Skipping rapid duplicate URL: " + site.url("/slash"))
    desktop.copy(site.url("/plain"))
    program.wait_for_line("Skipping existing URL: " + site.url("/plain"))
    desktop.copy("ftp://files.example/archive.tar")
    desktop.copy("strandloom")
    desktop.copy(site.url("/latin"))
    program.wait_for_line("Fetched title: Caf\u00e9 cr\u00e8me \u00e0 Z\u00fcrich")
    desktop.copy(site.url("/gone"))
    program.wait_for_line("Captured link: " + site.url("/gone"))
    desktop.copy(site.url("/shared"))
    program.wait_for_line("Fetched title: Only for Sharing")


def check_list(program, site):
    code, links = program.list()
    expect(code == 0, "the list has links")
    expected = [("/shared", "Only for Sharing"), ("/gone", None),
                ("/latin", "Caf\u00e9 cr\u00e8me \u00e0 Z\u00fcrich"), ("/slash", "A Trailing Slash"),
                ("/plain", "Weaving by Hand & by Loom")]
    found = [(link["url"], link.get("title")) for link in links]
    expect(found == [(site.url(path), title) for path, title in expected],
           "five links, newest first, with their titles")


def summarize(desktop, program, widgets, panel, output, site):
    print("Pressing the summarise button.", flush=True)
    widgets.click("Generate AI summaries for 5 links")
    program.wait_for_line("Generated summary for")
    desktop.screenshot(output / "panel-summarizing.png", panel)
    program.wait_for_line("Batch summarization complete: 5 links processed")
    expect(sum("Extraction failed for " + site.url("/gone") in line for line in program.lines()) == 1,
           "the page that is gone is reported once")
    summaries = {link["url"]: link.get("summary") for link in program.list()[1]}
    expect(summaries == {
        site.url("/shared"): "A page that has nothing to say for itself, but a lot to those it is "
                             "shared with. It says so in more than one sentence.",
        site.url("/gone"): None,
        site.url("/latin"): "Caf\u00e9 cr\u00e8me \u00e0 Z\u00fcrich - a webpage on 127.0.0.1.",
        site.url("/slash"): "A Trailing Slash - a webpage on 127.0.0.1.",
        site.url("/plain"): "Weaving by Hand & by Loom - a webpage on 127.0.0.1.",
    }, "every page that answers has its summary")
    x, y, _, _ = desktop.geometry(panel)
    desktop.click(x + 100, y + 60)
    desktop.run("sleep", "0.4")  # the row expands in 0.2 s


def settings_tab(widgets, tab):
    if not widgets.all("Back"):
        widgets.click("Settings", "push button")
    widgets.click(tab, "page tab")


def exclude_a_domain(desktop, program, widgets, output, panel):
    print("Excluding a domain in the settings.", flush=True)
    settings_tab(widgets, "Excluded")
    widgets.type("Domain to exclude", " HTTPS://Excluded.Example/path?query ")
    desktop.key("Return")
    widgets.find("Remove excluded.example")
    desktop.copy("https://www.excluded.example/secret")
    program.wait_for_line("Skipping excluded domain: https://www.excluded.example/secret")
    desktop.screenshot(output / "settings-excluded.png", panel)


def mail_by_hand(desktop, program, widgets, api, output, panel):
    print("Setting up e-mail, then sending the digest at once.", flush=True)
    settings_tab(widgets, "Email")
    widgets.click("Set Up Email...")
    widgets.type("API Key", "re_demo")
    widgets.type("From Email", "loom@example.org")
    widgets.click("Save")
    widgets.find("API key is too short")
    widgets.type("API Key", KEY)
    desktop.screenshot(output / "setup.png", desktop.window("Resend API Setup.*"))
    widgets.click("Save")
    widgets.find("Sending from: loom@example.org")
    widgets.type("Send To", "reader@example.org")
    widgets.click("Send Now")
    widgets.find("Email sent successfully!")
    desktop.screenshot(output / "settings-email.png", panel)
    (path, headers, mail), = api.received
    print(f"  {path}: {mail['from']} -> {mail['to'][0]}: {mail['subject']}", flush=True)
    expect(path == "/emails" and headers["Authorization"] == f"Bearer {KEY}",
           "the mail went to the provider with the key")
    expect(mail["html"].count('<div class="link-card">') == 5, "the digest holds five links")
    expect(len(program.list()[1]) == 5, "the links are still in the list")


def save_as(desktop, path):
    """Answers the save dialog."""
    desktop.window("Save.*")
    desktop.run("xdotool", "key", "--clearmodifiers", "ctrl+a")
    desktop.run("xdotool", "type", "--delay", "8", str(path))
    desktop.key("Return")
    wait_until(path.exists, path)


def export_all(desktop, program, widgets, output, panel):
    print("Exporting from the settings and from the window.", flush=True)
    for extension, choice in (("txt", "Plain Text"), ("md", "Markdown"), ("pdf", "PDF")):
        settings_tab(widgets, "Data")
        widgets.click("Export Links...")
        widgets.find("Links to export: 5")
        widgets.choose("Format", choice)
        desktop.screenshot(output / "export-compact.png", panel)
        widgets.click("Export", "push button")
        path = (output / f"links-export.{extension}").resolve()
        path.unlink(missing_ok=True)
        save_as(desktop, path)
        widgets.find("Stored Links: 5")
        expect((b"%PDF" if extension == "pdf" else b"A Trailing Slash") in path.read_bytes(),
               f"{path.name} is written")
    desktop.key("Escape")
    desktop.run(program.binary, "--export")
    window = desktop.window("Export Links.*")
    widgets.type("Filter links...", "trailing")
    widgets.find("1 links to export")
    widgets.toggle("Clear from list after export")
    desktop.screenshot(output / "export.png", window)
    desktop.key("Return")
    path = (output / "links.md").resolve()
    path.unlink(missing_ok=True)
    save_as(desktop, path)
    widgets.gone("Filter links...")
    text = path.read_text()
    expect("A Trailing Slash" in text and "Weaving" not in text, "only the filtered link is written")
    wait_until(lambda: len(program.list()[1]) == 4, "the exported link to leave the list")


def plan_the_digest(desktop, widgets):
    print("The digest is to come daily at one o'clock, and old links are to go.", flush=True)
    settings_tab(widgets, "Email")
    widgets.toggle("Enable Daily Email Digest")
    widgets.choose("Send at", "01:00")
    widgets.toggle("Clear links after sending")  # shown on while nothing is chosen
    widgets.toggle("Clear links after sending")
    settings_tab(widgets, "Data")
    widgets.choose("Auto-delete after", "30 days")
    preferences = (desktop.home / "config/strandloom/settings.ini").read_text()
    preferences = preferences.replace('"', "").splitlines()
    for line in ("emailDigestEnabled=true", "emailSendHour=1", "clearAfterEmail=true",
                 "autoPruneDays=30", "emailAddress=reader@example.org"):
        expect(line in preferences, line)
    expect(not any("launchAtLogin" in line for line in preferences),
           "what was not touched is not written")


def let_days_pass(desktop, url):
    """Makes a link older than the user wants links to be kept."""
    with sqlite3.connect(desktop.home / "data/strandloom/strandloom.sqlite") as store:
        month = 31 * 86400 * 1_000_000
        store.execute("UPDATE links SET copiedAt = copiedAt - ? WHERE url = ?", (month, url))


def the_next_morning(desktop, binary, site, api):
    """An hour of today that has passed is the digest's: the next opening catches it up."""
    print("The next start: an old link goes, and today's digest is due.", flush=True)
    # A zone in which it is neither before the hour nor about to be midnight.
    zone = "UTC-12" if datetime.datetime.now(datetime.timezone.utc).hour < 12 else "UTC"
    program = Program(desktop, binary, TZ=zone)
    program.wait_for_line("Tray icon shown")
    desktop.click(*wait_until(desktop.tray_icon, "the icon in the tray"))
    program.wait_for_line("Auto-pruned 1 old links")
    program.wait_for_line("Email sent successfully. Message ID: demonstration")
    _, _, mail = api.received[-1]
    expect(len(api.received) == 2 and mail["html"].count('<div class="link-card">') == 3,
           "the digest holds the three links that are left")
    expect(site.url("/gone") not in mail["html"], "without the one that was pruned")
    wait_until(lambda: program.list() == (1, []), "the sent links to leave the list")
    return program


def find_key(desktop):
    """The files under the user's home that hold the key, besides the keyring's own."""
    return [path for path in desktop.home.rglob("*") if path.is_file() and not path.is_symlink()
            and "keyrings" not in path.parts and KEY.encode() in path.read_bytes()]


def main(binary, output):
    output = pathlib.Path(output)
    output.mkdir(parents=True, exist_ok=True)
    site, api = Site(PAGES), MailApi()
    with Desktop() as desktop:
        desktop.start_keyring()
        information = desktop.home / "strandloom.ini"
        information.write_text(f"MailAPI=http://127.0.0.1:{api.server.server_port}\n"
                               "ProductSite=https://strandloom.example\n")
        desktop.environment["STRANDLOOM_INFO"] = str(information)
        program = Program(desktop, binary)
        program.wait_for_line("Tray icon shown")
        desktop.copy(site.url("/plain"))
        expect(program.list() == (1, []), "nothing is captured before the panel was opened")

        print("Opening the panel with a click on the tray icon.", flush=True)
        desktop.click(*wait_until(desktop.tray_icon, "the icon in the tray"))
        panel = desktop.window("Strandloom")
        desktop.screenshot(output / "panel-loading.png", panel)
        widgets = Accessibility(desktop)
        copy_things(desktop, program, site)
        check_list(program, site)
        summarize(desktop, program, widgets, panel, output, site)

        print("Looking at the panel.", flush=True)
        desktop.screenshot(output / "panel.png", panel)
        set_scheme = desktop.start_portal("dark")
        program.wait_for_line("Colour scheme: dark")
        desktop.run("sleep", "0.3")
        desktop.screenshot(output / "panel-dark.png", panel)
        set_scheme("light")
        program.wait_for_line("Colour scheme: light")

        exclude_a_domain(desktop, program, widgets, output, panel)
        mail_by_hand(desktop, program, widgets, api, output, panel)
        export_all(desktop, program, widgets, output, panel)
        desktop.click(*desktop.tray_icon())
        plan_the_digest(desktop, widgets)
        widgets.click("Back")
        widgets.click("Quit Strandloom")
        expect(program.process.wait(10) == 0, "the panel's button quits with 0")

        let_days_pass(desktop, site.url("/gone"))
        program = the_next_morning(desktop, binary, site, api)
        expect(find_key(desktop) == [], "the key is in no file but the keyring")
        expect(program.quit() == 0, "SIGTERM quits with 0")
    site.close()
    api.close()
    print(f"Screenshots and exports are in {output}.")


if __name__ == "__main__":
    try:
        main(sys.argv[1], sys.argv[2])
    except Failure as failure:
        sys.exit(f"The demonstration failed: {failure}")
