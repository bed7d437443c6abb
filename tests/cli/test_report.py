import os
import stat
from html.parser import HTMLParser

from quorvanectl import CommandTest

RULES = ['allow prefix /Users/ann/ /bin/sh rwc "work <b>&amp;</b>"', "deny path /Users/ann/letter /bin/sh w",
         "watch path /none/watched any r", 'allow suffix ".<script>alert(1)</script>" any r',
         'allow path "/none/\x1b[31m\u202ered" "/bin/sh via /no\'such" r']
VOID = {"meta", "br", "link", "img", "input", "hr"}


class Page(HTMLParser):
    """What a reader of the page meets: elements in order, and the text of each table's cells."""

    def __init__(self, text):
        super().__init__()
        self.open, self.elements, self.attributes, self.tables, self.problems = [], [], [], [], []
        self.feed(text)
        self.close()

    def handle_starttag(self, tag, attrs):
        self.elements.append(tag)
        self.attributes += attrs
        if tag not in VOID:
            self.open.append(tag)
        if tag == "table":
            self.tables.append([])
        elif tag == "tr":
            self.tables[-1].append([])
        elif tag in ("td", "th"):
            self.tables[-1][-1].append("")

    def handle_endtag(self, tag):
        if not self.open or self.open.pop() != tag:
            self.problems.append(tag)

    def handle_data(self, data):
        if "td" in self.open or "th" in self.open:
            self.tables[-1][-1][-1] += data


class Report(CommandTest):
    def page(self, *arguments):
        out = self.sandbox.path("report.html")
        self.succeed("report", *arguments[:1], out, *arguments[1:]) if arguments[:1] == ("--no-target",) \
            else self.succeed("report", out, *arguments)
        with open(out, encoding="utf-8") as file:
            self.text = file.read()
        page = Page(self.text)
        self.assertEqual((page.problems, page.open), ([], []))
        return page

    def test_it_holds_map_problems_and_rules(self):
        self.sandbox.write_user(*RULES)
        page = self.page()
        folders, *problems, rules = page.tables
        self.assertIn(["/Users/ann/", "1", "1", "0", "", "/bin/sh (2)"], folders)
        self.assertIn(["/none/", "1", "0", "1", "", "/bin/sh via /no'suchany"], folders)
        self.assertEqual(len(rules), 1 + len(RULES))
        self.assertEqual(rules[1][:5], ["0", "watch", "path", "/none/watched", "r"])
        told = [row[2] for table in problems for row in table[1:]]
        self.assertIn("Nothing exists at this path.", told)
        self.assertTrue(any(text.startswith("Overlaps with") for text in told))

    def test_nothing_in_a_rule_has_an_effect(self):
        self.sandbox.write_user(*RULES)
        page = self.page()
        self.assertNotIn("script", page.elements)
        self.assertNotIn("b", page.elements)
        self.assertNotIn("\x1b", self.text)
        self.assertIn(["work <b>&amp;</b>"], [row[-1:] for row in page.tables[-1]])
        self.assertEqual(self.text.count("<bdi>"), self.text.count("</bdi>"))

    def test_it_needs_nothing_from_elsewhere(self):
        self.sandbox.write_user(*RULES)
        page = self.page()
        self.assertFalse({"script", "link", "img", "iframe", "object", "form"} & set(page.elements))
        self.assertFalse([name for name, _ in page.attributes if name.startswith("on") or name == "src"])
        self.assertEqual([value for name, value in page.attributes if name == "href"], ["#map", "#problems", "#rules"])
        self.assertNotIn("http", self.text.replace("http-equiv", ""))

    def test_its_parts_have_headings_captions_and_titles_of_columns(self):
        self.sandbox.write_user(*RULES)
        page = self.page()
        self.assertIn(("lang", "en"), page.attributes)
        self.assertEqual(page.elements.count("table"), page.elements.count("caption"))
        self.assertEqual([element for element in page.elements if element in ("h1", "h2", "main")],
                         ["h1", "main", "h2", "h2", "h2"])
        scopes = [value for name, value in page.attributes if name == "scope"]
        self.assertEqual(len(scopes), page.elements.count("th"))

    def test_without_a_target_nothing_is_missing(self):
        file = self.sandbox.new_file("rules", ["allow path /none any r"])
        page = self.page("--no-target", file)
        self.assertEqual(len(page.tables), 2)
        self.assertIn("None was found.", self.text)

    def test_the_file_may_be_a_link_and_the_page_may_not(self):
        link = self.sandbox.path("link")
        os.symlink(self.sandbox.new_file("rules", ["allow path /none any r"]), link)
        self.page(link)
        page = self.sandbox.path("page")
        os.symlink(self.sandbox.path("report.html"), page)
        self.fail_with(3, "report", page)

    def test_a_new_page_is_readable_by_owner_and_group_and_an_old_one_keeps_its_bits(self):
        self.page()
        out = self.sandbox.path("report.html")
        self.assertEqual(stat.S_IMODE(os.stat(out).st_mode), 0o640)
        os.chmod(out, 0o604)
        self.page()
        self.assertEqual(stat.S_IMODE(os.stat(out).st_mode), 0o604)

    def test_what_cannot_be_read_is_a_failure_and_writes_nothing(self):
        out = self.sandbox.path("report.html")
        for arguments in ([out, self.sandbox.path("missing")], [out, self.sandbox.home],
                          [out, self.sandbox.new_file("latin", b"allow suffix .\xe9 any r\n")],
                          ["--target", self.sandbox.path("none"), out], [self.sandbox.path("none/report.html")]):
            with self.subTest(arguments=arguments):
                self.fail_with(3, "report", *arguments)
        self.assertFalse(os.path.exists(out))
        self.fail_with(2, "report")
