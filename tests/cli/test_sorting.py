from quorvanectl import CommandTest

KEYS = ["policyClass", "policyType", "path", "processName", "tag", "constraint", "operations", "flags", "created",
        "sequence", "system"]

USER_RULES = [
    'watch suffix "/b" "/bin/two" rw "B"', 'watch prefix "/A" "any" r', 'watch path "/c" "any" r "a"',
    'allow prefix "/B" "/bin/one" rwc "b" "T2" "-1"', 'deny path "/a" "/bin/One" x "" "" "10"',
    'other suffix "/ab" "any" m "A" "t1" "9"', 'allow suffix "/a b" "any" r "É"',
    'deny prefix "/é" "any" w "é" "T10"',
    'allow path "/abcdefgh" "any" r "ab"', 'allow path "/abcdefghi" "any" r "B"', 'allow path "" "any" c "" "" "100"',
    'deny path "/Abcdefg" "any" r',
]


def sort_value(rule, key):
    """What `rule` sorts by; absent values come before all others."""
    value = rule[key]
    if key == "policyClass" and rule["kind"] == "watch":
        value = 0  # the property of a watch rule, not the class that is shown
    if value is None:
        return (0, 0)
    return (1, value.casefold() if isinstance(value, str) else int(value))


def sorted_by(rules, *descriptors):
    for key, descending in reversed(descriptors):
        # Also turned round, rules that tie keep their order.
        rules = sorted(rules, key=lambda rule: sort_value(rule, key), reverse=descending)
    return [rule["sequence"] for rule in rules]


class Sorting(CommandTest):
    def setUp(self):
        super().setUp()
        self.sandbox.write_user(*USER_RULES)
        self.sandbox.write_system("quorvane.rc", "allow prefix /system any r us", "watch prefix /system any r s",
                                  "deny prefix /System any r u")
        self.rules = self.succeed("list", "--json", "--system").objects()
        self.assertEqual(len(self.rules), 15)

    def order(self, *sorts):
        arguments = [word for sort in sorts for word in ("--sort", sort)]
        return self.listed("--system", *arguments, key="sequence")

    def test_each_key_sorts_upwards(self):
        for key in KEYS:
            with self.subTest(key=key):
                self.assertEqual(self.order(key), sorted_by(self.rules, (key, False)))

    def test_each_key_sorts_downwards(self):
        for key in KEYS:
            with self.subTest(key=key):
                self.assertEqual(self.order(key + ":desc"), sorted_by(self.rules, (key, True)))

    def test_each_further_key_breaks_the_ties_of_those_before(self):
        for first in KEYS:
            for second in KEYS:
                with self.subTest(first=first, second=second):
                    self.assertEqual(self.order(first + ":desc", second),
                                     sorted_by(self.rules, (first, True), (second, False)))

    def test_three_keys_count_in_the_order_given(self):
        self.assertEqual(self.order("system:desc", "policyType", "tag:desc"),
                         sorted_by(self.rules, ("system", True), ("policyType", False), ("tag", True)))

    def test_creation_times_compare_as_unsigned_numbers(self):
        created = self.listed("--sort", "created", key="created")
        self.assertEqual(created[:4], [None, None, None, 0])
        self.assertEqual(created[-4:], [9, 10, 100, 18446744073709551615])

    def test_texts_compare_by_code_point_whatever_the_case(self):
        self.assertEqual(self.listed("--sort", "path", "--filter", "/a"),
                         ["/A", "/a", "/a b", "/ab", "/Abcdefg", "/abcdefgh", "/abcdefghi"])

    def test_letters_that_fold_together_tie(self):
        paths = ["/\u03c2b", "/\u03c3a", "/\u03a3c", "/\u017fb", "/sa", "/Sc", "/stra\u00dfe2", "/STRASSE1"]
        self.sandbox.write_user(*(f"allow path {path} any r" for path in paths))
        self.assertEqual(self.listed("--sort", "path"), sorted(paths, key=str.casefold))

    def test_a_sorted_list_is_filtered_and_numbered_as_well(self):
        rules = self.succeed("list", "--json", "--sort", "path:desc", "--filter", "abcdef").objects()
        self.assertEqual([(rule["row"], rule["path"]) for rule in rules],
                         [(0, "/abcdefghi"), (1, "/abcdefgh"), (2, "/Abcdefg")])

    def test_an_unknown_key_or_direction_is_a_usage_error(self):
        for sort in ("", "row", "Path", "path:", "path:asc", "path:DESC", "path,tag", ":desc", "ruleState", "kind"):
            with self.subTest(sort=sort):
                self.assertEqual(self.fail_with(2, "list", "--sort", sort).out, b"")
