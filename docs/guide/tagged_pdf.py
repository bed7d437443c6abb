"""PDF documents of WeasyPrint whose tags a screen reader can go by.

WeasyPrint marks what it draws box by box, one within the other, which readers take for text that comes twice or not at
all; pictures, code and the foot of a page it takes for text. What is replaced here is an inner part of WeasyPrint 57: the
tests of the guide tell whether another version still has it.
"""

import pydyf
import weasyprint.pdf
from weasyprint.pdf.stream import Stream

ROLES = {"a": "Link", "figure": "Figure", "h1": "H1", "h2": "H2", "h3": "H3", "li": "LI", "p": "P", "pre": "Code",
         "td": "TD", "th": "TH"}
PAINTING = {"B", "B*", "Do", "S", "TJ", "Tj", "f", "f*", "s"}


def paints(item):
    words = (item.decode("latin-1") if isinstance(item, bytes) else str(item)).split()
    return bool(words) and words[-1] in PAINTING


class TaggedStream(Stream):
    """What is drawn on a page, each piece marked once: as a part of the innermost element that has a role.

    So a link parts its paragraph in three. What belongs to no such element is decoration: lines, shades, the foot of the
    page.
    """

    def __init__(self, *arguments, **named):
        super().__init__(*arguments, **named)
        self._boxes = []  # that are being drawn, the innermost last
        self._piece = 0  # where in the stream the present one begins

    def get_marked_content_tag(self, element_tag):
        return ROLES.get(element_tag) or super().get_marked_content_tag(element_tag)

    def begin_marked_content(self, box, mcid=False, tag=None):
        if self._boxes:
            self._end_piece()
        self._boxes.append(box)
        self._begin_piece()

    def end_marked_content(self):
        self._end_piece()
        self._boxes.pop()
        if self._boxes:
            self._begin_piece()

    def _has_role(self):
        return self._boxes[-1].element_tag in ROLES

    def _begin_piece(self):
        self._piece = len(self.stream)
        if self._has_role():
            super().begin_marked_content(self._boxes[-1], mcid=True)
        else:
            self.stream += ["/Artifact", b"BMC"]

    def _end_piece(self):
        if any(paints(item) for item in self.stream[self._piece:]):
            super().end_marked_content()
            return
        if self._has_role():
            self.marked.pop()
        beginning = next(at for at, item in enumerate(self.stream) if at >= self._piece and item in (b"BDC", b"BMC"))
        del self.stream[self._piece:beginning + 1]


def finish(pdf, alternatives):
    """Gives pictures their texts, columns their titles, and each element of the structure the one that holds it."""
    elements = [item for item in pdf.objects if isinstance(item, dict) and item.get("Type") == "/StructElem"]
    texts = iter(alternatives)
    by_reference = {element.reference: element for element in elements}
    for element in elements:
        if element["S"] == "/Figure":
            element["Alt"] = pydyf.String(next(texts))
        elif element["S"] == "/TH":
            element["A"] = pydyf.Dictionary({"O": "/Table", "Scope": "/Column"})
        for kid in element["K"]:
            if kid in by_reference:
                by_reference[kid]["P"] = element.reference


def write_tagged_pdf(document, target, alternatives):
    """Writes a rendered document; `alternatives` are the texts that stand for its pictures, in their order."""
    weasyprint.pdf.Stream = TaggedStream
    document.write_pdf(target, variant="pdf/ua-1", finisher=lambda _, pdf: finish(pdf, alternatives))
