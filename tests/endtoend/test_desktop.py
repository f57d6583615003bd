"""The Wine session with a screen: what its programs show can be seen."""
import os
import pathlib
import unittest

from support import HostTest, ScreenTest, pdf_text, png_pixels, reg, screen_pixels, wait_until, windows_path


class Desktop(ScreenTest, HostTest):
    def test_WindowIsSeenAsLongAsItsProgramRuns(self):
        empty = screen_pixels()
        text = os.path.join(self.folder, "text.txt")
        with open(text, "w", encoding="ascii") as file:
            file.write("text\n" * 20)
        program = self.start("notepad.exe", windows_path(text))
        with_window = self.settled(program, empty)
        colours = [pixel for row in with_window for pixel in row]
        self.assertGreater(colours.count((255, 255, 255)), 50000)  # paper
        self.assertGreater(len({red for red, green, blue in colours if red == green == blue}), 8)  # smooth edges
        program.terminate()
        self.assertTrue(wait_until(lambda: screen_pixels() == empty))

    def settled(self, program, empty):
        """What the screen shows once the program has drawn its window."""
        latest = [empty]

        def is_settled():
            self.assertIsNone(program.poll())
            latest.append(screen_pixels())
            return latest[-1] == latest[-2] != empty
        self.assertTrue(wait_until(is_settled))
        return latest[-1]

    def test_AreaIsCutOutOfTheScreen(self):
        rows = screen_pixels()
        self.assertEqual((len(rows[0]), len(rows)), (1280, 900))
        self.assertEqual(screen_pixels((10, 20, 30, 40)), [row[10:40] for row in rows[20:60]])
        self.assertEqual(screen_pixels((1270, 890, 100, 100)), [row[1270:] for row in rows[890:]])

    def test_AddinWorksThere(self):
        self.create_pdf()
        self.assertIn("Harbour bridge", pdf_text(self.pdf))
        self.assertIn(windows_path(self.pdf), self.companion_report())


class Glyphs(ScreenTest, HostTest):
    FONTS = r"HKCU\Software\Wine\Fonts\Replacements"

    def draw(self, name):
        """What is found about the texts of a Japanese ribbon, and its pixels."""
        locales = os.path.join(self.folder, "locales")
        if not os.path.exists(locales):
            os.mkdir(locales)
            os.symlink("/usr/lib/locale/C.utf8", os.path.join(locales, "ja_JP.UTF-8"))
        picture = pathlib.Path(self.folder, name)
        out = self.host("--window", "--picture", windows_path(picture), "--texts", LOCPATH=locales,
                        LC_MESSAGES="ja_JP.UTF-8")
        texts = [line.split("\t") for line in out.splitlines() if line.startswith("text\t")]
        return {(control, attribute): finding for _, control, attribute, finding, _ in texts}, \
            png_pixels(picture.read_bytes(), 156)

    def test_GlyphsThatTheFontLacksAreFound(self):
        found, pixels = self.draw("font.png")
        self.assertEqual([finding for finding in found.values() if "no glyph" in finding], [])
        reg("delete", self.FONTS, "/v", "Yu Gothic UI", "/f")
        self.addCleanup(reg, "add", self.FONTS, "/v", "Yu Gothic UI", "/d", "WenQuanYi Micro Hei", "/f")
        without, boxes = self.draw("boxes.png")
        self.assertIn("no glyph: U+3092 U+4F5C U+6210", without["BUTTON_ID_CREATE", "label"])
        self.assertIn("fits", without["ZAVO_Tab", "label"])
        self.assertEqual({key for key, finding in without.items() if "no glyph" not in finding},
                         {("ZAVO_Tab", "label")})
        self.assertNotEqual(boxes, pixels)


if __name__ == "__main__":
    unittest.main()
