import os
import shutil
import stat
import subprocess
import unittest

from sandbox import SANITIZER_REPORT, Sandbox

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
ICON_SIZES = (16, 22, 24, 32, 48, 64, 128, 256, 512)
ICONS = ("apps/quorvane-configuration", "mimetypes/application-x-quorvane-rules")
ENTRY = "com.vantreal.quorvane.configuration"
PROGRAMS = ["bin/quorvane-configuration", "bin/quorvanectl", "share/quorvane-tools/integrations/ci/check-rules",
            "share/quorvane-tools/integrations/git/pre-commit"]
FILES = [
    *(f"lib/{kind}.d/{part}.conf" for kind in ("sysusers", "tmpfiles")
      for part in ("quorvane-configuration", "quorvane-tools")),
    "share/bash-completion/completions/quorvanectl",
    "share/fish/vendor_completions.d/quorvanectl.fish",
    f"share/applications/{ENTRY}.desktop",
    f"share/dbus-1/services/{ENTRY}.service",
    *(f"share/icons/hicolor/{size}x{size}/{icon}.png" for size in ICON_SIZES for icon in ICONS),
    *(f"share/icons/hicolor/scalable/{icon}.svg" for icon in ICONS),
    "share/man/man1/quorvane-configuration.1",
    "share/man/man1/quorvanectl.1",
    "share/man/man5/quorvane-rules.5",
    "share/man/man7/quorvane-cookbook.7",
    f"share/metainfo/{ENTRY}.metainfo.xml",
    "share/mime/packages/quorvane-rules.xml",
    "share/polkit-1/actions/vantreal.quorvane.policy",
    "share/polkit-1/rules.d/20-vantreal-quorvane.rules",
    "share/quorvane-configuration/Quorvane User Guide.html",
    "share/quorvane-configuration/Quorvane User Guide.pdf",
    "share/quorvane-configuration/lock.png",
    *(f"share/quorvane-tools/schema/{name}.json" for name in (
        "apply", "check", "codesign", "diff", "history", "import", "list", "options", "rescue", "summary")),
    *(f"share/quorvane-tools/integrations/{name}" for name in (
        "ansible/README.md", "ansible/examples/desks.quorv", "ansible/examples/inventory.yml", "ansible/examples/site.yml",
        "ansible/galaxy.yml", "ansible/meta/runtime.yml", "ansible/plugins/doc_fragments/connection.py",
        "ansible/plugins/module_utils/quorvanectl.py", "ansible/plugins/modules/rules.py",
        "ansible/plugins/modules/rules_facts.py", "ansible/roles/configuration/defaults/main.yml",
        "ansible/roles/configuration/meta/argument_specs.yml", "ansible/roles/configuration/meta/main.yml",
        "ansible/roles/configuration/tasks/main.yml", "ci/README.md", "ci/github-actions.yml", "ci/gitlab-ci.yml",
        "git/gitattributes")),
    "share/zsh/vendor-completions/_quorvanectl",
]


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

    def set_up_system(self, part):
        """Runs what a package of that part makes the system do. Returns the owner and permissions of the rules folder."""
        os.makedirs(os.path.join(self.target, "etc"), exist_ok=True)
        for program, kind in (("systemd-sysusers", []), ("systemd-tmpfiles", ["--create"])):
            subprocess.run([program, "--root=" + self.target, *kind, part + ".conf"], check=True,
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=60)
        status = os.stat(os.path.join(self.target, "Users/Shared/Quorvane"))
        return status.st_uid, status.st_gid, stat.S_IMODE(status.st_mode)

    def group_of_administrators(self):
        with open(os.path.join(self.target, "etc/group")) as file:
            return next(int(line.split(":")[2]) for line in file if line.startswith("admin:"))

    @unittest.skipUnless(os.geteuid() == 0, "needs root")
    def test_the_system_makes_the_folder_for_rules_for_the_group_admin_once(self):
        self.install("--prefix", "/usr", destdir=self.target)
        for part in ("quorvane-tools", "quorvane-configuration"):
            self.assertEqual(self.set_up_system(part), (0, self.group_of_administrators(), 0o775))
        os.chmod(os.path.join(self.target, "Users/Shared/Quorvane"), 0o777)
        self.assertEqual(self.set_up_system("quorvane-tools")[2], 0o777)

    @unittest.skipUnless(os.geteuid() == 0, "needs root")
    def test_the_system_links_the_guide_and_the_icon_where_the_window_looks_and_replaces_nothing(self):
        self.install("--prefix", "/usr", destdir=self.target)
        product = "target/Library/Application Support/Quorvane/"
        os.makedirs(self.sandbox.path(product))
        icon = self.sandbox.new_file(product + "lock.png", "of another package")
        self.set_up_system("quorvane-configuration")
        with open(icon) as file:
            self.assertEqual(file.read(), "of another package")
        guide = os.readlink(self.sandbox.path(product + "Quorvane User Guide.pdf"))
        self.assertTrue(os.path.isfile(self.target + guide))

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
        with open(os.path.join(self.target, f"share/applications/{ENTRY}.desktop")) as file:
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
        # An error in the last file that is read: the program logs it once the window is shown.
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
