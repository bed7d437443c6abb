"""A separate product installation for a test, in a temporary folder."""

import os
import plistlib
import pwd
import re
import shutil
import tempfile

# The output of a sanitizer before it ends a program.
SANITIZER_REPORT = re.compile(r"Sanitizer|runtime error:")


def login_name(user=None):
    user = os.getuid() if user is None else user
    try:
        return pwd.getpwuid(user).pw_name
    except KeyError:
        return str(user)


def text_of(lines):
    """The contents of a rules file with these lines; bytes and complete texts are unchanged."""
    if isinstance(lines, bytes):
        return lines
    if isinstance(lines, str):
        return lines.encode()
    return "".join(line + "\n" for line in lines).encode()


class Sandbox:
    def __init__(self, user=None, parent=None):
        self.folder = tempfile.mkdtemp(prefix="quorvane-test-", dir=parent)
        os.chmod(self.folder, 0o755)
        self.root = self.path("root")
        self.home = self.path("home")
        self.shared = self.path("root/Users/Shared/Quorvane")
        self.system = self.path("root/Library/Application Support/Quorvane")
        for folder in (self.home, self.shared, self.system):
            os.makedirs(folder)
        self.user_file = os.path.join(self.shared, login_name(user) + ".quorvane.rc")
        self.preferences_file = os.path.join(self.shared, "vantreal.Quorvane.preferences.plist")

    def end(self):
        shutil.rmtree(self.folder, ignore_errors=True)

    def path(self, name):
        return os.path.join(self.folder, name)

    def system_file(self, name):
        return os.path.join(self.system, name)

    def write(self, path, lines):
        with open(path, "wb") as file:
            file.write(text_of(lines))
        return path

    def new_file(self, name, lines=""):
        """A file beside the root folder, of the kind that rules can name."""
        return self.write(self.path(name), lines)

    def write_user(self, *lines):
        return self.write(self.user_file, lines)

    def write_system(self, name, *lines):
        return self.write(self.system_file(name), lines)

    def write_preferences(self, binary=False, **values):
        """Underscores in the names mean dots, double ones an underscore."""
        keys = {name.replace("__", "\0").replace("_", ".").replace("\0", "_"): value for name,
                value in values.items()}
        with open(self.preferences_file, "wb") as file:
            plistlib.dump(keys, file, fmt=plistlib.FMT_BINARY if binary else plistlib.FMT_XML)


def read(path):
    with open(path, "rb") as file:
        return file.read()
