"""A virtual desktop: a screen, a window manager, a session bus and accessibility, for one test at a time.

A test looks at windows through the accessibility tree, as a screen reader does, and at the pixels of the screen, and
acts with mouse and keyboard. Nothing waits for a time, only for what is to come.
"""

import os
import shutil
import subprocess
import tempfile
import threading
import time

import gi
from PIL import ImageGrab

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

PATIENCE = 20  # seconds; the machine may be busy

# No service folders of the machine: services not started by the test must not be activated. A test may have its own service
# folder.
BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/><allow own="*"/>
    <allow send_type="method_call"/><allow send_type="signal"/>
    <allow send_requested_reply="true" send_type="method_return"/>
    <allow send_requested_reply="true" send_type="error"/>
    <allow receive_type="method_call"/><allow receive_type="signal"/>
    <allow receive_requested_reply="true" receive_type="method_return"/>
    <allow receive_requested_reply="true" receive_type="error"/>
  </policy>
</busconfig>
"""

# Without antialiasing a text has exactly the colour set by the program.
FONT_CONFIGURATION = """<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "fonts.dtd">
<fontconfig>
  <include ignore_missing="yes">/etc/fonts/fonts.conf</include>
  {edits}
</fontconfig>
""".format(edits="".join(f'<match target="{target}"><edit name="antialias" mode="assign"><bool>false</bool></edit>'
                         '<edit name="rgba" mode="assign"><const>none</const></edit></match>'
                         for target in ("font", "pattern")))

# State numbers of accessible objects.
ACTIVE, CHECKED, ENABLED, FOCUSABLE, FOCUSED, SELECTED, SHOWING = 1, 4, 8, 11, 12, 23, 25


def eventually(question, what="the answer"):
    """The first true result of `question`."""
    end = time.monotonic() + PATIENCE
    while True:
        answer = question()
        if answer:
            return answer
        if time.monotonic() > end:
            raise AssertionError(f"waited {PATIENCE} s for {what}")
        time.sleep(0.03)


def settled(question):
    """The result of `question` once it is the same twice in a row."""
    answers = [None]

    def same_again():
        answers.append(question())
        return answers[-1] is not None and answers[-1] == answers[-2]
    eventually(same_again, "something to come to rest")
    return answers[-1]


def connect(address):
    flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
    return Gio.DBusConnection.new_for_address_sync(address, flags, None, None)


def connect_when_ready(socket, what):
    """A connection to a bus that was just started. Its socket exists a moment before the bus listens on it."""
    def attempt():
        try:
            return connect("unix:path=" + socket)
        except GLib.Error:
            return None
    return eventually(attempt, what)


def call(bus, name, path, interface, method, signature=None, *arguments):
    body = GLib.Variant(signature, arguments) if signature else None
    return bus.call_sync(name, path, interface, method, body, None, Gio.DBusCallFlags.NONE, PATIENCE * 1000,
                         None).unpack()


class Desk:
    def __init__(self, width=1400, height=900, as_user=(), services=None):
        """`as_user` is a command prefix, such as setpriv, for a desk of another user. `services` is a folder of service
        files for the session bus."""
        self.folder = tempfile.mkdtemp(prefix="quorvane-desk-")
        self.processes = []
        self._as_user = list(as_user)
        self._services = f"<servicedir>{services}</servicedir>" if services else ""
        if self._as_user:
            os.chmod(self.folder, 0o777)
        try:
            self._set_up(width, height)
        except BaseException:
            self.end()
            raise

    def _set_up(self, width, height):
        runtime, socket, ready = self._path("run"), self._path("bus"), self._path("ready")
        subprocess.run([*self._as_user, "mkdir", "-m", "700", runtime], check=True)
        self._write("fonts.conf", FONT_CONFIGURATION)
        self._write("bus.conf", BUS_CONFIGURATION.format(socket=socket).replace(
            "</busconfig>", self._services + "</busconfig>"))
        self.environment = {
            "PATH": os.environ["PATH"], "HOME": self.folder, "XDG_RUNTIME_DIR": runtime, "LC_ALL": "C.UTF-8",
            "FONTCONFIG_FILE": self._path("fonts.conf"), "DBUS_SESSION_BUS_ADDRESS": "unix:path=" + socket,
            # The machine's own system bus must not be used.
            "DBUS_SYSTEM_BUS_ADDRESS": "unix:path=" + self._path("no-system-bus"),
            "QT_QPA_PLATFORM": "xcb", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}
        self._start_screen(width, height)
        self.start("dbus-daemon", "--nofork", "--config-file=" + self._path("bus.conf"))
        self.session = connect_when_ready(socket, "the session bus")
        self.start("/usr/libexec/at-spi-bus-launcher", "--launch-immediately")
        # A window shown before the window manager is ready can stay invisible.
        self.start("openbox", "--sm-disable", "--startup", "touch " + ready)
        self._tree = connect(eventually(self._accessibility_address, "the accessibility bus"))
        eventually(lambda: os.path.exists(ready), "the window manager")
        # The first key press makes the window manager reset its key bindings and miss the next one.
        self.press("Shift_L")

    def _start_screen(self, width, height):
        reader, writer = os.pipe()
        # It picks a free number itself, so that desks can run in parallel.
        self.start("Xvfb", "-displayfd", str(writer), "-screen", "0", f"{width}x{height}x24", "-nolisten", "tcp",
                   "-noreset", "-ac", pass_fds=(writer,))
        os.close(writer)
        with os.fdopen(reader) as number:
            self.environment["DISPLAY"] = ":" + number.readline().strip()

    def end_screen(self):
        """Ends the display while its programs are running."""
        next(process for process in self.processes if "Xvfb" in process.args).kill()

    def _path(self, name):
        return os.path.join(self.folder, name)

    def _write(self, name, text):
        with open(self._path(name), "w", encoding="utf-8") as file:
            file.write(text)

    def _accessibility_address(self):
        try:
            return call(self.session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")[0]
        except GLib.Error:
            return None

    def start(self, *command, environment=None, **more):
        """Starts a program that ends with the desk at the latest."""
        more.setdefault("stderr", subprocess.DEVNULL)
        self.processes.append(subprocess.Popen([*self._as_user, *command], env={**self.environment, **(environment or {})},
                                               stdin=subprocess.DEVNULL, start_new_session=True, **more))
        return self.processes[-1]

    def stop(self, process):
        if process.poll() is None:
            process.terminate()
            try:
                process.wait(5)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        self.processes.remove(process)

    def end(self):
        for process in reversed(list(self.processes)):
            self.stop(process)
        shutil.rmtree(self.folder, ignore_errors=True)

    def hear_names(self):
        """The changed names announced to screen readers: a list that grows from now on."""
        names, ready = [], threading.Event()

        def listen():
            context = GLib.MainContext.new()
            context.push_thread_default()
            bus = connect(self._accessibility_address())
            bus.signal_subscribe(None, "org.a11y.atspi.Event.Object", "PropertyChange", None, None, 0,
                                 lambda _, sender, path, *rest: names.append(Node(bus, sender, path).name))
            call(bus, "org.a11y.atspi.Registry", "/org/a11y/atspi/registry", "org.a11y.atspi.Registry", "RegisterEvent",
                 "(s)", "object:property-change:accessible-name")
            ready.set()
            GLib.MainLoop.new(context, False).run()
        threading.Thread(target=listen, daemon=True).start()
        ready.wait(PATIENCE)
        return names

    def tree_of(self, process):
        """The accessible root object of `process`."""
        def find():
            if process.poll() is not None:
                raise AssertionError(f"the program ended by itself with status {process.returncode}")
            names = call(self._tree, "org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root",
                         "org.a11y.atspi.Accessible", "GetChildren")[0]
            return next((name for name, _ in names if self._process_behind(name) == process.pid), None)
        return Node(self._tree, eventually(find, "the program in the accessibility tree"),
                    "/org/a11y/atspi/accessible/root")

    def _process_behind(self, name):
        try:
            return call(self._tree, "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetConnectionUnixProcessID",
                        "(s)", name)[0]
        except GLib.Error:  # removed in the meantime
            return None

    def hands(self, *arguments):
        """Runs xdotool for mouse and keyboard input; returns its output."""
        return subprocess.run(["xdotool", *map(str, arguments)], env=self.environment, check=True,
                              stdout=subprocess.PIPE,
                              text=True, timeout=PATIENCE).stdout

    def press(self, *keys):
        self.hands("key", *keys)

    def type_text(self, text):
        """ASCII only: other characters do not always arrive."""
        self.hands("type", "--delay", "1", text)

    def paste(self, text):
        """Pastes any text into the focused object."""
        subprocess.run(["xclip", "-selection", "clipboard"], env=self.environment, input=text.encode(), check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.press("ctrl+v")

    def click(self, x, y):
        self.hands("mousemove", x, y, "click", 1)

    def drag(self, start, end):
        self.hands("mousemove", *start, "mousedown", 1, "mousemove", *end, "mouseup", 1)

    def picture(self, box=None):
        """The screen, or the part of it inside (x, y, width, height), once it no longer changes."""
        def grab():
            image = ImageGrab.grab(xdisplay=self.environment["DISPLAY"])
            return image.crop((box[0], box[1], box[0] + box[2], box[1] + box[3])) if box else image
        return settled(grab)



class Node:
    """An object of the accessibility tree. Caches nothing: each query goes to the program."""

    def __init__(self, bus, name, path):
        self._address = (bus, name, path)

    def __eq__(self, other):
        return isinstance(other, Node) and self._address[1:] == other._address[1:]

    def _ask(self, interface, method, signature=None, *arguments):
        return call(*self._address, "org.a11y.atspi." + interface, method, signature, *arguments)[0]

    def _property(self, interface, name):
        return call(*self._address, "org.freedesktop.DBus.Properties", "Get", "(ss)", "org.a11y.atspi." + interface,
                    name)[0]

    def _node(self, reference):
        return Node(self._address[0], *reference)

    role = property(lambda self: self._ask("Accessible", "GetRoleName"))
    name = property(lambda self: self._property("Accessible", "Name"))
    description = property(lambda self: self._property("Accessible", "Description"))
    box = property(lambda self: tuple(self._ask("Component", "GetExtents", "(u)", 0)))  # x, y, width, height
    text = property(lambda self: self._ask("Text", "GetText", "(ii)", 0, -1))
    rows = property(lambda self: self._property("Table", "NRows"))
    columns = property(lambda self: self._property("Table", "NColumns"))
    center = property(lambda self: (self.box[0] + self.box[2] // 2, self.box[1] + self.box[3] // 2))

    def has(self, state):
        low, high = self._ask("Accessible", "GetState")
        return bool((low | high << 32) >> state & 1)

    def child(self, number):
        return self._node(self._ask("Accessible", "GetChildAtIndex", "(i)", number))

    def cell(self, row, column):
        return self._node(self._ask("Table", "GetAccessibleAt", "(ii)", row, column))

    def children(self):
        # Qt's empty lists have an invalid child.
        return [self._node(reference) for reference in self._ask("Accessible", "GetChildren")
                if not reference[1].endswith("/null")]

    def labels(self):
        """The names of the labels of this object."""
        labelled_by = 2
        return [self._node(target).name for kind, targets in self._ask("Accessible", "GetRelationSet")
                if kind == labelled_by for target in targets]

    def below(self):
        """Everything below this object, except the contents of tables, which can be endless."""
        if self.role == "table":
            return
        for child in self.children():
            yield child
            yield from child.below()

    def find_now(self, role, name=None):
        try:
            return next((node for node in self.below() if node.role == role and node.has(SHOWING)
                         and (name is None or node.name == name)), None)
        except GLib.Error:  # something was removed during the inspection
            return None

    def find(self, role, name=None):
        return eventually(lambda: self.find_now(role, name), f"a {role} {name or ''}")
