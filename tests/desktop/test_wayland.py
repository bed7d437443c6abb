"""The application on a Wayland desktop, which stands in a window of the X screen and so has mouse and keyboard."""

import os

from desk import FOCUSED, eventually, settled
from rules_window import PATH, DesktopTest, RulesWindow
from sandbox import read

PICTURES = os.environ.get("QUORVANE_PICTURES", "pictures")
SOCKET = "quorvane-wayland"
CONFIGURATION = """[core]
backend=x11-backend.so
idle-time=0
[shell]
panel-position=none
animation=none
startup-animation=none
[input-method]
path=
"""


class Wayland(DesktopTest):
    def setUp(self):
        super().setUp()
        configuration = self.sandbox.path("weston.ini")
        with open(configuration, "w", encoding="utf-8") as file:
            file.write(CONFIGURATION)
        self.compositor = self.desk.start("weston", "--config=" + configuration, "--socket=" + SOCKET,
                                          "--width=1280", "--height=800")
        self.addCleanup(self.desk.stop, self.compositor)
        socket = os.path.join(self.desk.environment["XDG_RUNTIME_DIR"], SOCKET)
        eventually(lambda: os.path.exists(socket), "the compositor")

    def open(self, **environment):
        process = self.start(QT_QPA_PLATFORM="wayland", WAYLAND_DISPLAY=SOCKET, **environment)
        window = RulesWindow(self.desk, process, wait_until_active=False)
        self.desk.hands("mousemove", 700, 500, "click", 1)  # the X window gets the focus
        return window

    def keep_picture(self, name):
        os.makedirs(PICTURES, exist_ok=True)
        self.desk.picture().save(os.path.join(PICTURES, name))

    def test_a_rule_is_found_edited_and_saved(self):
        window = self.open_with("allow path /etc/hosts any r", "deny prefix /usr/ /bin/sh w mine")
        self.desk.press("ctrl+f")
        eventually(lambda: window.search.has(FOCUSED), "the search field to have the keyboard")
        self.desk.type_text("usr")
        self.assert_becomes(lambda: window.column(PATH), ["/usr/"])
        self.keep_picture("wayland-main-window.png")
        self.desk.press("Return")  # leads to the table
        eventually(lambda: window.table.has(FOCUSED), "the table to have the keyboard")
        self.desk.press("ctrl+a")
        self.assert_becomes(window.selected, ["/usr/"])
        self.desk.press("Return")
        editor = window.program.find("dialog")
        path = editor.find("text", "Path")
        eventually(lambda: path.has(FOCUSED), "the path to have the keyboard")
        settled(self.desk.picture)
        self.keep_picture("wayland-editor.png")
        self.desk.press("End")
        self.desk.type_text("lib/")
        self.assert_becomes(lambda: path.text, "/usr/lib/")
        self.desk.press("Return")
        self.assert_becomes(lambda: b'"/usr/lib/"' in read(self.sandbox.user_file), True)
        eventually(lambda: window.program.find_now("dialog") is None, "the editor to close")
        eventually(lambda: window.table.has(FOCUSED), "the table to have the keyboard again")
        self.desk.press("ctrl+q")
        self.assertEqual(window.process.wait(20), 0)
