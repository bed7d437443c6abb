"""The real services for administrators, fingerprints and passwords, on a separate bus and mounts: the account
database, polkit with its agent for terminals, and fprintd with a reader that exists in software only."""

import fcntl
import os
import pty
import select
import shutil
import socket
import subprocess
import termios
import unittest

from alone import run_alone
from desk import BUS_CONFIGURATION, PATIENCE, call, connect_when_ready, eventually
from gi.repository import GLib
from sandbox import Sandbox

PROGRAM = os.environ["QUORVANE_PROGRAM"]
ALONE = run_alone()  # its mounts hide parts of the machine's configuration
POLKITD, FPRINTD = "/usr/lib/polkit-1/polkitd", "/usr/libexec/fprintd"
MISSING = [program for program in (POLKITD, FPRINTD, "/usr/bin/pkttyagent") if not os.path.exists(program)]
RESOURCES = os.path.join(os.path.dirname(__file__), "../../resources")
POLICY = os.path.join(RESOURCES, "vantreal.quorvane.policy")
PRODUCT_RULES = os.path.join(RESOURCES, "system/20-vantreal-quorvane.rules")

USERS = """root:x:0:0:root:/root:/bin/sh
polkitd:x:41900:41900::/nonexistent:/usr/sbin/nologin
messagebus:x:41901:41901::/nonexistent:/usr/sbin/nologin
admina:x:41001:41001::/nonexistent:/bin/sh
adminb:x:41003:41500::/nonexistent:/bin/sh
other:x:41002:41002::/nonexistent:/bin/sh
"""
GROUPS = """root:x:0:
shadow:x:42:
polkitd:x:41900:
messagebus:x:41901:
admina:x:41001:
other:x:41002:
admin:x:41500:admina
"""
# Actions not covered by the product's own rules, such as commands on the folders of a sandbox.
RULES = """
polkit.addAdminRule(function(action, subject) { return ["unix-user:admina"]; });
polkit.addRule(function(action, subject) {
    if (action.id.indexOf("net.reactivated.fprint.device.") == 0)
        return polkit.Result.YES;
});
"""


def as_user(name):
    """The prefix of a command to run as that user."""
    user, group = next(line.split(":")[2:4] for line in USERS.splitlines() if line.startswith(name + ":"))
    return ["setpriv", f"--reuid={user}", f"--regid={group}", "--init-groups"]


@unittest.skipUnless(ALONE, "needs root, and mounts of its own")
@unittest.skipIf(MISSING, f"missing: {' '.join(MISSING)}")
class RealServices(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.sandbox = Sandbox()
        cls.addClassCleanup(cls.sandbox.end)
        # In a place accessible to other users.
        cls.program = shutil.copy(PROGRAM, cls.sandbox.path("program"))
        password = subprocess.run(["openssl", "passwd", "-6", "right"], check=True, capture_output=True,
                                  text=True).stdout.strip()
        shadow = "".join(f"{line.split(':')[0]}:{password}:19000:0:99999:7:::\n" for line in USERS.splitlines())
        for name, text in (("passwd", USERS), ("group", GROUPS), ("shadow", shadow)):
            cls.hide(f"/etc/{name}", cls.sandbox.new_file(name, text))
            cls.addClassCleanup(cls.unhide, f"/etc/{name}")
        for name, file, text in (("/usr/share/polkit-1/actions", "a.policy", None),
                                 ("/etc/polkit-1/rules.d", "90-test.rules", RULES), ("/run/dbus", None, None)):
            folder = cls.sandbox.path(name.replace("/", "-"))
            os.mkdir(folder, 0o755)
            if name.endswith("actions"):
                shutil.copy(POLICY, folder)
                for action in os.listdir(name):
                    if action.startswith(("net.reactivated", "org.freedesktop.policykit")):
                        shutil.copy(os.path.join(name, action), folder)
            elif file:
                cls.sandbox.write(os.path.join(folder, file), text)
                shutil.copy(PRODUCT_RULES, folder)
            cls.hide(name, folder)
            cls.addClassCleanup(cls.unhide, name)
        bus = "/run/dbus/system_bus_socket"
        cls.address = "unix:path=" + bus
        configuration = cls.sandbox.new_file(
            "bus.conf", BUS_CONFIGURATION.format(socket=bus).replace(">session<", ">system<"))
        cls.start("dbus-daemon", "--nofork", "--config-file=" + configuration)
        cls.bus = connect_when_ready(bus, "the system bus")
        os.chmod(bus, 0o666)
        cls.start(POLKITD, "--no-debug")
        cls.wait_for_name("org.freedesktop.PolicyKit1")

    @staticmethod
    def hide(path, behind):
        if os.path.isdir(behind):
            os.makedirs(path, exist_ok=True)
        subprocess.run(["mount", "--bind", behind, path], check=True)

    @staticmethod
    def unhide(path):
        subprocess.run(["umount", "--lazy", path], check=True)

    @classmethod
    def start(cls, *command, **environment):
        process = subprocess.Popen(command, env={**os.environ, "LC_ALL": "C.UTF-8", **environment},
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        cls.addClassCleanup(cls.stop, process)
        return process

    @staticmethod
    def stop(process):
        process.kill()
        process.communicate()

    @classmethod
    def wait_for_name(cls, name):
        eventually(lambda: call(cls.bus, "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "NameHasOwner", "(s)",
                                name)[0], name)

    def agent_of(self, process, user):
        """The terminal at which the user of the process can answer."""
        terminal, agents_end = pty.openpty()
        self.addCleanup(os.close, terminal)
        registered, notify = os.pipe()
        agent = subprocess.Popen(
            [*as_user(user), "pkttyagent", "--process", str(process.pid), "--notify-fd", str(notify)],
            stdin=agents_end, stdout=agents_end, stderr=agents_end, pass_fds=[notify],
            env={"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8"}, start_new_session=True,
            preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0))
        self.addCleanup(self.stop, agent)
        os.close(agents_end)
        os.close(notify)
        with os.fdopen(registered, "rb") as registration:
            registration.read()  # ends when the agent is ready
        return terminal

    def type_password(self, terminal, password):
        self.read_until(terminal, b"Password:")
        # Input typed before the agent has disabled echo is discarded.
        eventually(lambda: not termios.tcgetattr(terminal)[3] & termios.ECHO, "the agent to listen")
        os.write(terminal, password.encode() + b"\n")

    @staticmethod
    def read_until(terminal, text):
        seen = b""
        while text not in seen:
            if not select.select([terminal], [], [], PATIENCE)[0]:
                raise AssertionError(f"the terminal shows only {seen}")
            try:
                seen += os.read(terminal, 4096)
            except OSError as error:  # nobody has it open any more
                raise AssertionError(f"the agent has ended, and the terminal shows {seen}") from error


class FingerReader(RealServices):
    DEVICE = "net.reactivated.Fprint.Device"
    ENROLLED = "other"  # whose right index finger is finger-1

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.reader = cls.sandbox.path("reader")
        prints = cls.sandbox.path("prints")
        os.mkdir(prints)
        cls.start(FPRINTD, "--no-timeout", FP_VIRTUAL_DEVICE=cls.reader, STATE_DIRECTORY=prints,
                  DBUS_SYSTEM_BUS_ADDRESS=cls.address)
        cls.wait_for_name("net.reactivated.Fprint")
        cls.device = call(cls.bus, "net.reactivated.Fprint", "/net/reactivated/Fprint/Manager",
                          "net.reactivated.Fprint.Manager", "GetDefaultDevice")[0]
        cls.enrol(cls.ENROLLED)

    @classmethod
    def call(cls, method, *arguments):
        return call(cls.bus, "net.reactivated.Fprint", cls.device, cls.DEVICE, method,
                    "(" + "s" * len(arguments) + ")", *arguments)

    @classmethod
    def put_finger(cls, name):
        """Puts a finger on the reader once it waits for one."""
        eventually(lambda: call(cls.bus, "net.reactivated.Fprint", cls.device, "org.freedesktop.DBus.Properties", "Get",
                                "(ss)", cls.DEVICE, "finger-needed")[0], "the reader to await a finger")
        with socket.socket(socket.AF_UNIX) as reader:
            reader.connect(cls.reader)
            reader.sendall(f"SCAN {name}".encode())

    @classmethod
    def enrol(cls, user):
        told = []
        context = GLib.MainContext.default()
        cls.bus.signal_subscribe("net.reactivated.Fprint", cls.DEVICE, "EnrollStatus", None, None, 0,
                                 lambda *signal: told.append(signal[5].unpack()))
        cls.call("Claim", user)
        cls.call("EnrollStart", "right-index-finger")
        while not told or not told[-1][1]:
            before = len(told)
            cls.put_finger("finger-1")
            eventually(lambda: (context.iteration(False), len(told) > before)[1], "a word about the finger")
        cls.call("EnrollStop")
        cls.call("Release")
