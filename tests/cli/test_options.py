from quorvanectl import CommandTest

NAMES = ["access.user.restrict", "access.user.create", "access.user.detail", "security.hashing.enforce",
         "filter.exec.allow.signed", "policy.global.user", "policy.global.webcam", "policy.global.startup",
         "policy.global.exec", "policy.global.attach", "policy.global.paranoid", "ui.prompts.while_locked",
         "ui.prompts.oob", "ui.prompts.remote", "ui.prompts.authenticate"]


class Options(CommandTest):
    def printed(self):
        return [(option["name"], option["value"]) for option in self.succeed("options", "--json").objects()]

    def test_each_option_of_the_preferences_is_printed_twice_in_a_fixed_order(self):
        self.sandbox.write_preferences(policy_global_exec=3)
        self.assertEqual(self.printed(), [(name, 3 if name == "policy.global.exec" else 0) for name in NAMES * 2])

    def test_the_keys_of_an_option_are_name_and_value(self):
        self.sandbox.write_preferences(policy_global_exec=3)
        self.assertEqual(self.succeed("options", "--json").keys(), [["name", "value"]] * 30)

    def test_a_binary_property_list_says_the_same(self):
        self.sandbox.write_preferences(binary=True, access_user_create=True, ui_prompts_while__locked=7)
        printed = dict(self.printed())
        self.assertEqual((printed["access.user.create"], printed["ui.prompts.while_locked"]), (1, 7))

    def test_values_of_other_types_are_converted(self):
        for value, number in [(True, 1), (False, 0), (2, 2), (2.9, 2), ("3 apples", 3), ("apples", 0), ("", 0),
                              (2**32 + 5, 5), (-1, 2**32 - 1), ([1], 0), ({"a": 1}, 0)]:
            with self.subTest(value=value):
                self.sandbox.write_preferences(access_user_detail=value)
                self.assertEqual(dict(self.printed())["access.user.detail"], number)

    def test_a_number_under_a_boolean_key_is_true_when_it_is_not_0(self):
        for value, number in [(True, 1), (False, 0), (2, 1), (-1, 1), (0, 0), (0.5, 1), ("YES", 1), ("no", 0)]:
            with self.subTest(value=value):
                self.sandbox.write_preferences(access_user_create=value)
                self.assertEqual(dict(self.printed())["access.user.create"], number)

    def test_lines_of_the_main_system_file_follow_the_preferences(self):
        self.sandbox.write_preferences(policy_global_exec=1)
        self.sandbox.write_system("quorvane.rc", 'set "my option" 5', "set policy.global.exec 2 ignored",
                                  "set x 12abc", "set y -1", "set z 4294967297", "set q word", "set alone")
        self.assertEqual(self.printed()[30:], [("my option", 5), ("policy.global.exec", 2), ("x", 12),
                                               ("y", 4294967295), ("z", 1), ("q", 0)])

    def test_lines_of_other_files_are_no_options(self):
        self.sandbox.write_user("set user 1")
        self.sandbox.write_system("user.rc", "set other 1")
        self.sandbox.write_system("paranoid.rc", "set unread 1")
        self.assertEqual(self.printed(), [])

    def test_the_paranoid_file_may_hold_options(self):
        self.sandbox.write_preferences(policy_global_paranoid=1)
        self.sandbox.write_system("paranoid.rc", "set mine 1")
        self.assertEqual(self.printed()[30:], [("mine", 1)])

    def test_a_broken_property_list_counts_as_none(self):
        for contents in (b"", b"no property list", b"<plist><dict><key>policy.global.exec</key>", b"bplist00\xff",
                         b"<plist><array/></plist>", b"\0" * 100):
            with self.subTest(contents=contents):
                self.sandbox.write(self.sandbox.preferences_file, contents)
                self.sandbox.write_system("quorvane.rc", "set only 1")
                self.assertEqual(self.printed(), [("only", 1)])

    def test_without_json_each_option_is_one_line(self):
        self.sandbox.write_system("quorvane.rc", "set first 1", "set second 22")
        self.assertEqual(self.succeed("options").out, b"first 1\nsecond 22\n")
