"""The bridge to LibreOffice: the pictures that it draws of documents."""
import io
import itertools
import os
import pathlib
import shutil
import stat
import tempfile
import unittest

from PIL import Image

from support import ROOT, ask_bridge, png_pixels

SAMPLES = ROOT / "samples"


def inches(centimetres, dpi):
    return round(centimetres / 2.54 * dpi)


class PictureFile(unittest.TestCase):
    def test_NothingThatIsCutOrDamagedIsTakenForAPicture(self):
        file = io.BytesIO()
        Image.radial_gradient("L").resize((12, 9)).convert("RGB").save(file, "PNG")
        whole = file.getvalue()
        self.assertEqual(len(png_pixels(whole)), 9)
        for place, byte in enumerate(whole):
            for wrong in (whole[:place], whole[:place] + bytes([byte ^ 1]) + whole[place + 1:]):
                with self.assertRaises((OSError, SyntaxError, ValueError), msg=place):
                    png_pixels(wrong)


class Picture(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="zavo-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.target = self.folder / "page ü.png"

    def ask(self, source, dpi=96, **request):
        ask_bridge(command="picture", source=str(source), target=str(self.target), dpi=dpi, **request)
        return self.target.read_bytes()

    def draw(self, *arguments, **request):
        return png_pixels(self.ask(*arguments, **request))

    def assert_refused(self, said, source=SAMPLES / "talk.fodp", **request):
        before = self.listing()
        with self.assertRaises(RuntimeError) as refused:
            self.ask(source, **request)
        self.assertIn(said, str(refused.exception))
        self.assertNotIn("\n", str(refused.exception))
        self.assertEqual(self.listing(), before)

    def listing(self):
        return {path.name: None if path.is_dir() else path.read_bytes() for path in self.folder.iterdir()}

    def make_page(self, name, colour, **times):
        """A page of a mail; the number of bytes is the same for colours of as many letters."""
        page = self.folder / name
        page.write_text(f'<html><body bgcolor="{colour}"><p>Hello</p></body></html>', encoding="ascii")
        if times:
            os.utime(page, **times)
        return page

    def test_FirstPageComesInTheResolutionThatIsAskedFor(self):
        for dpi in (48, 96, "144.5"):
            rows = self.draw(SAMPLES / "project-report.fodt", dpi=dpi)
            for drawn, expected in ((len(rows[0]), inches(21, float(dpi))), (len(rows), inches(29.7, float(dpi)))):
                self.assertAlmostEqual(drawn, expected, delta=1, msg=dpi)

    def test_TextDocumentSheetAndSlideAreDrawn(self):
        for sample, is_wide in (("project-report.fodt", False), ("budget.fods", False), ("talk.fodp", True)):
            rows = self.draw(SAMPLES / sample)
            self.assertEqual(len(rows[0]) > len(rows), is_wide, sample)
            self.assertGreater(len(set(itertools.chain(*rows))), 20, sample)  # shades of text

    def test_ReaderTakesAMailsPageForADocument(self):
        rows = self.draw(self.make_page("0001.html", "#ff0000"), reader="HTML (StarWriter)")
        self.assertIn((255, 0, 0), rows[len(rows) // 2])

    def test_PictureThatIsThereIsReplacedByOneThatOthersMayRead(self):
        self.target.write_bytes(b"old")
        self.draw(SAMPLES / "talk.fodp")
        mask = os.umask(0)
        os.umask(mask)
        self.assertEqual(stat.S_IMODE(self.target.stat().st_mode), 0o666 & ~mask)
        self.assertEqual([path.name for path in self.folder.iterdir()], [self.target.name])

    def test_ChangedDocumentIsDrawnAfresh(self):
        page = self.make_page("0001.html", "#ff0000", ns=(0, 10**18))
        first = self.ask(page, reader="HTML (StarWriter)")
        self.make_page("0001.html", "#0000ff", ns=(0, 10**18 + 1))
        self.assertNotEqual(self.ask(page, reader="HTML (StarWriter)"), first)

    def test_SamePageIsDrawnOnlyOnce(self):
        # What nobody can tell apart by time and size comes as it was drawn before.
        page = self.make_page("0001.html", "#ff0000", ns=(0, 10**18))
        first = self.ask(page, reader="HTML (StarWriter)")
        self.make_page("0001.html", "#0000ff", ns=(0, 10**18))
        self.assertEqual(self.ask(page, reader="HTML (StarWriter)"), first)
        self.assertNotEqual(self.ask(page, reader="HTML (StarWriter)", dpi=48), first)
        # Which is forgotten when many others are wanted.
        for number in range(32):
            self.ask(SAMPLES / "talk.fodp", dpi=24 + number)
        self.assertNotEqual(self.ask(page, reader="HTML (StarWriter)"), first)

    def test_ResolutionIsANumberWithinReason(self):
        for dpi in ("", "0", "23", "601", "-96", "96 ", "1e2", "nan", "inf", "ninety-six", "\u0669\u0666"):
            self.assert_refused("the resolution is a number from 24 to 600", dpi=dpi)

    def test_WhatCannotBeDrawnIsSaidInOneLine(self):
        broken = self.folder / "broken.docx"
        broken.write_bytes(b"PK\3\4" + bytes(range(256)) * 20)
        self.assert_refused("No such file", source=self.folder / "none.docx")
        self.assert_refused("broken.docx cannot be opened as a document", source=broken)
        self.assert_refused("type detection failed", source=self.folder)

    def test_TargetThatCannotBeWrittenIsLeftAlone(self):
        self.target.mkdir()
        self.assert_refused("is a folder")
        self.target.rmdir()
        self.target.write_bytes(b"precious")
        self.target.chmod(stat.S_IRUSR)
        self.assert_refused("is write-protected")
        self.target = self.folder / "none" / "page.png"
        self.assert_refused("No such file")


if __name__ == "__main__":
    unittest.main()
