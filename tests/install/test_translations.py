"""The translations are whole: every text of the windows, with what is put into it and the letter that leads to it."""

import os
import re
import shutil
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

PROJECT = os.path.abspath(os.path.join(os.path.dirname(__file__), "../.."))
SOURCES = os.path.join(PROJECT, "resources/translations")


def messages(file):
    """(context, text, translation or None while it is unfinished)"""
    for context in ElementTree.parse(file).getroot().iter("context"):
        for message in context.iter("message"):
            translation = message.find("translation")
            yield (context.find("name").text, message.find("source").text,
                   None if translation.get("type") else translation.text)


class Translations(unittest.TestCase):
    def each(self):
        for name in sorted(os.listdir(SOURCES)):
            yield os.path.join(SOURCES, name)

    def test_every_text_is_translated(self):
        for file in self.each():
            self.assertEqual([entry for entry in messages(file) if not entry[2]], [])

    def test_what_is_put_in_and_the_letters_that_lead_to_controls_are_kept(self):
        for file in self.each():
            for _, text, translation in messages(file):
                with self.subTest(text=text):
                    self.assertEqual(sorted(re.findall(r"%\d", translation)), sorted(re.findall(r"%\d", text)))
                    self.assertEqual(len(re.findall(r"&\w", translation)), len(re.findall(r"&\w", text)))

    def test_the_texts_are_those_of_the_windows(self):
        """tools/update_translations brings them up to date."""
        with tempfile.TemporaryDirectory() as folder:
            for file in self.each():
                fresh = os.path.join(folder, os.path.basename(file))
                shutil.copy(file, fresh)
                subprocess.run(["/usr/lib/qt6/bin/lupdate", "-silent", "-no-obsolete", "-locations", "none", "-I", ".",
                                "app", "windows", "platform", "resources", "-ts", fresh], cwd=PROJECT, check=True,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                self.assertEqual({entry[:2] for entry in messages(fresh)}, {entry[:2] for entry in messages(file)})


if __name__ == "__main__":
    unittest.main()
