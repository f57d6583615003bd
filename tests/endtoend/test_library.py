"""The linked files as the system's loader sees them."""
import pathlib
import re
import shutil
import struct
import subprocess
import tempfile
import unittest

from support import BIN, run_script

ADDIN, ENGINE = "zavoofficeaddin.dll", "ZavoKit.dll"


def headers(name):
    command = ["x86_64-w64-mingw32-objdump", "-p", BIN / name]
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def exports(name):
    table = headers(name).split("[Ordinal/Name Pointer] Table\n")[1].split("\n\n")[0]
    return re.findall(r"\] (\w+)$", table, re.MULTILINE)


class AddinLibrary(unittest.TestCase):
    def test_ExportsFourFunctions(self):
        self.assertEqual(exports(ADDIN),
                         ["DllCanUnloadNow", "DllGetClassObject", "DllRegisterServer", "DllUnregisterServer"])

    def test_ImportsTheSixteenFunctionsOfTheEngine(self):
        block = headers(ADDIN).split("DLL Name: ZavoKit.dll")[1].split("DLL Name:")[0]
        imported = sorted(re.findall(r"PDF\w+", block))
        self.assertEqual(len(imported), 16)
        self.assertEqual(imported, sorted(exports(ENGINE)))

    def test_TakesNoThreadNotifications(self):
        self.assertIn("DisableThreadLibraryCalls", headers(ADDIN))

    def test_VersionIsThatOfTheFileVersion(self):
        version = (BIN.parents[1] / "VERSION").read_text(encoding="ascii").strip()
        for name in (ADDIN, ENGINE):
            self.assertIn(version.encode("utf-16-le"), (BIN / name).read_bytes(), name)


class CheckBinaries(unittest.TestCase):
    """scripts/check-binaries, on what was built and on libraries that were linked otherwise."""

    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="zavo-")))
        for name in (ADDIN, ENGINE):
            shutil.copy(BIN / name, self.folder)

    def change(self, name, *places):
        """Changes bits of the copy: for each place (offset from the PE header, mask to set, mask to clear)."""
        data = bytearray((self.folder / name).read_bytes())
        start = struct.unpack_from("<I", data, 0x3C)[0]
        for offset, added, removed in places:
            value = struct.unpack_from("<I", data, start + offset)[0]
            struct.pack_into("<I", data, start + offset, (value | added) & ~removed)
        (self.folder / name).write_bytes(data)

    def findings(self, expected_code):
        code, out, errors = run_script("check-binaries", str(self.folder))
        self.assertEqual(code, expected_code, out + errors)
        return re.findall(r"^  BAD +(.*?)  ", out, re.MULTILINE), out

    def test_FindsNothingAmissWithWhatWasBuilt(self):
        code, out, errors = run_script("check-binaries")
        self.assertEqual((code, errors), (0, ""), out)
        self.assertIn(f"{ADDIN}, ", out)
        self.assertIn(f"{ENGINE}, ", out)
        for line in ("control-flow guard", "shadow stack (CET)"):
            self.assertRegex(out, rf"{re.escape(line)} +not available with this tool chain")

    def test_NamesEachHeaderThatIsNotAsItShouldBe(self):
        flags, characteristics, first_section = 24 + 68, 20, 24 + 240
        for place, finding in (((flags, 0, 0x40 << 16), "address layout randomised"),
                               ((flags, 0, 0x20 << 16), "over 64 bits (high entropy)"),
                               ((flags, 0, 0x100 << 16), "data not executable (NX)"),
                               ((characteristics, 1 << 16, 0), "relocations"),
                               ((8, 0x5F5E0FF, 0), "time stamp"),
                               ((first_section + 36, 0x80000000, 0), "sections writable and executable")):
            with self.subTest(finding):
                shutil.copy(BIN / ENGINE, self.folder)
                self.change(ENGINE, place)
                self.assertEqual(self.findings(1)[0], [finding])

    def test_NamesWhatAnotherLibraryLacks(self):
        source = self.folder / "other.cpp"
        source.write_text("#include <winsock2.h>\nextern \"C\" __declspec(dllexport) int Other() "
                          "{ return WSACleanup(); }\n", encoding="ascii")
        subprocess.run(["x86_64-w64-mingw32-g++-posix", "-shared", "-static", "-s", source, "-lws2_32", "-o",
                        self.folder / ENGINE], check=True)
        findings, out = self.findings(1)
        self.assertLessEqual({"stack protector", "imports", "exports", "time stamp"}, set(findings))
        self.assertIn("unexpected: ws2_32.dll", out)

    def test_TwoLibrariesNeedTwoBases(self):
        shutil.copy(BIN / ADDIN, self.folder / ENGINE)
        self.assertIn("preferred base", self.findings(1)[0])

    def test_WhatIsNoLibraryIsSaidInOneLine(self):
        for content, said in ((b"MZ", "is not a 64-bit library for Windows"), (None, "No such file or directory")):
            (self.folder / ADDIN).unlink()
            if content is not None:
                (self.folder / ADDIN).write_bytes(content)
            code, _, errors = run_script("check-binaries", str(self.folder))
            self.assertEqual((code, len(errors.splitlines())), (1, 1), errors)
            self.assertIn(said, errors)


if __name__ == "__main__":
    unittest.main()
