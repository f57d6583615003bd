"""The demo that leaves the clicks to the user."""
import os
import pathlib
import subprocess
import tempfile
import unittest

from support import ROOT, HostTest, ScreenTest, plain_environment, screen_pixels, wait_until, wine
from test_window import picture_areas, shows


class DemoInAWindow(ScreenTest, HostTest):
    def window_process(self):
        """The stand-in's process in the demo's own Wine session, if it is there."""
        for process in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                variables = dict(entry.split("=", 1) for entry in
                                 (process / "environ").read_text("utf-8", "replace").split("\0") if "=" in entry)
                if "office-standin.exe" in (process / "cmdline").read_text("utf-8", "replace") and \
                        variables.get("WINEPREFIX") != os.environ["ZAVO_SCREEN_PREFIX"] and \
                        variables.get("DISPLAY") == os.environ["ZAVO_SCREEN_DISPLAY"]:
                    return variables
            except OSError:  # it has just ended
                continue
        return None

    def test_WindowOpensOnTheUsersDisplayAndEndsWhenItIsClosed(self):
        empty = screen_pixels()
        area = picture_areas(self.host("--window", "--places"))["BUTTON_ID_CREATE"]
        with tempfile.TemporaryFile("w+") as output:
            demo = subprocess.Popen([ROOT / "scripts" / "demo", "--window"], stdin=subprocess.DEVNULL, stdout=output,
                                    stderr=output, env=dict(plain_environment(),
                                                            DISPLAY=os.environ["ZAVO_SCREEN_DISPLAY"]))
            self.addCleanup(demo.kill)
            self.assertTrue(wait_until(lambda: shows("BUTTON_ID_CREATE", area, dark=False), 60))
            session = self.window_process()
            self.assertEqual(wine("taskkill.exe", "/im", "office-standin.exe", environment=session)[0], 0)
            demo.wait(30)
            output.seek(0)
            printed = output.read()
        self.assertEqual(demo.returncode, 0, printed)
        self.assertIn("host: Word\n", printed)
        self.assertTrue(wait_until(lambda: screen_pixels() == empty))


if __name__ == "__main__":
    unittest.main()
