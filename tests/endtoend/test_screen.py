"""What depends on the screen's scale, at four of them: the programs of the unit tests, run once more."""
import unittest

from support import ROOT, reg, wine

UNIT_TESTS = ROOT / "build" / "release" / "tests" / "unit_tests.exe"


class Scale(unittest.TestCase):
    def test_SizesFollowTheDotsPerInch(self):
        desktop = r"HKCU\Control Panel\Desktop"
        self.addCleanup(reg, "delete", desktop, "/v", "LogPixels", "/f")
        for dpi in (96, 120, 144, 192):
            reg("add", desktop, "/v", "LogPixels", "/t", "REG_DWORD", "/d", str(dpi), "/f")
            code, out, _ = wine(UNIT_TESTS, "--gtest_filter=ScreenScale.*:RibbonImages.*",
                                environment={"ZAVO_TEST_DPI": str(dpi)})
            with self.subTest(dpi):
                self.assertEqual(code, 0, out)
                self.assertNotIn("0 tests from", out)


if __name__ == "__main__":
    unittest.main()
