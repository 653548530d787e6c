# SPDX-License-Identifier: MIT
"""A virtual desktop for tests and the demonstration: X server, session bus, window manager, tray,
and the program started on it as a user would have it."""

import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer


TRAY_HOST = pathlib.Path(__file__).with_name("tray_host.py")
SETTINGS_PORTAL = pathlib.Path(__file__).with_name("settings_portal.py")
TRAY_HEIGHT = 28
# For the builds that look for leaks.
LEAK_OPTIONS = (f"suppressions={pathlib.Path(__file__).with_name('leaks.supp')}"
                ":print_suppressions=0")


class Failure(Exception):
    """An expectation that did not hold."""


def wait_until(condition, what, seconds=60):
    """The first true answer of `condition`, asked again and again."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        if answer := condition():
            return answer
        time.sleep(0.02)
    raise Failure(f"not within {seconds} s: {what}")


class Site:
    """A loopback web site of fixed pages: {path: (status, headers, body bytes)}."""

    def __init__(self, pages):
        class Handler(BaseHTTPRequestHandler):
            def do_GET(self):
                status, headers, body = pages.get(self.path, (404, {}, b"<title>Nothing</title>"))
                self.send_response(status)
                for name, value in headers.items():
                    self.send_header(name, value)
                self.send_header("Content-Length", str(len(body)))
                self.end_headers()
                self.wfile.write(body)

            def log_message(self, *_):
                pass

        self.server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        threading.Thread(target=self.server.serve_forever, daemon=True).start()

    def url(self, path):
        return f"http://127.0.0.1:{self.server.server_port}{path}"

    def close(self):
        self.server.shutdown()
        self.server.server_close()


class MailApi:
    """A double of the mail provider on this machine: keeps what is posted to it."""

    def __init__(self):
        received = self.received = []

        class Handler(BaseHTTPRequestHandler):
            def do_POST(self):
                body = self.rfile.read(int(self.headers["Content-Length"]))
                received.append((self.path, dict(self.headers), json.loads(body)))
                self.send_response(200)
                self.end_headers()
                self.wfile.write(b'{"id": "demonstration"}')

            def log_message(self, *_):
                pass

        self.server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        threading.Thread(target=self.server.serve_forever, daemon=True).start()

    def close(self):
        self.server.shutdown()
        self.server.server_close()


class Desktop:
    """An X server with a session bus, a window manager and a tray, and a home of its own.
    Everything it started ends with it."""

    def __init__(self, tray=True, size="1000x720x24"):
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="strandloom-desktop-"))
        self.processes = []
        runtime = self.home / "runtime"
        runtime.mkdir(mode=0o700)
        self.environment = {
            "PATH": os.environ["PATH"],
            "HOME": str(self.home),
            "XDG_RUNTIME_DIR": str(runtime),
            "XDG_DATA_HOME": str(self.home / "data"),
            "XDG_CONFIG_HOME": str(self.home / "config"),
            "XDG_CACHE_HOME": str(self.home / "cache"),
            "LC_ALL": "C.UTF-8",
            "LSAN_OPTIONS": LEAK_OPTIONS,
            "QT_QPA_PLATFORM": "xcb",
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
            "QT_LOGGING_RULES": "strandloom.debug=true",
            "no_proxy": "*",
        }
        try:
            self._start_display(size)
            self._start_bus()
            self._start_window_manager()
            if tray:
                self.start_tray()
        except BaseException:
            self.close()
            raise

    def _start_display(self, size):
        reading, writing = os.pipe()
        self.start("Xvfb", "-displayfd", str(writing), "-screen", "0", size, "-nolisten", "tcp",
                   "-noreset", pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as answer:
            self.environment["DISPLAY"] = ":" + answer.readline().strip()

    def _start_bus(self):
        reading, writing = os.pipe()
        self.start("dbus-daemon", "--session", "--nofork", f"--print-address={writing}",
                   pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as answer:
            self.environment["DBUS_SESSION_BUS_ADDRESS"] = answer.readline().strip()

    def _start_window_manager(self):
        """A window that is mapped while the window manager starts may stay unmapped."""
        self.start("openbox", "--sm-disable")

        def is_there():
            asked = subprocess.run(["xdotool", "get_num_desktops"], env=self.environment,
                                   capture_output=True, text=True)
            return asked.returncode == 0 and asked.stdout.strip().isdigit()
        wait_until(is_there, "the window manager")

    def start(self, *command, **options):
        streams = dict.fromkeys(("stdin", "stdout", "stderr"), subprocess.DEVNULL)
        process = subprocess.Popen(command, env=self.environment, **{**streams, **options})
        self.processes.append(process)
        return process

    def start_tray(self, *options):
        return self.start("trayer", "--edge", "top", "--align", "right", "--widthtype", "request",
                          "--height", str(TRAY_HEIGHT), "--SetDockType", "true", "--expand", "true", *options)

    def start_keyring(self):
        """An empty keyring, unlocked."""
        daemon = subprocess.Popen(
            ["gnome-keyring-daemon", "--foreground", "--unlock", "--components=secrets"],
            env=self.environment, stdin=subprocess.PIPE, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL)
        self.processes.append(daemon)
        daemon.stdin.write(b"demonstration")
        daemon.stdin.close()
        self.wait_for_bus_name("org.freedesktop.secrets")

    def start_portal(self, scheme):
        """A settings portal that says "dark" or "light". Returns what makes it say another."""
        portal = self.start("/usr/bin/python3", SETTINGS_PORTAL, scheme, stdin=subprocess.PIPE,
                            text=True)
        self.wait_for_bus_name("org.freedesktop.portal.Desktop")
        return lambda scheme: print(scheme, file=portal.stdin, flush=True)

    def wait_for_bus_name(self, name):
        def is_owned():
            names = self.run("dbus-send", "--session", "--print-reply",
                             "--dest=org.freedesktop.DBus", "/", "org.freedesktop.DBus.ListNames")
            return f'"{name}"' in names
        wait_until(is_owned, name)

    def run(self, *command, **options):
        """What a command prints; a `Failure` when it fails."""
        done = subprocess.run(command, env=self.environment, capture_output=True, timeout=30,
                              **options)
        if done.returncode != 0:
            raise Failure(f"{' '.join(command)}: {done.stderr.decode(errors='replace')}")
        return done.stdout.decode(errors="replace")

    def copy(self, text):
        """Another program copies `text`; xclip stays behind to serve it."""
        subprocess.run(["xclip", "-selection", "clipboard", "-silent"], input=text.encode(),
                       env=self.environment, check=True, timeout=30,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def clipboard(self):
        return self.run("xclip", "-selection", "clipboard", "-o")

    def key(self, *keys):
        self.run("xdotool", "key", *keys)

    def click(self, x, y, button=1):
        self.run("xdotool", "mousemove", str(x), str(y), "sleep", "0.1", "click", str(button))

    def window(self, title, seconds=60):
        """The id of the visible window with that title."""
        return wait_until(lambda: windows(self, title), f"window {title}", seconds)[0]

    def geometry(self, window):
        """x, y, width, height of a window on the screen."""
        answer = self.run("xdotool", "getwindowgeometry", "--shell", window)
        values = dict(line.split("=") for line in answer.split())
        return tuple(int(values[name]) for name in ("X", "Y", "WIDTH", "HEIGHT"))

    def tray_icon(self):
        """The middle of the program's icon, the one window of it that fits into the tray; None before it
        is there."""
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--classname", "strandloom"],
                               env=self.environment, capture_output=True, text=True).stdout.split()
        for window in found:
            try:
                x, y, width, height = self.geometry(window)
            except Failure:  # it went between the two questions
                continue
            if height <= TRAY_HEIGHT:
                return x + width // 2, y + height // 2
        return None

    def screenshot(self, path, window="root"):
        self.run("import", "-window", window, str(path))

    def close(self):
        for process in reversed(self.processes):
            process.terminate()
        for process in reversed(self.processes):
            for stream in filter(None, (process.stdin, process.stdout)):
                stream.close()
            try:
                process.wait(5)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        shutil.rmtree(self.home, ignore_errors=True)

    def __enter__(self):
        return self

    def __exit__(self, kind, *_):
        log = self.home / "diagnostics.log"
        if kind and log.exists():
            print("The last diagnostics were:", file=sys.stderr)
            print(*log.read_text(errors="replace").splitlines()[-20:], sep="\n", file=sys.stderr)
        self.close()


def windows(desktop, title="Strandloom"):
    """The ids of the visible windows with that title."""
    found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", f"^{title}$"],
                           env=desktop.environment, capture_output=True, text=True)
    return found.stdout.split()


class Program:
    """The program under test on a desktop, with the diagnostics it wrote."""

    def __init__(self, desktop, binary, *arguments, **environment):
        self.desktop = desktop
        self.binary = str(pathlib.Path(binary).resolve())
        self.log = desktop.home / "diagnostics.log"
        with open(self.log, "ab") as log:
            self.begin = log.tell()
            self.process = subprocess.Popen([self.binary, *arguments],
                                            env={**desktop.environment, **environment},
                                            stdin=subprocess.DEVNULL, stdout=log, stderr=log)
        desktop.processes.append(self.process)

    def lines(self):
        """The diagnostics since this start, with those of other starts at the same time."""
        return self.log.read_bytes()[self.begin:].decode(errors="replace").splitlines()

    def wait_for_line(self, text, seconds=60):
        def written():
            return any(text in line for line in self.lines())
        wait_until(written, f"the diagnostic '{text}'", seconds)

    def list(self, *arguments):
        """Exit code and rows of `strandloom list --json`."""
        done = subprocess.run([self.binary, "list", "--json", *arguments],
                              env=self.desktop.environment, capture_output=True, timeout=30)
        return done.returncode, json.loads(done.stdout or b"[]")

    def open_panel(self):
        """A second start shows the running program's panel."""
        self.wait_for_line("Started")  # or the second start would be the first
        self.desktop.run(self.binary)
        return self.desktop.window("Strandloom")

    def kill(self):
        self.process.send_signal(signal.SIGKILL)
        self.process.wait()
        self.desktop.processes.remove(self.process)

    def quit(self):
        """Ends the program as the session would; its exit code."""
        self.process.terminate()
        self.desktop.processes.remove(self.process)
        return self.process.wait(10)
