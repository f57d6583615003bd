"""The Wine session with a screen: what its programs show can be seen."""
import os
import unittest

from support import HostTest, ScreenTest, pdf_text, screen_pixels, wait_until, windows_path


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


if __name__ == "__main__":
    unittest.main()
