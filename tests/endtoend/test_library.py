"""The linked files as the system's loader sees them."""
import re
import subprocess
import unittest

from support import BIN

WINDOWS = {"advapi32.dll", "comdlg32.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll", "oleaut32.dll", "shell32.dll",
           "shlwapi.dll", "user32.dll"}


def headers(name):
    command = ["x86_64-w64-mingw32-objdump", "-p", BIN / name]
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def imports(name):
    return {match.lower() for match in re.findall(r"DLL Name: (\S+)", headers(name))}


def exports(name):
    table = headers(name).split("[Ordinal/Name Pointer] Table\n")[1].split("\n\n")[0]
    return re.findall(r"\] (\w+)$", table, re.MULTILINE)


class AddinLibrary(unittest.TestCase):
    def test_ExportsFourFunctions(self):
        self.assertEqual(exports("zavoofficeaddin.dll"),
                         ["DllCanUnloadNow", "DllGetClassObject", "DllRegisterServer", "DllUnregisterServer"])

    def test_ImportsWindowsAndTheEngineOnly(self):
        self.assertLessEqual(imports("zavoofficeaddin.dll") - {"zavokit.dll"}, WINDOWS)
        self.assertIn("zavokit.dll", imports("zavoofficeaddin.dll"))

    def test_ImportsTheSixteenFunctionsOfTheEngine(self):
        block = headers("zavoofficeaddin.dll").split("DLL Name: ZavoKit.dll")[1].split("DLL Name:")[0]
        imported = sorted(re.findall(r"PDF\w+", block))
        self.assertEqual(len(imported), 16)
        self.assertEqual(imported, sorted(exports("ZavoKit.dll")))

    def test_TakesNoThreadNotifications(self):
        self.assertIn("DisableThreadLibraryCalls", headers("zavoofficeaddin.dll"))

    def test_IsHardened(self):
        for flag in ("DYNAMIC_BASE", "HIGH_ENTROPY_VA", "NX_COMPAT"):
            self.assertIn(flag, headers("zavoofficeaddin.dll"))

    def test_NoSectionIsWritableAndExecutable(self):
        command = ["x86_64-w64-mingw32-objdump", "-h", BIN / "zavoofficeaddin.dll"]
        sections = subprocess.run(command, capture_output=True, text=True, check=True).stdout
        for attributes in re.findall(r"^ +CONTENTS.*$", sections, re.MULTILINE):
            self.assertTrue("READONLY" in attributes or "CODE" not in attributes, attributes)

    def test_VersionIsThatOfTheFileVersion(self):
        version = (BIN.parents[1] / "VERSION").read_text(encoding="ascii").strip()
        data = (BIN / "zavoofficeaddin.dll").read_bytes()
        self.assertIn(version.encode("utf-16-le"), data)


class EngineLibrary(unittest.TestCase):
    def test_ExportsTheSixteenFunctionsOfItsDefinition(self):
        definition = (BIN.parents[1] / "engine" / "ZavoKit.def").read_text(encoding="ascii")
        wanted = sorted(definition.split("EXPORTS")[1].split())
        self.assertEqual(len(wanted), 16)
        self.assertEqual(sorted(exports("ZavoKit.dll")), wanted)

    def test_ImportsWindowsOnly(self):
        self.assertLessEqual(imports("ZavoKit.dll"), WINDOWS)

    def test_IsHardenedAndHasABaseOfItsOwn(self):
        for flag in ("DYNAMIC_BASE", "HIGH_ENTROPY_VA", "NX_COMPAT"):
            self.assertIn(flag, headers("ZavoKit.dll"))
        bases = {re.search(r"ImageBase\s+(\w+)", headers(name)).group(1)
                 for name in ("ZavoKit.dll", "zavoofficeaddin.dll")}
        self.assertEqual(len(bases), 2)

    def test_VersionIsThatOfTheFileVersion(self):
        version = (BIN.parents[1] / "VERSION").read_text(encoding="ascii").strip()
        self.assertIn(version.encode("utf-16-le"), (BIN / "ZavoKit.dll").read_bytes())


if __name__ == "__main__":
    unittest.main()
