#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A settings portal that says "dark" or "light": the part of a desktop that tells programs which
colour scheme the user chose. `settings_portal.py dark|light`; either word on a line of its input
chooses anew."""

import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

INTERFACE = "org.freedesktop.portal.Settings"
APPEARANCE = "org.freedesktop.appearance"
SCHEMES = {"dark": 1, "light": 2}


class Portal(dbus.service.Object):
    def __init__(self, bus, scheme):
        super().__init__(bus, "/org/freedesktop/portal/desktop")
        self.scheme = SCHEMES[scheme]
        GLib.io_add_watch(sys.stdin, GLib.IO_IN | GLib.IO_HUP, self.choose)

    @dbus.service.method(INTERFACE, in_signature="ss", out_signature="v")
    def Read(self, namespace, key):
        if (namespace, key) != (APPEARANCE, "color-scheme"):
            raise dbus.exceptions.DBusException("no such setting")
        return dbus.UInt32(self.scheme, variant_level=2)

    @dbus.service.signal(INTERFACE, signature="ssv")
    def SettingChanged(self, namespace, key, value):
        pass

    def choose(self, *_):
        scheme = sys.stdin.readline().strip()
        if scheme:
            self.scheme = SCHEMES[scheme]
            self.SettingChanged(APPEARANCE, "color-scheme", dbus.UInt32(self.scheme, variant_level=1))
        return bool(scheme)


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
portal = Portal(bus, sys.argv[1])
name = dbus.service.BusName("org.freedesktop.portal.Desktop", bus)
GLib.MainLoop().run()
