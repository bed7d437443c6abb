"""A desktop's service for notices that shows nothing and remembers everything."""

import threading

from desk import call, connect, eventually
from gi.repository import Gio, GLib

NAME, PATH = "org.freedesktop.Notifications", "/org/freedesktop/Notifications"

INTERFACE = """<node><interface name="org.freedesktop.Notifications">
<method name="GetCapabilities"><arg type="as" direction="out"/></method>
<method name="Notify">
  <arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/><arg type="s" direction="in"/>
  <arg type="s" direction="in"/><arg type="as" direction="in"/><arg type="a{sv}" direction="in"/>
  <arg type="i" direction="in"/><arg type="u" direction="out"/>
</method>
<method name="CloseNotification"><arg type="u" direction="in"/></method>
</interface></node>"""


class NotificationService:
    def __init__(self, address):
        self.calls = []  # (method, arguments)
        self._context = GLib.MainContext.new()
        self._loop = GLib.MainLoop.new(self._context, False)
        self._context.push_thread_default()
        self._bus = connect(address)
        self._bus.register_object(PATH, Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0], self._called)
        self._context.pop_thread_default()
        call(self._bus, "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "RequestName", "(su)", NAME, 0)
        self._thread = threading.Thread(target=self._loop.run, daemon=True)
        self._thread.start()

    def _called(self, _bus, _sender, _path, _interface, method, arguments, invocation):
        self.calls.append((method, arguments.unpack()))
        answers = {"GetCapabilities": GLib.Variant("(as)", (["actions", "body", "body-markup"],)),
                   "Notify": GLib.Variant("(u)", (len(self.calls),))}
        invocation.return_value(answers.get(method))

    def notice(self):
        """The arguments of the first notice, once there is one."""
        return eventually(lambda: next((arguments for method, arguments in self.calls if method == "Notify"), None),
                          "a notice")

    def end(self):
        self._loop.quit()
        self._thread.join()
        self._bus.close_sync()
