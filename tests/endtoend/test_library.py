"""The linked files as the system's loader sees them."""
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

import pefile

from support import BIN, read_library, run_script, version_text

ADDIN, ENGINE = "zavoofficeaddin.dll", "ZavoKit.dll"


def exports(name):
    return [symbol.name.decode() for symbol in read_library(BIN / name).DIRECTORY_ENTRY_EXPORT.symbols]


def imports(name):
    """The functions that a library imports, by the library that has them."""
    return {entry.dll.decode(): [function.name.decode() for function in entry.imports]
            for entry in read_library(BIN / name).DIRECTORY_ENTRY_IMPORT}


class AddinLibrary(unittest.TestCase):
    def test_ExportsFourFunctions(self):
        self.assertEqual(exports(ADDIN),
                         ["DllCanUnloadNow", "DllGetClassObject", "DllRegisterServer", "DllUnregisterServer"])

    def test_ImportsTheSixteenFunctionsOfTheEngine(self):
        imported = sorted(imports(ADDIN)[ENGINE])
        self.assertEqual(len(imported), 16)
        self.assertEqual(imported, sorted(exports(ENGINE)))

    def test_TakesNoThreadNotifications(self):
        self.assertIn("DisableThreadLibraryCalls", imports(ADDIN)["KERNEL32.dll"])

    def test_VersionIsThatOfTheFileVersion(self):
        version = (BIN.parents[1] / "VERSION").read_text(encoding="ascii").strip()
        for name in (ADDIN, ENGINE):
            self.assertEqual(version_text(read_library(BIN / name)), version, name)


class CheckBinaries(unittest.TestCase):
    """scripts/check-binaries, on what was built and on libraries that were linked otherwise."""

    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="zavo-")))
        for name in (ADDIN, ENGINE):
            shutil.copy(BIN / name, self.folder)

    def change(self, name, part, field, added, removed):
        """Sets and clears bits in a field of the copy."""
        copy = pefile.PE(data=(self.folder / name).read_bytes(), fast_load=True)
        structure = copy.sections[0] if part == "section" else getattr(copy, part)
        setattr(structure, field, (getattr(structure, field) | added) & ~removed)
        (self.folder / name).write_bytes(copy.write())

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
        loader = "OPTIONAL_HEADER", "DllCharacteristics"
        for place, added, removed, finding in (
                (loader, 0, 0x40, "address layout randomised"),
                (loader, 0, 0x20, "over 64 bits (high entropy)"),
                (loader, 0, 0x100, "data not executable (NX)"),
                (("FILE_HEADER", "Characteristics"), 1, 0, "relocations"),
                (("FILE_HEADER", "TimeDateStamp"), 0x5F5E0FF, 0, "time stamp"),
                (("section", "Characteristics"), 0x80000000, 0, "sections writable and executable"),
                (("section", "Misc_VirtualSize"), 0, 0x200000, "sections contiguous in memory"),
                (("OPTIONAL_HEADER", "SizeOfImage"), 0x1000000, 0, "sections contiguous in memory")):
            with self.subTest(place=place):
                shutil.copy(BIN / ENGINE, self.folder)
                self.change(ENGINE, *place, added, removed)
                self.assertEqual(self.findings(1)[0], [finding])

    def link(self, name, code, *libraries):
        """Makes a library in the test's folder, as the linker makes them when nobody says more."""
        source = self.folder / "source.cpp"
        source.write_text(code, encoding="ascii")
        subprocess.run(["x86_64-w64-mingw32-g++-posix", "-shared", "-static", "-s", source, *libraries, "-o",
                        self.folder / name], check=True, capture_output=True)

    def test_NamesWhatAnotherLibraryLacks(self):
        self.link(ENGINE, "#include <winsock2.h>\nextern \"C\" __declspec(dllexport) int Other() "
                          "{ return WSACleanup(); }\n", "-lws2_32")
        findings, out = self.findings(1)
        self.assertEqual(set(findings), {"stack protector", "imports", "exports", "time stamp"})
        self.assertIn("unexpected: ws2_32.dll", out)

    def test_NamesALibraryThatTheStartUpCodePatches(self):
        self.link("first.dll", "__declspec(dllexport) int variable = 1;\n")
        self.link(ENGINE, "extern int variable;\n__declspec(dllexport) int Other() { return variable; }\n",
                  self.folder / "first.dll")
        self.assertIn("pseudo-relocations", self.findings(1)[0])

    def test_CountsTheAddressesThatTheLoaderWouldNotCorrect(self):
        for name in (ADDIN, ENGINE):
            with self.subTest(name):
                data = bytearray((BIN / name).read_bytes())
                library = pefile.PE(data=bytes(data))
                (texts,) = (section for section in library.sections if section.Name.startswith(b".rdata"))
                of_texts = [entry for block in library.DIRECTORY_ENTRY_BASERELOC for entry in block.entries
                            if entry.type and texts.contains_rva(entry.rva)]
                for entry in (of_texts[0], of_texts[-1]):
                    data[entry.struct.get_file_offset() + 1] &= 0x0F  # its kind becomes that of mere padding
                (self.folder / name).write_bytes(data)
                findings, out = self.findings(1)
                self.assertEqual(findings, ["addresses in the data"])
                self.assertRegex(out, rf"2 of \d+ without relocation, the first at {of_texts[0].rva:#x}")
                shutil.copy(BIN / name, self.folder)

    def test_TwoLibrariesNeedTwoBases(self):
        shutil.copy(BIN / ADDIN, self.folder / ENGINE)
        self.assertIn("preferred base", self.findings(1)[0])

    def test_WhatIsNoLibraryIsSaidInOneLine(self):
        damaged = read_library(BIN / ADDIN)
        damaged.OPTIONAL_HEADER.DATA_DIRECTORY[1].VirtualAddress = 0x7FFFFFFF  # of its imports
        for content, said in ((b"MZ", "is not a 64-bit library for Windows"),
                              (damaged.write(), "is not a 64-bit library for Windows"),
                              (None, "No such file or directory")):
            (self.folder / ADDIN).unlink()
            if content is not None:
                (self.folder / ADDIN).write_bytes(content)
            code, _, errors = run_script("check-binaries", str(self.folder))
            self.assertEqual((code, len(errors.splitlines())), (1, 1), errors)
            self.assertIn(said, errors)


if __name__ == "__main__":
    unittest.main()
