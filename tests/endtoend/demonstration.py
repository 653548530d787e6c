#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A scripted user: starts Strandloom on a virtual desktop, opens the panel from the tray, copies this
and that, and looks at what became of it. Fails when an expectation does not hold."""

import datetime
import http.server
import json
import pathlib
import sqlite3
import subprocess
import sys
import threading
import uuid

from desktop import Desktop, Failure, Program, Site, wait_until

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


def exclude(desktop, domain):
    """Leaves an excluded domain in the store, as if the user had entered it before."""
    with sqlite3.connect(desktop.home / "data/strandloom/strandloom.sqlite") as store:
        now = int(datetime.datetime.now().timestamp() * 1_000_000)
        store.execute("INSERT INTO excludedDomains (id, domain, addedAt) VALUES (?, ?, ?)",
                      (uuid.uuid4().bytes, domain, now))


def dark_desktop(desktop, dark):
    """Sets the desktop's colour scheme, which programs read from the settings portal."""
    portal = pathlib.Path(__file__).parent / "settings_portal.py"
    process = desktop.start("/usr/bin/python3", str(portal), "dark" if dark else "light")
    desktop.wait_for_bus_name("org.freedesktop.portal.Desktop")
    return process


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
    desktop.copy("https://www.excluded.example/secret")
    program.wait_for_line("Skipping excluded domain: https://www.excluded.example/secret")
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


def summarize(desktop, program, panel, output, site):
    print("Pressing the summarise button.", flush=True)
    x, y, width, height = desktop.geometry(panel)
    desktop.click(x + width - 52, y + height - 18)
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
    desktop.click(x + 100, y + 60)
    desktop.run("sleep", "0.4")  # the row expands in 0.2 s


class MailApi:
    """A double of the mail provider on this machine: keeps what is posted to it."""

    def __init__(self):
        received = self.received = []

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_POST(self):
                body = self.rfile.read(int(self.headers["Content-Length"]))
                received.append((self.path, dict(self.headers), json.loads(body)))
                self.send_response(200)
                self.end_headers()
                self.wfile.write(b'{"id": "demonstration"}')

            def log_message(self, *_):
                pass

        self.server = http.server.HTTPServer(("127.0.0.1", 0), Handler)
        threading.Thread(target=self.server.serve_forever, daemon=True).start()

    def close(self):
        self.server.shutdown()
        self.server.server_close()


def store_in_keyring(desktop, account, secret):
    desktop.run("secret-tool", "store", "--label=Strandloom", "service", "app.strandloom",
                "account", account, input=secret.encode())


def mail_the_digest(desktop, binary, output):
    """An hour of today that has passed is the digest's: the next opening catches it up."""
    print("A key is in the keyring, and today's digest is due.", flush=True)
    api = MailApi()
    store_in_keyring(desktop, "resend_api_key", "re_demonstration_0123456789")
    store_in_keyring(desktop, "resend_from_email", "loom@example.org")
    preferences = desktop.home / "config/strandloom/settings.ini"
    preferences.parent.mkdir(parents=True, exist_ok=True)
    preferences.write_text("[General]\nemailDigestEnabled=true\nemailSendHour=1\n"
                           "emailAddress=reader@example.org\nclearAfterEmail=true\n")
    information = desktop.home / "strandloom.ini"
    information.write_text(f"MailAPI=http://127.0.0.1:{api.server.server_port}\n"
                           "ProductSite=https://strandloom.example\n")
    desktop.run(binary, "digest", "--output", str(output / "digest.html"))

    # A zone in which it is neither before the hour nor about to be midnight.
    zone = "UTC-12" if datetime.datetime.now(datetime.timezone.utc).hour < 12 else "UTC"
    program = Program(desktop, binary, STRANDLOOM_INFO=str(information), TZ=zone)
    program.wait_for_line("Tray icon shown")
    desktop.click(*tray_icon(desktop))
    program.wait_for_line("Email sent successfully. Message ID: demonstration")
    (path, headers, mail), = api.received
    print(f"  {path}: {mail['from']} -> {mail['to'][0]}: {mail['subject']}", flush=True)
    expect(path == "/emails" and headers["Authorization"] == "Bearer re_demonstration_0123456789",
           "the mail went to the provider with the key")
    expect(mail["html"].count('<div class="link-card">') == 5, "the digest holds five links")
    wait_until(lambda: program.list() == (1, []), "the sent links to leave the list")
    expect(program.quit() == 0, "quits with 0")
    api.close()


def tray_icon(desktop):
    """The middle of the program's icon, the only one in the tray; None before it is there."""
    found = subprocess.run(["xdotool", "search", "--onlyvisible", "--classname", "strandloom"],
                           env=desktop.environment, capture_output=True, text=True).stdout.split()
    if not found:
        return None
    x, y, width, height = desktop.geometry(found[0])
    return x + width // 2, y + height // 2


def main(binary, output):
    output = pathlib.Path(output)
    output.mkdir(parents=True, exist_ok=True)
    site = Site(PAGES)
    with Desktop() as desktop:
        desktop.start_keyring()
        print("First start: makes the store. Then a domain is excluded.", flush=True)
        first = Program(desktop, binary, "--background")
        store = desktop.home / "data/strandloom/strandloom.sqlite"
        wait_until(store.exists, "the store")
        first.wait_for_line("Started")
        expect(first.quit() == 0, "quits with 0 on SIGTERM")
        exclude(desktop, "Excluded.Example")

        program = Program(desktop, binary)
        program.wait_for_line("Tray icon shown")
        desktop.copy(site.url("/plain"))
        expect(program.list() == (1, []), "nothing is captured before the panel was opened")

        print("Opening the panel with a click on the tray icon.", flush=True)
        wait_until(lambda: tray_icon(desktop), "the icon in the tray")
        desktop.click(*tray_icon(desktop))
        panel = desktop.window("Strandloom")
        desktop.screenshot(output / "panel-loading.png", panel)
        copy_things(desktop, program, site)
        check_list(program, site)

        summarize(desktop, program, panel, output, site)

        print("Looking at the panel.", flush=True)
        desktop.screenshot(output / "panel.png", panel)
        portal = dark_desktop(desktop, True)
        program.wait_for_line("Colour scheme: dark")
        desktop.run("sleep", "0.3")
        desktop.screenshot(output / "panel-dark.png", panel)
        portal.terminate()

        print("\n$ strandloom list", flush=True)
        subprocess.run([program.binary, "list"], env=desktop.environment, check=True)
        expect(program.quit() == 0, "quits with 0")
        mail_the_digest(desktop, program.binary, output)
    site.close()
    print(f"Screenshots are in {output}.")


if __name__ == "__main__":
    try:
        main(sys.argv[1], sys.argv[2])
    except Failure as failure:
        sys.exit(f"The demonstration failed: {failure}")
