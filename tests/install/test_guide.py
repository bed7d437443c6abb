import functools
import html.parser
import json
import os
import re
import subprocess
import tempfile
import unittest

from PIL import Image, ImageChops

DOCS = os.path.join(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))), "docs")
SOURCE = os.path.join(DOCS, "guide")
BUILD = os.environ["QUORVANE_BUILD"]
GUIDE = os.path.join(BUILD, "docs/guide/Quorvane User Guide.pdf")
PAGE = os.path.join(BUILD, "docs/guide/Quorvane User Guide.html")


def answer(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, timeout=60).stdout


def page_text(number):
    return answer("pdftotext", "-layout", "-f", str(number), "-l", str(number), GUIDE, "-")


def plain(markdown):
    """The text of Markdown: links by their texts, without markup."""
    return re.sub(r"[*`]", "", re.sub(r"\[(.*?)\]\(.*?\)", r"\1", markdown))


class Source:
    """The source of the guide."""

    def __init__(self):
        with open(os.path.join(SOURCE, "guide.md")) as file:
            self.text = file.read()
        self.headings = [(len(marks), plain(title)) for marks, title in re.findall(r"(?m)^(##+) (.*)$", self.text)]
        self.titles = [title for _, title in self.headings]
        self.pictures = re.findall(r"!\[(.+?)\]\((.*?)\)", self.text)
        self.links = re.findall(r"\]\(#(.*?)\)", self.text)


class Guide(unittest.TestCase):
    """The user guide as PDF."""

    @classmethod
    def setUpClass(cls):
        cls.source = Source()
        cls.information = answer("pdfinfo", GUIDE)
        cls.pages = [page_text(number + 1) for number in range(int(re.search(r"Pages: +(\d+)", cls.information)[1]))]
        described = json.loads(answer("qpdf", "--json", GUIDE))
        cls.outline = described["outlines"]
        cls.objects = [entry["value"] for entry in described["qpdf"][1].values() if isinstance(entry.get("value"), dict)]

    def objects_with(self, key, value):
        return [item for item in self.objects if item.get(key) == value]

    def text_after_contents(self):
        """The pages from the first chapter on."""
        first, *others = self.pages
        text = "".join([first, *(page.rpartition("Quorvane User Guide")[0] for page in others)])
        return text.replace("\f", "\n").rpartition(f"\n{self.source.titles[0]}\n")[2]

    def test_it_has_several_pages_of_text(self):
        self.assertGreater(len(self.pages), 5)
        for page in self.pages:
            self.assertGreater(len(page.split()), 20)

    def test_the_title_page_names_the_guide_and_its_version(self):
        first, *others = [line.strip() for line in self.pages[0].split("\n")]
        self.assertEqual(first, "Quorvane User Guide")
        self.assertRegex("\n".join(others[:9]), r"(?m)^Version \d+\.\d+\.\d+$")
        self.assertIn("Title:           Quorvane User Guide\n", self.information)

    def test_the_contents_tell_the_page_of_every_heading(self):
        contents = "\n".join(self.pages).partition("\nContents\n")[2]
        entries = re.findall(r"(?m)^ *(\S.*?) {2,}(\d+)$", contents)[:len(self.source.titles)]
        self.assertEqual([title for title, _ in entries], self.source.titles)
        for title, page in entries:
            self.assertRegex(self.pages[int(page) - 1], rf"(?m)^ *{re.escape(title)}$")

    def test_the_outline_leads_to_every_heading(self):
        def entries(level, kids):
            for kid in kids:
                yield level, kid["title"], kid["destpageposfrom1"]
                yield from entries(level + 1, kid["kids"])
        found = list(entries(1, self.outline))
        self.assertEqual([entry[:2] for entry in found], [(1, "Quorvane User Guide"), *self.source.headings])
        for _, title, page in found:
            self.assertRegex(self.pages[page - 1], rf"(?m)^ *{re.escape(title)}$")

    def test_every_link_leads_to_a_place_in_the_guide(self):
        places = set(re.findall(r'(?m)"(.+)"$', answer("pdfinfo", "-dests", GUIDE)))
        targets = [link["/Dest"].removeprefix("u:") for link in self.objects_with("/Subtype", "/Link")]
        self.assertLessEqual(set(targets), places)
        for target in self.source.links:
            self.assertIn(target, targets)
        self.assertGreaterEqual(len(targets), len(self.source.headings) + len(self.source.links))

    def test_no_heading_ends_a_page(self):
        for number, page in enumerate(self.pages[1:], 2):
            *lines, footer = [line.strip() for line in page.split("\n") if line.strip("\f ")]
            self.assertRegex(footer, rf"^Quorvane User Guide +{number}$")
            followed_by_picture = f"# {lines[-1]}\n\n![" in self.source.text
            self.assertTrue(lines[-1] not in self.source.titles or followed_by_picture, lines[-1])

    def test_no_text_is_lost(self):
        """Every word of the source stands in the guide, as often as in the source."""
        chapters = self.source.text[self.source.text.index("\n## "):]
        words = plain(re.sub(r"!\[.*?\]\(.*?\)|^\|[-|]+$|^#.*$", " ", chapters, flags=re.M))
        text = re.sub(r"\W", "", self.text_after_contents())
        for word in set(re.findall(r"\w{4,}", words)):
            self.assertGreaterEqual(text.count(word), len(re.findall(rf"\b{word}\b", words)), word)

    def test_every_picture_is_there_and_shown_with_letters_of_eight_points(self):
        self.assertGreaterEqual(len(self.source.pictures), 1)
        for _, picture in self.source.pictures:
            self.assertTrue(os.path.isfile(os.path.join(SOURCE, picture)), picture)
        lines = [line.split() for line in answer("pdfimages", "-list", GUIDE).splitlines()[2:]]
        shown = [line for line in lines if line[2] == "image"]
        self.assertEqual(len(shown), len(self.source.pictures))
        # Window text is 12 pixels high; images have twice the resolution.
        for resolution in (int(line[12]) for line in shown):
            self.assertGreaterEqual(2 * 12 / resolution * 72, 7.9)

    def test_it_is_tagged_and_tells_its_language(self):
        self.assertRegex(self.information, r"(?m)^Tagged: +yes$")
        [catalogue] = self.objects_with("/Type", "/Catalog")
        self.assertEqual(catalogue["/Lang"], "u:en")

    def test_its_tags_tell_headings_pictures_and_titles_of_columns(self):
        structure = answer("pdfinfo", "-struct-text", GUIDE)
        for level, title in self.source.headings:
            self.assertRegex(structure, rf'H{level} \(block\)\n +"{re.escape(title)}"\n')
        alternatives = [figure["/Alt"].removeprefix("u:") for figure in self.objects_with("/S", "/Figure")]
        self.assertEqual(alternatives, [text for text, _ in self.source.pictures])
        titles = self.objects_with("/S", "/TH")
        self.assertTrue(titles)
        for title in titles:
            self.assertEqual(title["/A"], {"/O": "/Table", "/Scope": "/Column"})

    def test_its_tags_hold_all_text_once_and_in_its_order(self):
        pieces = re.findall(r'(?m)^ +"(.*)"$', answer("pdfinfo", "-struct-text", GUIDE))
        told = re.sub(r"\s", "", "".join(pieces))
        paragraphs = re.findall(r"(?m)^[A-Z][^|\n]{40,}$", self.source.text)
        self.assertTrue(paragraphs)
        for paragraph in paragraphs:
            self.assertEqual(told.count(re.sub(r"\s", "", plain(paragraph))), 1, paragraph)

    def test_its_fonts_are_inside(self):
        fonts = answer("pdffonts", GUIDE).splitlines()[2:]
        self.assertTrue(fonts)
        for font in fonts:
            self.assertRegex(font, r"^[A-Z]+\+DejaVu.* yes +\w+ +yes +[0-9]+ +0 *$", "embedded, and known by its letters")


class Elements(html.parser.HTMLParser):
    """The elements of a page, with their attributes."""

    def __init__(self, text):
        super().__init__()
        self.found = []
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        self.found.append((tag, dict(attributes)))

    def values(self, tag, attribute):
        return [attributes.get(attribute) for found, attributes in self.found if found == tag]


class Page(unittest.TestCase):
    """The user guide as HTML."""

    @classmethod
    def setUpClass(cls):
        cls.source = Source()
        with open(PAGE, encoding="utf-8") as file:
            cls.elements = Elements(file.read())

    def test_it_tells_its_language(self):
        self.assertEqual(self.elements.values("html", "lang"), ["en"])

    def test_every_link_leads_to_a_place_on_it(self):
        places = [attributes["id"] for _, attributes in self.elements.found if "id" in attributes]
        targets = [target.removeprefix("#") for target in self.elements.values("a", "href")]
        self.assertEqual(len(places), len(set(places)))
        self.assertLessEqual(set(targets), set(places))
        self.assertGreater(len(targets), len(self.source.headings) + len(self.source.links))

    def test_its_pictures_are_inside_and_have_texts(self):
        self.assertEqual(self.elements.values("img", "alt"), [text for text, _ in self.source.pictures])
        for source in self.elements.values("img", "src"):
            self.assertTrue(source.startswith("data:image/png;base64,"), source[:40])

    def test_it_asks_for_nothing_elsewhere(self):
        for tag, attributes in self.elements.found:
            self.assertNotIn(tag, ("link", "script", "iframe"))
            for name in ("src", "href"):
                self.assertRegex(attributes.get(name, "#"), "^(#|data:)")


class Making(unittest.TestCase):
    """make_guide, with other sources."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def make(self, text, name="guide", **environment):
        source, *targets = (os.path.join(self.folder, name + end) for end in (".md", ".html", ".pdf"))
        with open(source, "w") as file:
            file.write(text)
        made = subprocess.run([os.path.join(SOURCE, "make_guide"), source, "1.2.3", *targets], timeout=60,
                              env={**os.environ, **environment}, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        return made, targets

    def test_a_link_to_nowhere_is_an_error(self):
        made, _ = self.make("# Title\n\n## Chapter\n\n[Elsewhere](#elsewhere)\n")
        self.assertEqual(made.returncode, 1)
        self.assertIn("elsewhere", made.stderr)

    def test_the_same_source_and_time_make_the_same_bytes(self):
        contents = []
        for name, zone in (("one", "Asia/Tokyo"), ("two", "America/Lima")):
            made, targets = self.make("# Title\n\n## Chapter\n\nText\n", name, TZ=zone, SOURCE_DATE_EPOCH="1700000000")
            self.assertEqual((made.returncode, made.stderr), (0, ""))
            for target in targets:
                with open(target, "rb") as file:
                    contents.append(file.read())
        self.assertEqual(contents[:2], contents[2:])


@unittest.skipUnless(os.path.exists(os.path.join(BUILD, "bin/quorvane-sample-volume")), "the samples are not built")
class Pictures(unittest.TestCase):
    """take_pictures."""

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.docs = folder.name
        # What the library of the bus holds when a program ends at once now and then looks like a leak.
        environment = {**os.environ, "ASAN_OPTIONS": "detect_leaks=0"}
        cls.done = subprocess.run([os.path.join(SOURCE, "take_pictures"), BUILD, cls.docs], timeout=280, env=environment,
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)

    def pictures_of(self, docs):
        """The pictures of the documents, by their paths there."""
        names = [os.path.join(folder, name) for folder in (".", "guide/images")
                 for name in os.listdir(os.path.join(docs, folder)) if name.endswith(".png")]
        pictures = {}
        for name in sorted(names):
            with Image.open(os.path.join(docs, name)) as picture:
                pictures[name] = picture.convert("RGB")
        return pictures

    def difference(self, one, other):
        """How many of a thousand dots differ."""
        clearly = 16
        channels = ImageChops.difference(one, other).split()
        largest = functools.reduce(ImageChops.lighter, channels)
        return 1000 * sum(largest.histogram()[clearly:]) / (one.width * one.height)

    def test_taken_anew_they_are_those_of_the_guide(self):
        self.assertEqual(self.done.returncode, 0, self.done.stdout)
        kept, taken = self.pictures_of(DOCS), self.pictures_of(self.docs)
        self.assertEqual(list(taken), list(kept))
        for name, picture in taken.items():
            with self.subTest(name):
                self.assertEqual(picture.size, kept[name].size)
                # The times of versions and of the rule shown below the table are the present ones.
                times = {"guide/images/history.png": 10}
                self.assertLess(self.difference(picture, kept[name]), times.get(name, 1.5))
