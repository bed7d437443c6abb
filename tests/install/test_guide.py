import os
import re
import subprocess
import unittest

SOURCE = os.path.join(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))), "docs/guide")
GUIDE = os.path.join(os.environ["QUORVANE_BUILD"], "docs/guide/Quorvane User Guide.pdf")


def answer(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, timeout=60).stdout


def page_text(number):
    return answer("pdftotext", "-layout", "-f", str(number), "-l", str(number), GUIDE, "-")


class Guide(unittest.TestCase):
    """The user guide as it is built from its source."""

    @classmethod
    def setUpClass(cls):
        with open(os.path.join(SOURCE, "guide.md")) as file:
            cls.source = file.read()
        cls.headings = re.findall(r"(?m)^##+ (.*)$", cls.source)
        cls.pages = [page_text(number + 1) for number in range(int(
            re.search(r"Pages: +(\d+)", answer("pdfinfo", GUIDE))[1]))]

    def test_it_has_several_pages_of_text(self):
        self.assertGreater(len(self.pages), 5)
        for page in self.pages:
            self.assertGreater(len(page.split()), 20)

    def test_the_title_page_names_the_guide(self):
        self.assertEqual(self.pages[0].split("\n")[0].strip(), "Quorvane User Guide")
        self.assertIn("Title:           Quorvane User Guide\n", answer("pdfinfo", GUIDE))

    def test_the_contents_tell_the_page_of_every_heading(self):
        entries = re.findall(r"(?m)^ *(\S.*?) {2,}(\d+)$", self.pages[0].partition("Contents")[2])
        self.assertEqual([title for title, _ in entries], self.headings)
        for title, page in entries:
            self.assertRegex(self.pages[int(page) - 1], rf"(?m)^ *{re.escape(title)}$")

    def test_no_heading_ends_a_page(self):
        for number, page in enumerate(self.pages[1:], 2):
            *lines, footer = [line.strip() for line in page.split("\n") if line.strip("\f ")]
            self.assertRegex(footer, rf"^Quorvane User Guide +{number}$")
            followed_by_picture = f"# {lines[-1]}\n\n![" in self.source
            self.assertTrue(lines[-1] not in self.headings or followed_by_picture, lines[-1])

    def test_no_text_is_lost(self):
        """Every word of the source stands in the guide, as often as in the source."""
        words = re.sub(r"!\[.*?\]\(.*?\)|^\|[-|]+$|^#.*$", " ", self.source.partition("\n## ")[2], flags=re.M)
        text = re.sub(r"\W", "", "".join(page.rpartition("Quorvane User Guide")[0] for page in self.pages))
        for word in set(re.findall(r"\w{4,}", words)):
            self.assertGreaterEqual(text.count(word), len(re.findall(rf"\b{word}\b", words)), word)

    def test_every_picture_is_there_and_shown(self):
        pictures = re.findall(r"!\[.+?\]\((.*?)\)", self.source)
        self.assertGreaterEqual(len(pictures), 1)
        for picture in pictures:
            self.assertTrue(os.path.isfile(os.path.join(SOURCE, picture)), picture)
        shown = [line for line in answer("pdfimages", "-list", GUIDE).splitlines()[2:] if " image " in line]
        self.assertEqual(len(shown), len(pictures))

    def test_its_fonts_are_inside(self):
        fonts = answer("pdffonts", GUIDE).splitlines()[2:]
        self.assertTrue(fonts)
        for font in fonts:
            self.assertRegex(font, r"^DejaVu.* yes +\w+ +yes +[0-9]+ +0$", "embedded, and known by its letters")
