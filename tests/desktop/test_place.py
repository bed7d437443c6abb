"""Rules can be looked at as those of another machine, whose volume is mounted here, or that is out of reach."""

import os

from desk import FOCUSED, eventually
from rules_window import PATH, DesktopTest

RULE = 'allow path "/only/there" "any" r "" "" "0"'


class Place(DesktopTest):
    def setUp(self):
        super().setUp()
        self.volume = self.sandbox.path("volume")
        os.makedirs(self.volume + "/only/there")
        self.window = self.open_with(RULE)

    def assert_described(self, description):
        self.assert_becomes(lambda: self.window.descriptions(PATH), [description])

    def test_a_mounted_volume_stands_for_the_machine_until_it_no_longer_does(self):
        self.assert_described("file not found")
        self.desk.press("alt+f", "f", "v")
        panel = self.window.program.find("dialog", "Volume of the machine that the rules are for")
        field = panel.find("text", "Name:")
        eventually(lambda: field.has(FOCUSED), "the name to have the keyboard")
        self.desk.press("ctrl+a")
        self.desk.type_text(self.volume)
        self.assert_becomes(lambda: field.text, self.volume)
        self.desk.press("Return")
        self.assert_described("")
        self.window.frame.find("label", f"Rules are for: {self.volume}/")
        self.desk.press("alt+f", "f", "m")
        self.assert_described("file not found")

    def test_nothing_is_missing_on_a_machine_that_is_out_of_reach(self):
        self.desk.press("alt+f", "f", "s")
        self.assert_described("")
        self.window.frame.find("label", "Rules are for: somewhere else")

    def test_a_start_can_name_the_volume(self):
        self.window.close()
        self.window = self.open(QUORVANE_TARGET=self.volume)
        self.assert_described("")
        self.window.frame.find("label", f"Rules are for: {self.volume}")

    def test_a_volume_that_is_not_there_at_the_start_is_reported_at_the_foot(self):
        self.window.close()
        self.window = self.open(QUORVANE_TARGET=self.volume + "/none")
        self.window.frame.find("label", f"{self.volume}/none cannot be used as a volume: No such file or directory")
        self.assert_described("file not found")
