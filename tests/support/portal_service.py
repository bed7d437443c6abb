"""A desktop portal with appearance settings."""

from bus_service import BusService
from gi.repository import GLib

NAME, PATH = "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop"
GROUP = "org.freedesktop.appearance"

INTERFACE = """<node><interface name="org.freedesktop.portal.Settings">
<method name="ReadAll"><arg type="as" direction="in"/><arg type="a{sa{sv}}" direction="out"/></method>
<signal name="SettingChanged"><arg type="s"/><arg type="s"/><arg type="v"/></signal>
</interface></node>"""


class PortalService(BusService):
    def __init__(self, address, **settings):
        """`settings` are numbers by name, with "_" for "-"."""
        self._settings = {name.replace("_", "-"): GLib.Variant("u", value) for name, value in settings.items()}
        super().__init__(address, NAME, PATH, INTERFACE)

    def answer(self, method, arguments):
        return GLib.Variant("(a{sa{sv}})", ({GROUP: self._settings},))

    def change(self, **settings):
        for name, value in settings.items():
            self.emit("SettingChanged", "(ssv)", GROUP, name.replace("_", "-"), GLib.Variant("u", value))
