import os
import shutil
import stat
import subprocess
import unittest

from sandbox import SANITIZER_REPORT, Sandbox

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
PRODUCT_FOLDER = "Library/Application Support/Quorvane/"
ICON_SIZES = (16, 22, 24, 32, 48, 64, 128, 256, 512)
ICONS = ("apps/quorvane-configuration", "mimetypes/application-x-quorvane-rules")
PROGRAMS = ["bin/quorvane-configuration", "bin/quorvanectl"]
FILES = [
    "share/applications/quorvane-configuration.desktop",
    "share/doc/quorvane-configuration/Quorvane User Guide.pdf",
    *(f"share/icons/hicolor/{size}x{size}/{icon}.png" for size in ICON_SIZES for icon in ICONS),
    *(f"share/icons/hicolor/scalable/{icon}.svg" for icon in ICONS),
    "share/man/man1/quorvane-configuration.1",
    "share/man/man1/quorvanectl.1",
    "share/man/man5/quorvane-rules.5",
    "share/mime/packages/quorvane-rules.xml",
    "share/polkit-1/actions/vantreal.quorvane.policy",
]
PRODUCT_FILES = ["Quorvane User Guide.pdf", "lock.png"]


def modes(folder):
    """The files below the folder and their permission bits."""
    found = {}
    for place, _, names in os.walk(folder):
        for name in names:
            file = os.path.join(place, name)
            found[os.path.relpath(file, folder)] = stat.S_IMODE(os.lstat(file).st_mode)
    return found


def expected(prefix):
    return {**{prefix + name: 0o755 for name in PROGRAMS}, **{prefix + name: 0o644 for name in FILES}}


class Installation(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.sandbox = Sandbox()
        self.addCleanup(self.sandbox.end)
        self.target = self.sandbox.path("target")

    def install(self, *options, destdir=None):
        environment = {**os.environ, **({"DESTDIR": destdir} if destdir else {})}
        subprocess.run([os.environ["QUORVANE_CMAKE"], "--install", os.environ["QUORVANE_BUILD"], *options],
                       env=environment, check=True, stdout=subprocess.DEVNULL, timeout=120)

    def environment(self):
        return {"PATH": os.environ["PATH"], "HOME": self.sandbox.home, "LC_ALL": "C.UTF-8",
                "QUORVANE_ROOT": self.sandbox.root, "QT_QPA_PLATFORM": "offscreen",
                "XDG_RUNTIME_DIR": self.sandbox.home, "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent",
                "DBUS_SYSTEM_BUS_ADDRESS": "unix:path=/nonexistent"}

    def test_an_install_writes_these_files_below_its_prefix_and_no_others(self):
        self.install("--prefix", self.target)
        self.assertEqual(modes(self.target), expected(""))

    def test_a_staged_install_holds_the_same_files_below_the_prefix(self):
        self.install("--prefix", "/usr", destdir=self.target)
        self.assertEqual(modes(self.target), expected("usr/"))

    def test_the_product_component_fills_the_folder_where_the_programs_look(self):
        self.install("--component", "product", destdir=self.target)
        self.assertEqual(modes(self.target), {PRODUCT_FOLDER + name: 0o644 for name in PRODUCT_FILES})

    def test_icons_have_the_size_of_their_folder(self):
        self.install("--prefix", self.target)
        for size in ICON_SIZES:
            for icon in ICONS:
                with open(os.path.join(self.target, f"share/icons/hicolor/{size}x{size}/{icon}.png"), "rb") as file:
                    start = file.read(24)
                self.assertEqual(start[:8], b"\x89PNG\r\n\x1a\n")
                self.assertEqual((int.from_bytes(start[16:20], "big"), int.from_bytes(start[20:], "big")), (size, size))

    def test_the_desktop_entry_names_what_is_installed(self):
        self.install("--prefix", self.target)
        with open(os.path.join(self.target, "share/applications/quorvane-configuration.desktop")) as file:
            lines = file.read().splitlines()
        programs = {line.split("=")[1].split()[0] for line in lines if line.startswith("Exec=")}
        self.assertEqual(programs, {"quorvane-configuration"})
        self.assertIn("Icon=quorvane-configuration", lines)
        self.assertIn("MimeType=application/x-quorvane-rules;", lines)

    def test_the_installed_command_line_works(self):
        self.install("--prefix", self.target)
        program = os.path.join(self.target, "bin/quorvanectl")
        help_text = subprocess.run([program, "--help"], env=self.environment(), check=True, stdout=subprocess.PIPE,
                                   timeout=60).stdout
        self.assertIn(b"list", help_text)
        listed = subprocess.run([program, "list", os.path.join(SOURCE, "samples/Photo Tools,2.quorv")],
                                env=self.environment(), check=True, stdout=subprocess.PIPE, timeout=60).stdout
        self.assertEqual(len(listed.splitlines()), 1 + 12)

    def test_the_installed_window_opens(self):
        self.install("--prefix", self.target)
        # A fault in the last file that is read: the program tells of it in its log once the window is shown.
        os.symlink("elsewhere", self.sandbox.system_file("exec.rc"))
        self.sandbox.write_system("elsewhere", "allow path /a any r")
        program = subprocess.Popen([os.path.join(self.target, "bin/quorvane-configuration")],
                                   env={**self.environment(), "QUORVANE_LOG": "stderr"},
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.PIPE, text=True)
        with program:
            self.addCleanup(program.kill)
            lines = []
            for line in program.stderr:
                lines.append(line)
                if line.startswith("error on load: "):
                    program.terminate()
        self.assertRegex("".join(lines), "error on load: Failed to open file .*exec.rc")
        self.assertNotRegex("".join(lines), SANITIZER_REPORT)
