"""What quorvane-window-image draws is seen in the pictures of the guide; how it is called, here."""

import os
import subprocess
import unittest

from sandbox import Sandbox, read

PROGRAM = os.environ["QUORVANE_PROGRAM"]
RULES = ['allow prefix "/Users/ann/" "/usr/bin/vi" r', 'watch path "/etc/hosts" "any" w']
USAGE = ("usage: quorvane-window-image FILE.png [main [ROW] | problems ROW | narrow CLASS | item NAME[+NAME...] FIRST-ROW "
         "RULES WIDTH HEIGHT | menu NAME | editor ROW | review RULES-FILE | touching PATH | map | history | preferences]\n")
UNNAMED = [["elsewhere"], ["main", "1", "2"], ["problems"], ["problems", "0", "1"], ["problems", "2"], ["narrow"],
           ["narrow", "1", "2"], ["item", "mapMenuItem", "0", "0", "400"], ["item", "noMenuItem", "0", "1", "400", "300"],
           ["menu"], ["menu", "noMenu"], ["menu", "placeMenu", "1"], ["editor"], ["editor", "0", "1"], ["editor", "2"],
           ["editor", "-1"], ["review"], ["review", "one", "two"], ["touching"], ["touching", "/etc/hosts", "1"],
           ["map", "1"], ["history", "1"], ["preferences", "1"]]


class WindowImage(unittest.TestCase):
    def setUp(self):
        self.sandbox = Sandbox()
        self.addCleanup(self.sandbox.end)
        self.sandbox.write_user(*RULES)

    def take(self, *arguments, volume=""):
        environment = {"PATH": "/usr/bin:/bin", "HOME": self.sandbox.home, "XDG_RUNTIME_DIR": self.sandbox.folder,
                       "QUORVANE_ROOT": self.sandbox.root, "QUORVANE_TARGET": volume, "ASAN_OPTIONS": "detect_leaks=0"}
        done = subprocess.run([PROGRAM, *arguments], env=environment, timeout=60, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True, check=False)
        return done.returncode, done.stderr

    def picture(self, *words, volume=""):
        file = self.sandbox.path("picture.png")
        self.assertEqual(self.take(file, *words, volume=volume)[0], 0)
        return read(file)

    def test_words_that_name_no_window_are_told_how_to(self):
        file = self.sandbox.path("picture.png")
        for arguments in ([], *([file, *words] for words in UNNAMED)):
            with self.subTest(arguments):
                status, errors = self.take(*arguments)
                self.assertEqual(status, 2)
                self.assertTrue(errors.endswith(USAGE), errors)
                self.assertFalse(os.path.exists(file))

    def test_a_file_that_cannot_be_written_is_told(self):
        file = self.sandbox.path("missing/picture.png")
        status, errors = self.take(file, "map")
        self.assertEqual(status, 1)
        self.assertIn(f"quorvane-window-image: cannot write '{file}'\n", errors)

    def test_without_words_it_shows_the_top_of_the_main_window(self):
        self.sandbox.write_user(*(f'allow path "/{number}" "any" r' for number in range(100)))
        self.assertEqual(self.picture(), self.picture("main", "0"))
        self.assertNotEqual(self.picture("main", "1"), self.picture("main", "0"))

    def test_editors_look_programs_up_on_the_volume(self):
        self.sandbox.write_user('allow path "any" "/program" r', 'watch path "any" "/program" r')
        os.mkdir(self.sandbox.path("volume"))
        self.sandbox.new_file("volume/program")
        for row in ("0", "1"):
            here = self.picture("editor", row)
            self.assertNotEqual(self.picture("editor", row, volume=self.sandbox.path("volume")), here)

    def test_each_rule_has_the_editor_of_its_class(self):
        self.assertNotEqual(self.picture("editor", "0"), self.picture("editor", "1"))
