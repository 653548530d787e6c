#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A StatusNotifier tray without a screen: watcher and, with "host" on a line of its input, a host. Writes the
tool tip of an item that registers or changes; "click" on a line of its input clicks on the last."""

import sys

import dbus
import dbus.service
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

WATCHER = "org.kde.StatusNotifierWatcher"
ITEM = "org.kde.StatusNotifierItem"


class Watcher(dbus.service.Object):
    def __init__(self, bus, loop):
        self.name = dbus.service.BusName(WATCHER, bus, do_not_queue=True)
        super().__init__(bus, "/StatusNotifierWatcher")
        self.bus, self.loop, self.item, self.has_host = bus, loop, None, False
        bus.add_signal_receiver(self.show, "NewToolTip", ITEM)
        GLib.io_add_watch(sys.stdin, GLib.IO_IN | GLib.IO_HUP, self.obey)

    @dbus.service.method(WATCHER, in_signature="s")
    def RegisterStatusNotifierItem(self, service):
        self.item = self.bus.get_object(service, "/StatusNotifierItem", introspect=False)
        self.show()

    @dbus.service.signal(WATCHER)
    def StatusNotifierHostRegistered(self):
        self.has_host = True

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, _, name):
        return {"IsStatusNotifierHostRegistered": self.has_host, "ProtocolVersion": 0}[name]

    @dbus.service.method(dbus.INTROSPECTABLE_IFACE, out_signature="s")
    def Introspect(self):
        """Qt uses no property that is not told here."""
        return (f'<node><interface name="{WATCHER}"><property name="IsStatusNotifierHostRegistered" '
                'type="b" access="read"/></interface></node>')

    def show(self):
        def write(tip):
            print(tip[2], flush=True)
        self.item.Get(ITEM, "ToolTip", dbus_interface=dbus.PROPERTIES_IFACE, reply_handler=write,
                      error_handler=lambda error: print(error, flush=True))

    def obey(self, *_):
        order = sys.stdin.readline().strip()
        if order == "host":
            self.StatusNotifierHostRegistered()
        elif order == "click":
            self.item.Activate(0, 0, dbus_interface=ITEM, reply_handler=lambda: None,
                               error_handler=lambda error: print(error, flush=True))
        else:
            self.loop.quit()
        return bool(order)


DBusGMainLoop(set_as_default=True)
main_loop = GLib.MainLoop()
watcher = Watcher(dbus.SessionBus(), main_loop)
main_loop.run()
