"""The gallery as a user makes it, in two languages, and its page."""
import collections
import html.parser
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

from PIL import Image

from support import ROOT, png_image, png_pixels, run_script

HOSTS = {"word": ("tip",), "excel": ("tip",), "powerpoint": ("tip",), "outlook": ("menu-open", "menu-create")}
RUNS = (("en", 100), ("ja", 100), ("en", 150), ("en", 200))  # languages and scales
CONTROLS = {
    "Word": 15, "Excel": 11, "PowerPoint": 13,  # the tab, two groups, and label and tip of each control
    "Outlook": 10,  # the tab, a group, two menus with two and three buttons, a button
}


class Links(html.parser.HTMLParser):
    """What a page leads to, what pictures it shows, and where it may be led to."""

    def __init__(self, page):
        super().__init__()
        self.links, self.pictures, self.ids = [], [], []
        self.feed(page)

    def handle_starttag(self, tag, attrs):
        values = dict(attrs)
        self.ids += [values["id"]] if "id" in values else []
        self.links += [values["href"]] if "href" in values else []
        self.pictures += [values["src"]] if "src" in values else []


class Gallery(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.parent = tempfile.mkdtemp(prefix="zavo gallery ")
        cls.addClassCleanup(shutil.rmtree, cls.parent)
        cls.folder = pathlib.Path(cls.parent, "my gallery")
        cls.code, cls.out, cls.errors = run_script("gallery", "--language", "ja", "--language", "en", "--out",
                                                   "my gallery", cwd=cls.parent)

    def pixels(self, name):
        """Title row, tab and ribbon of a picture at 100 %."""
        return png_pixels((self.folder / f"{name}.png").read_bytes(), 156)

    def texts(self):
        head, *lines = (self.folder / "texts.txt").read_text(encoding="utf-8").splitlines()
        Text = collections.namedtuple("Text", head)
        return [Text(*line.split("\t")) for line in lines]

    def test_EndsWellAndSaysWhatItDrew(self):
        self.assertEqual(self.code, 0, self.out + self.errors)
        self.assertRegex(self.out, r"(?m)^72 pictures, 196 texts: .*no glyph is missing, none is empty$")
        self.assertIn("See my gallery/index.html\n", self.out)
        self.assertIn("    Outlook, Japanese, 100 %: 6 pictures, 10 texts", self.errors)

    def test_EveryWindowIsDrawnAtItsSizeAndNothingElse(self):
        expected = {}
        for language, scale in RUNS:
            for host, kinds in HOSTS.items():
                for theme in ("light", "dark"):
                    for kind in ("", *(f"-{kind}" for kind in kinds)):
                        name = f"{host}-{language}-{theme}-{scale}{kind}.png"
                        expected[name] = (10 * scale, 64 * scale // 10)
        drawn = {path.name: png_image(path.read_bytes()).size for path in self.folder.glob("*.png")}
        self.assertEqual(drawn, expected)
        self.assertEqual({path.name for path in self.folder.iterdir()}, {*expected, "index.html", "texts.txt"})

    def test_RibbonIsLightOrDark(self):
        for host in HOSTS:
            for language in ("en", "ja"):
                light, dark = (self.pixels(f"{host}-{language}-{theme}-100")[62:] for theme in ("light", "dark"))
                with self.subTest(f"{host} {language}"):
                    self.assertGreater(self.brightness(light), 200)
                    self.assertLess(self.brightness(dark), 80)

    @staticmethod
    def brightness(rows):
        values = [sum(pixel) / 3 for row in rows for pixel in row]
        return sum(values) / len(values)

    def test_LanguagesMenusAndTipsAreSeen(self):
        for host, kinds in HOSTS.items():
            for theme in ("light", "dark"):
                seen = [f"{host}-en-{theme}-100", f"{host}-ja-{theme}-100", *(f"{host}-en-{theme}-100-{kind}"
                                                                               for kind in kinds)]
                with self.subTest(host, theme=theme):
                    self.assertEqual(len({str(self.pixels(name)) for name in seen}), len(seen))

    def test_EveryTextIsLookedAt(self):
        texts = self.texts()
        for language, scale in (("English", 100), ("Japanese", 100), ("English", 150), ("English", 200)):
            for host, count in CONTROLS.items():
                of_run = [text for text in texts if text[:3] == (host, language, str(scale))]
                self.assertEqual(len({(text.control, text.attribute) for text in of_run}), count)
                self.assertEqual(len(of_run), count)
        labels = {(text.host, text.language, text.text) for text in texts
                  if text.control in ("BUTTON_ID_CREATE", "Menu_ID_Create") and text.attribute == "label"}
        self.assertEqual(labels, {(host, language, label) for host in CONTROLS
                                  for language, label in (("English", "Create PDF"), ("Japanese", "PDFを作成"))})

    def test_NoTextIsEmptyOrLacksGlyphs(self):
        for text in self.texts():
            self.assertNotIn("no glyph", text.finding, text)
            self.assertNotIn("empty", text.finding, text)
            self.assertNotEqual(text.text, "", text)

    def test_PageNamesEveryPictureAndNoOther(self):
        page = Links((self.folder / "index.html").read_text(encoding="utf-8"))
        drawn = sorted(path.name for path in self.folder.glob("*.png"))
        self.assertEqual(sorted(page.pictures), drawn)
        self.assertEqual(sorted(link for link in page.links if link.endswith(".png")), drawn)
        for link in page.links:
            if link.startswith("#"):
                self.assertIn(link[1:], page.ids)
            else:
                self.assertTrue((self.folder / link).is_file(), link)
        self.assertEqual(len(page.ids), len(set(page.ids)))


class Page(unittest.TestCase):
    """The page and what is printed, made of findings that a good ribbon does not give."""

    def make(self, *findings):
        """A gallery of one picture with a text for each finding: the exit code, the output and the page."""
        folder = pathlib.Path(tempfile.mkdtemp(prefix="zavo-"))
        self.addCleanup(shutil.rmtree, folder)
        Image.new("RGB", (10, 20)).save(folder / "word-xx-light-100.png")
        (folder / "pictures").write_text("word-xx-light-100.png\tWord\txx\tX & Y\tlight\t100\t\n", encoding="utf-8")
        (folder / "texts").write_text("".join(f"Word\tX & Y\t100\tID\tlabel\t{finding}\t<b>{number}</b>\n"
                                              for number, finding in enumerate(findings)), encoding="utf-8")
        done = subprocess.run([sys.executable, "-B", ROOT / "scripts" / "gallery_index.py", folder, folder / "pictures",
                               folder / "texts"], capture_output=True, text=True, check=False)
        self.assertEqual(done.stderr, "")
        return done.returncode, done.stdout, (folder / "index.html").read_text(encoding="utf-8")

    def test_TextsThatFitAreNotListed(self):
        code, out, page = self.make("fits", "fits")
        self.assertEqual((code, out), (0, "1 picture, 2 texts: all fit, no glyph is missing, none is empty\n"))
        self.assertNotIn("<td>label</td>", page)
        self.assertNotIn("to look at", page)

    def test_TextThatDoesNotFitIsListedAndNoFailure(self):
        code, out, page = self.make("fits", "too wide: 120 of 96")
        self.assertEqual((code, out), (0, "Word, X & Y, 100 %: ID label: too wide: 120 of 96: <b>1</b>\n"
                                          "1 picture, 2 texts: 1 does not fit, no glyph is missing, none is empty\n"))
        self.assertIn("<td>Word</td><td>X &amp; Y</td><td>100</td><td>ID</td><td>label</td>"
                      "<td>too wide: 120 of 96</td><td>&lt;b&gt;1&lt;/b&gt;</td>", page)
        self.assertIn("1 text to look at", page)

    def test_MissingGlyphOrEmptyTextIsAFailure(self):
        for finding, said in (("no glyph: U+1234 U+5678", "all fit, 1 lacks glyphs, none is empty"),
                              ("empty", "all fit, no glyph is missing, 1 is empty"),
                              ("no glyph: U+1234; too high: 3 lines of 2",
                               "1 does not fit, 1 lacks glyphs, none is empty")):
            code, out, page = self.make("fits", finding)
            self.assertEqual(code, 1, finding)
            self.assertEqual(out.splitlines(), [f"Word, X & Y, 100 %: ID label: {finding}: <b>1</b>",
                                                f"1 picture, 2 texts: {said}"])
            self.assertIn("badge bad", page)

    def test_NamesAreNotTakenForMarkup(self):
        page = self.make("fits")[2]
        self.assertIn("X &amp; Y", page)
        self.assertNotIn("X & Y", page)


if __name__ == "__main__":
    unittest.main()
