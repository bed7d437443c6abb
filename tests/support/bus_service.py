"""A bus service with configured replies, in its own thread."""

import threading

from desk import call, connect
from gi.repository import Gio, GLib


class BusService:
    def __init__(self, address, name, path, interface):
        """`interface` is its description in XML. Calls are answered by answer()."""
        self.calls = []  # (method, arguments)
        self._context = GLib.MainContext.new()
        self._loop = GLib.MainLoop.new(self._context, False)
        self._context.push_thread_default()
        self._path, self._interface = path, Gio.DBusNodeInfo.new_for_xml(interface).interfaces[0]
        self._bus = connect(address)
        self._bus.register_object(path, self._interface, self._called)
        self._context.pop_thread_default()
        call(self._bus, "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "RequestName", "(su)", name, 0)
        self._thread = threading.Thread(target=self._loop.run, daemon=True)
        self._thread.start()

    def answer(self, method, arguments):
        """The reply to a call; None for an empty one."""
        raise NotImplementedError

    def _called(self, _bus, _sender, _path, _interface, method, arguments, invocation):
        self.calls.append((method, arguments.unpack()))
        invocation.return_value(self.answer(*self.calls[-1]))

    def emit(self, signal, signature, *arguments):
        self._bus.emit_signal(None, self._path, self._interface.name, signal, GLib.Variant(signature, arguments))

    def end(self):
        self._loop.quit()
        self._thread.join()
        self._bus.close_sync()
