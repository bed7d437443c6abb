import glob
import os
import shutil
import subprocess
import tempfile
import unittest

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
RESOURCES = os.path.join(SOURCE, "resources")
POLICY_RULES = "/usr/share/polkit-1/policyconfig-1.dtd"


def resource(name):
    return os.path.join(RESOURCES, name)


class Descriptions(unittest.TestCase):
    """What desktops and readers of manuals get is free of complaints by those who know these formats."""

    def assert_silent(self, *command, **variables):
        done = subprocess.run(command, env={**os.environ, **variables}, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, timeout=60)
        self.assertEqual((done.returncode, done.stdout), (0, ""), command)

    def test_the_desktop_entry_is_valid(self):
        self.assert_silent("desktop-file-validate", resource("com.vantreal.quorvane.configuration.desktop"))

    def test_the_description_for_software_catalogues_is_valid(self):
        done = subprocess.run(["appstreamcli", "validate", "--strict", "--pedantic", "--no-net", "--no-color",
                               resource("com.vantreal.quorvane.configuration.metainfo.xml")],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=60)
        self.assertEqual(done.returncode, 0, done.stdout)

    def test_the_policy_is_valid(self):
        self.assert_silent("xmllint", "--nonet", "--noout", "--dtdvalid", POLICY_RULES,
                           resource("vantreal.quorvane.policy"))

    def test_the_type_of_exchange_files_is_known_by_their_ending(self):
        folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, folder)
        packages = os.path.join(folder, "mime", "packages")
        os.makedirs(packages)
        shutil.copy(resource("quorvane-rules.xml"), packages)
        self.assert_silent("update-mime-database", os.path.join(folder, "mime"), XDG_DATA_DIRS=folder)
        with open(os.path.join(folder, "mime", "globs2")) as file:
            self.assertIn("60:application/x-quorvane-rules:*.quorv\n", file.readlines())
        with open(os.path.join(folder, "mime", "subclasses")) as file:
            self.assertEqual(file.read(), "application/x-quorvane-rules text/plain\n")

    def test_the_manual_pages_are_clean(self):
        pages = sorted(glob.glob(os.path.join(SOURCE, "docs/man/*")))
        self.assertEqual([os.path.basename(page) for page in pages],
                         ["quorvane-configuration.1", "quorvane-cookbook.7", "quorvane-rules.5", "quorvanectl.1"])
        self.assert_silent("mandoc", "-Tlint", "-Wwarning", *pages)
