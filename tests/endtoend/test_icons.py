"""The ribbon's icons as they are in the source tree."""
import itertools
import re
import struct
import unittest

from PIL import Image

from support import ROOT, pixel_rows

RESOURCES = ROOT / "src" / "resources"
SIZES = (64, 48, 32, 24, 20, 16)
LIGHT = range(110, 119)
DARK = range(210, 219)


def icon_groups():
    """The files that the resource script names, as (id, file) in its order."""
    text = (RESOURCES / "icons.rc").read_text(encoding="utf-8")
    return [(int(number), file) for number, file in re.findall(r'^(\d+) ICON "([^"]+)"$', text, re.MULTILINE)]


class Picture:
    """One picture of an .ico file: its directory entry, its header, and its pixels as rows from the top."""

    def __init__(self, entry, image):
        self.size, self.height, _, _, self.planes, self.bits, self.bytes, _ = entry
        self.header = struct.unpack_from("<IiiHHIIiiII", image)
        width, height = self.header[1], self.header[2] // 2
        stride = (width + 31) // 32 * 4
        self.expected_bytes = 40 + height * (width * 4 + stride)
        rows = pixel_rows(Image.frombytes("RGBA", (width, height), image[40:], "raw", "BGRA", 0, -1))
        self.colours = [[pixel[:3] for pixel in row] for row in rows]
        self.alpha = [[pixel[3] for pixel in row] for row in rows]
        mask = Image.frombytes("1", (width, height), image[40 + height * width * 4:], "raw", "1", stride, -1)
        self.mask = [[value // 255 for value, in row] for row in pixel_rows(mask.convert("L"))]

    def shown_colours(self):
        return {colour for colours, alphas in zip(self.colours, self.alpha)
                for colour, alpha in zip(colours, alphas) if alpha}

    def air(self):
        """Free pixels on the left, above, on the right, below."""
        rows = [any(row) for row in self.alpha]
        columns = [any(column) for column in zip(*self.alpha)]
        return tuple(side.index(True) for side in (columns, rows, columns[::-1], rows[::-1]))


def read_icon(file):
    """The .ico file's pictures in the order of its directory; fails unless they fill the file without gaps."""
    data = (RESOURCES / file).read_bytes()
    reserved, kind, count = struct.unpack_from("<HHH", data)
    entries = [struct.unpack_from("<BBBBHHII", data, 6 + 16 * index) for index in range(count)]
    position = 6 + 16 * count
    for entry in entries:
        if entry[7] != position:
            raise ValueError(f"{file}: a picture at {entry[7]} instead of {position}")
        position += entry[6]
    if (reserved, kind, position) != (0, 1, len(data)):
        raise ValueError(f"{file}: not an icon file, or something is left over")
    return [Picture(entry, data[entry[7]:entry[7] + entry[6]]) for entry in entries]


class Icons(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.icons = {number: read_icon(file) for number, file in icon_groups()}

    def pictures(self):
        """Every picture as (a name for messages, the picture)."""
        return [(f"{number} at {picture.size}", picture) for number, icon in self.icons.items() for picture in icon]

    def test_NineIconsForLightAndForDarkRibbons(self):
        self.assertEqual([number for number, _ in icon_groups()], [*LIGHT, *DARK])

    def test_EachNumberHasAFileOfItsOwnAndNoFileIsLeftOver(self):
        named = [file for _, file in icon_groups()]
        there = [f"icons/{path.name}" for path in (RESOURCES / "icons").glob("*.ico")]
        self.assertEqual(sorted(named), sorted(there))

    def test_LightAndDarkNumbersNameTheSameDrawing(self):
        files = dict(icon_groups())
        for number in LIGHT:
            self.assertEqual(files[number].replace("-light.ico", "-dark.ico"), files[number + 100])

    def test_SixSizesFromLargeToSmall(self):
        for number, icon in self.icons.items():
            self.assertEqual(tuple(picture.size for picture in icon), SIZES, number)

    def test_EveryPictureIsAPlain32BitBitmap(self):
        for name, picture in self.pictures():
            size = picture.size
            self.assertEqual((picture.height, picture.planes, picture.bits), (size, 1, 32), name)
            self.assertEqual(picture.header[:6], (40, size, size * 2, 1, 32, 0), name)
            self.assertEqual(picture.bytes, picture.expected_bytes, name)

    def test_MaskIsSetWhereNothingShows(self):
        for name, picture in self.pictures():
            self.assertEqual(picture.mask, [[int(alpha == 0) for alpha in row] for row in picture.alpha], name)

    def test_LightAndDarkDifferInColourOnly(self):
        for number in LIGHT:
            for light, dark in zip(self.icons[number], self.icons[number + 100]):
                self.assertEqual(light.alpha, dark.alpha, f"{number} at {light.size}")
                self.assertEqual(light.shown_colours(), {(0x3B, 0x3B, 0x3B)}, f"{number} at {light.size}")
                self.assertEqual(dark.shown_colours(), {(0xFF, 0xFF, 0xFF)}, f"{number + 100} at {dark.size}")

    def test_WhatIsTransparentHasNoColour(self):
        for name, picture in self.pictures():
            for colours, alphas in zip(picture.colours, picture.alpha):
                self.assertLessEqual({colour for colour, alpha in zip(colours, alphas) if not alpha}, {(0, 0, 0)}, name)

    def test_GlyphsAreOfLikeWeight(self):
        # Neither empty nor filled; and in one size no glyph is twice as heavy as another.
        for size in SIZES:
            weights = [sum(map(sum, picture.alpha)) / (255 * size * size)
                       for _, picture in self.pictures() if picture.size == size]
            self.assertGreater(min(weights), 0.2, size)
            self.assertLess(max(weights), 0.5, size)
            self.assertLess(max(weights), 2 * min(weights), size)

    def test_GlyphsFillTheirSquareButForAMargin(self):
        for name, picture in self.pictures():
            left, above, right, below = picture.air()
            self.assertGreaterEqual(min(left, above, right, below), picture.size // 16, name)
            self.assertLessEqual(max(left + right, above + below), picture.size // 4, name)

    def test_GlyphsAreCentred(self):
        for name, picture in self.pictures():
            left, above, right, below = picture.air()
            self.assertEqual((left, above), (right, below), name)

    def test_OnlySlopesAreSoft(self):
        # Partly covered pixels among those that show. The first four are upright strokes but for the corners of pages
        # and the tip of the merge sign; the plane is all slopes.
        for number, most in {110: 0.1, 116: 0.1, 117: 0.1, 118: 0.1, 111: 0.2}.items():
            for picture in self.icons[number]:
                shown = [alpha for row in picture.alpha for alpha in row if alpha]
                soft = sum(alpha < 255 for alpha in shown) / len(shown)
                self.assertLess(soft, most, f"{number} at {picture.size}")

    def test_SmallGlyphsAreDrawnOnWholePixels(self):
        for name, picture in self.pictures():
            if picture.size <= 20:
                self.assertEqual({alpha for row in picture.alpha for alpha in row}, {0, 255}, name)

    def test_NoTwoIconsLookAlike(self):
        for size in SIZES:
            glyphs = [(number, picture.alpha) for number in LIGHT for picture in self.icons[number]
                      if picture.size == size]
            for (one, first), (other, second) in itertools.combinations(glyphs, 2):
                apart = sum(abs(a - b) for row, other_row in zip(first, second) for a, b in zip(row, other_row))
                self.assertGreater(apart / (255 * size * size), 0.04, f"{one} and {other} at {size}")


if __name__ == "__main__":
    unittest.main()
