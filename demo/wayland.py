# SPDX-License-Identifier: MIT
"""Wayland compositors without a screen, on which further programs of a `Desktop` start."""

import os
import re
import subprocess

import dbus

from desktop import wait_until


def start_sway(desktop):
    """Offers data control. Has no X server."""
    folder = desktop.home / "sway"
    folder.mkdir()
    (folder / "config").write_text("xwayland disable\nswaybg_command -\n")
    environment = {**os.environ, "XDG_RUNTIME_DIR": str(folder), "WLR_BACKENDS": "headless",
                   "WLR_RENDERER": "pixman", "WLR_LIBINPUT_NO_DEVICES": "1"}
    unprivileged = []
    if os.geteuid() == 0:  # which sway refuses
        os.chown(folder, 65534, 65534)
        desktop.home.chmod(0o711)
        unprivileged = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"]
    desktop.processes.append(subprocess.Popen(
        [*unprivileged, "sway", "--config", folder / "config"], env=environment,
        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL))
    wait_until((folder / "wayland-1").exists, "sway")
    del desktop.environment["DISPLAY"]
    desktop.environment["WAYLAND_DISPLAY"] = str(folder / "wayland-1")


def start_mutter(desktop):
    """The compositor of GNOME: no data control, but an X server that is told of all copies."""
    log = desktop.home / "mutter.log"
    with open(log, "w") as output:
        desktop.processes.append(subprocess.Popen(
            ["mutter", "--headless", "--wayland", "--virtual-monitor", "800x600"],
            env=desktop.environment, stdout=output, stderr=output))

    def displays():
        return re.search(r"public X11 display (:\d+)[^@]*Wayland display name '(.+)'",
                         log.read_text())
    x11, wayland = wait_until(displays, "mutter").groups()
    give_keyboard(desktop)
    authority, = (desktop.home / "runtime").glob(".mutter-Xwaylandauth.*")
    desktop.environment.update(DISPLAY=x11, WAYLAND_DISPLAY=wayland, XAUTHORITY=str(authority))


def give_keyboard(desktop):
    """Programs may copy only when they are typed into; the keyboard is there after its first key."""
    desktop.wait_for_bus_name("org.gnome.Mutter.RemoteDesktop")
    desktop.mutter_bus = dbus.bus.BusConnection(desktop.environment["DBUS_SESSION_BUS_ADDRESS"])
    name = "org.gnome.Mutter.RemoteDesktop"

    def interface(path, suffix=""):
        return dbus.Interface(desktop.mutter_bus.get_object(name, path), name + suffix)
    session = interface(interface("/org/gnome/Mutter/RemoteDesktop").CreateSession(), ".Session")
    session.Start()
    for is_pressed in (True, False):
        session.NotifyKeyboardKeycode(dbus.UInt32(42), is_pressed)
