"""A notification service that shows nothing and records everything."""

from bus_service import BusService
from desk import eventually
from gi.repository import GLib

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


class NotificationService(BusService):
    def __init__(self, address):
        super().__init__(address, NAME, PATH, INTERFACE)

    def answer(self, method, arguments):
        return {"GetCapabilities": GLib.Variant("(as)", (["actions", "body", "body-markup"],)),
                "Notify": GLib.Variant("(u)", (len(self.calls),))}.get(method)

    def notice(self):
        """The arguments of the first notice, once there is one."""
        return eventually(lambda: next((arguments for method, arguments in self.calls if method == "Notify"), None),
                          "a notice")
