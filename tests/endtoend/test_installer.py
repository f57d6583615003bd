"""What scripts/package makes, and the installation package at work in a prefix of its own."""
import filecmp
import hashlib
import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest
import unittest.mock
import zlib

from support import (BIN, ROOT, ask_bridge, is_signed, make_certificate, pdf_text, read_library, reg, run_script,
                     version_text, wait_until, windows_path, wine)

VERSION = (ROOT / "VERSION").read_text(encoding="ascii").strip()
NEXT_VERSION = "{}.{}.{}".format(*VERSION.split(".")[:2], int(VERSION.split(".")[2]) + 1)
LIBRARIES = ("zavoofficeaddin.dll", "ZavoKit.dll")
PROGRAM_FOLDER = "ZAVO Office Add-in"
INSTALLED = ["THIRD-PARTY-NOTICES.txt", "ZavoKit.dll", "zavoofficeaddin.dll"]
WINDOWS = r"HKLM\SOFTWARE\Microsoft\Windows NT\CurrentVersion"
OFFICE = r"HKEY_LOCAL_MACHINE\Software\Microsoft\Office"
OWN_KEYS = (r"HKEY_LOCAL_MACHINE\Software\Classes\CLSID\{6C1E2F4A-9B3D-4E7A-8C5F-2A9D7B1E3F60}",
            r"HKEY_LOCAL_MACHINE\Software\Classes\ZAVO.OfficeAddin", OFFICE)
UNINSTALL = r"HKEY_LOCAL_MACHINE\Software\Microsoft\Windows\CurrentVersion\Uninstall"
# Where Windows Installer keeps its books. Wine's leaves the keys, empty, and the folder when the last product goes.
BOOKS = tuple(key.lower() for key in (r"HKEY_LOCAL_MACHINE\Software\Classes\Installer",
                                      r"HKEY_LOCAL_MACHINE\Software\Microsoft\Windows\CurrentVersion\Installer",
                                      UNINSTALL))
BOOKS_FOLDER = "drive_c/windows/Installer"
# What the system's save dialog remembers of who used it, and the display, which gets a new name whenever Wine's desktop
# starts: with the first window after some seconds without any.
SYSTEM = re.compile(r"\\software\\microsoft\\windows\\currentversion\\explorer\\comdlg32|"
                    r"\\system\\currentcontrolset\\control\\video\\")
# Exit codes of msiexec. Wine hands on their low 8 bits.
DONE = (0,)
REFUSED = (1603 & 255,)
DONE_OR_RESTART = (0, 3010 & 255)


def sha256(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def package(out, *arguments):
    """Runs scripts/package into that folder; gives the path of the installation package."""
    code, _, errors = run_script("package", "--out", str(out), *arguments)
    if code:
        raise RuntimeError(errors)
    (msi,) = out.glob("*.msi")
    return msi


def table(msi, name):
    """The rows of a table of a package, as dictionaries."""
    done = subprocess.run(["msiinfo", "export", msi, name], capture_output=True, text=True, check=True)
    names, _, _, *rows = done.stdout.splitlines()
    return [dict(zip(names.split("\t"), row.split("\t"))) for row in rows]


def msi_property(msi, name):
    return next(row["Value"] for row in table(msi, "Property") if row["Property"] == name)


def registry(*keys):
    """What is below these keys, or the whole registry: pairs of key (in small letters) and line, also an empty one."""
    rows = set()
    with tempfile.TemporaryDirectory(prefix="zavo-") as folder:
        for part in keys or ("",):
            export = pathlib.Path(folder, "registry.reg")
            code, out, errors = wine("regedit.exe", "/E", windows_path(export), *filter(None, [part]))
            if code or not export.exists():
                raise RuntimeError(f"regedit /E {part}: {code} {out} {errors}")
            key = ""
            for line in export.read_text(encoding="utf-16").replace("\\\n", "").splitlines()[1:]:
                if line.startswith("["):
                    key = line[1:-1].lower()
                    rows.add((key, ""))
                elif line:
                    rows.add((key, line))
            export.unlink()
    return rows


def products():
    """The version of each installed product of ours."""
    name, version = '"DisplayName"="ZAVO Office Add-in"', '"DisplayVersion"='
    rows = registry(UNINSTALL)
    keys = {key for key, line in rows if line == name}
    return sorted(line[len(version):].strip('"') for key, line in rows if key in keys and line.startswith(version))


class Package(unittest.TestCase):
    """The files of scripts/package."""

    @classmethod
    def setUpClass(cls):
        folder = tempfile.mkdtemp(prefix="zavo-package-")
        cls.addClassCleanup(shutil.rmtree, folder)
        cls.out = pathlib.Path(folder, "out")
        cls.again = pathlib.Path(folder, "again")
        cls.msi = package(cls.out)
        package(cls.again)
        cls.sbom = json.loads((cls.out / f"zavoofficeaddin-{VERSION}.spdx.json").read_text(encoding="utf-8"))

    def test_HoldsWhatItSays(self):
        self.assertEqual(sorted(path.name for path in self.out.iterdir()),
                         sorted(["SHA256SUMS", "THIRD-PARTY-NOTICES", f"zavoofficeaddin-{VERSION}-x64.msi",
                                 f"zavoofficeaddin-{VERSION}.spdx.json", *LIBRARIES,
                                 *(name + ".debug" for name in LIBRARIES)]))

    def test_LibrariesAreThoseThatWereBuilt(self):
        for name in LIBRARIES:
            self.assertTrue(filecmp.cmp(self.out / name, BIN / name, shallow=False), name)

    def test_TwoRunsGiveTheSameFilesButThePackage(self):
        for path in self.out.iterdir():
            if path.suffix != ".msi" and path.name != "SHA256SUMS":
                self.assertTrue(filecmp.cmp(path, self.again / path.name, shallow=False), path.name)
        self.assertEqual(msi_property(self.msi, "ProductCode"),
                         msi_property(self.again / self.msi.name, "ProductCode"))

    def test_ChecksumsAreThoseOfAllFiles(self):
        lines = (self.out / "SHA256SUMS").read_text(encoding="ascii").splitlines()
        sums = {name: value for value, name in (line.split("  ") for line in lines)}
        self.assertEqual(sums, {path.name: sha256(path) for path in self.out.iterdir() if path.name != "SHA256SUMS"})

    def test_VersionIsThatOfTheFileVersion(self):
        self.assertEqual(msi_property(self.msi, "ProductVersion"), VERSION)
        versions = {row["File"]: (row["Version"], row["Language"]) for row in table(self.msi, "File")}
        self.assertEqual(versions, {"Notices": ("", ""), **{name: (VERSION + ".0", "1033") for name in LIBRARIES}})
        # Windows Installer compares files either by version or by hash.
        self.assertEqual([row["File_"] for row in table(self.msi, "MsiFileHash")], ["Notices"])
        (product,) = (part for part in self.sbom["packages"] if part["name"] == "ZAVO Office Add-in")
        self.assertEqual(product["versionInfo"], VERSION)
        for name in LIBRARIES:
            library = read_library(self.out / name)
            self.assertEqual(version_text(library), VERSION)
            (numbers,) = library.VS_FIXEDFILEINFO
            self.assertEqual([numbers.FileVersionMS >> 16, numbers.FileVersionMS & 0xFFFF, numbers.FileVersionLS >> 16,
                              numbers.FileVersionLS & 0xFFFF], [*map(int, VERSION.split(".")), 0])
            (languages,) = (part for part in library.FileInfo[0] if part.Key == b"VarFileInfo")
            self.assertEqual(languages.Var[0].entry, {b"Translation": "0x0409 0x04b0"})  # English, UTF-16

    def test_DebugInformationBelongsToTheLibrary(self):
        for name, function in (("zavoofficeaddin.dll", "RegisterAddin"), ("ZavoKit.dll", "PDF_InitLibrary")):
            sections = subprocess.run(["x86_64-w64-mingw32-objdump", "-s", "-j", ".gnu_debuglink", BIN / name],
                                      capture_output=True, text=True, check=True).stdout
            data = bytes.fromhex("".join(line.split("  ")[0].split(" ", 2)[2] for line in sections.splitlines()[4:]))
            linked, _, rest = data.partition(b"\0")
            debug = self.out / (name + ".debug")
            self.assertEqual(linked.decode(), debug.name)
            # The checksum stands at the next multiple of four.
            start = -(len(linked) + 1) % 4
            self.assertEqual(int.from_bytes(rest[start:start + 4], "little"), zlib.crc32(debug.read_bytes()))
            symbols = subprocess.run(["x86_64-w64-mingw32-nm", "-C", debug], capture_output=True, text=True, check=True)
            address = re.search(rf"^(\w+) T {function}\b", symbols.stdout, re.MULTILINE)[1]
            place = subprocess.run(["x86_64-w64-mingw32-addr2line", "-e", debug, address],
                                   capture_output=True, text=True, check=True).stdout
            self.assertRegex(place, r"^\./build/release/\./(src/addin/Registration|engine/Exports)\.cpp:[1-9]")
            stripped = subprocess.run(["x86_64-w64-mingw32-nm", BIN / name], capture_output=True, text=True, check=True)
            self.assertEqual(stripped.stdout, "", "the library has symbols of its own")

    def test_SbomHasWhatSpdxRequires(self):
        self.assertEqual((self.sbom["spdxVersion"], self.sbom["dataLicense"], self.sbom["SPDXID"]),
                         ("SPDX-2.3", "CC0-1.0", "SPDXRef-DOCUMENT"))
        self.assertRegex(self.sbom["documentNamespace"], r"^urn:uuid:[0-9a-f-]{36}$")
        self.assertRegex(self.sbom["creationInfo"]["created"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$")
        self.assertTrue(self.sbom["name"] and self.sbom["creationInfo"]["creators"])
        for part in self.sbom["packages"]:
            for field in ("SPDXID", "name", "versionInfo", "downloadLocation", "licenseConcluded", "copyrightText"):
                self.assertTrue(part[field], (part, field))
        names = [item["SPDXID"] for item in self.sbom["packages"] + self.sbom["files"]]
        self.assertEqual(len(set(names)), len(names))
        known = {"SPDXRef-DOCUMENT", *names}
        for relation in self.sbom["relationships"]:
            self.assertLessEqual({relation["spdxElementId"], relation["relatedSpdxElement"]}, known)
        quoted = {text["licenseId"] for text in self.sbom["hasExtractedLicensingInfos"] if text["extractedText"]}
        self.assertEqual(quoted, set(re.findall(r"LicenseRef-[\w.-]+", " ".join(
            part["licenseConcluded"] for part in self.sbom["packages"]))))

    def test_SbomHasTheFilesChecksums(self):
        self.assertEqual({file["fileName"] for file in self.sbom["files"]},
                         {"./THIRD-PARTY-NOTICES", *("./" + name for name in LIBRARIES)})
        sha1 = []
        for file in self.sbom["files"]:
            data = (self.out / file["fileName"]).read_bytes()
            sums = {item["algorithm"]: item["checksumValue"] for item in file["checksums"]}
            self.assertEqual(sums, {"SHA1": hashlib.sha1(data).hexdigest(), "SHA256": hashlib.sha256(data).hexdigest()})
            sha1.append(sums["SHA1"])
        (product,) = (part for part in self.sbom["packages"] if part["filesAnalyzed"])
        self.assertEqual(product["packageVerificationCode"]["packageVerificationCodeValue"],
                         hashlib.sha1("".join(sorted(sha1)).encode()).hexdigest())

    def test_SbomNamesWhatTheNoticesName(self):
        notices = (ROOT / "THIRD-PARTY-NOTICES").read_text(encoding="utf-8")
        titles = re.findall(r"^(.+)\n-{3,}$", notices, re.MULTILINE)
        titles.remove("Apache License, Version 2.0")
        parts = {part["name"]: part["versionInfo"] for part in self.sbom["packages"] if not part["filesAnalyzed"]}
        self.assertEqual(len(titles), len(parts), titles)
        for title in titles:
            name, _, version = title.partition(" ")
            name = name.removesuffix("'s").lower()
            self.assertIn(name, parts)
            if version[:1].isdigit():
                self.assertEqual(parts[name], version)
        for user, count in (("ZavoKit.dll", 6), ("zavoofficeaddin.dll", 2)):
            linked = [relation for relation in self.sbom["relationships"] if relation["relationshipType"] ==
                      "STATIC_LINK" and relation["spdxElementId"] == "SPDXRef-File-" + user]
            self.assertEqual(len(linked), count)

    def test_IsForAllUsersOf64BitWindows(self):
        summary = subprocess.run(["msiinfo", "suminfo", self.msi], capture_output=True, text=True, check=True).stdout
        self.assertIn("\nTemplate: x64;1033\n", summary)
        self.assertIn("\nSource: 2 (2)\n", summary)  # compressed, and with rights that have to be granted
        self.assertEqual(msi_property(self.msi, "ALLUSERS"), "1")
        self.assertEqual({row["Attributes"] for row in table(self.msi, "Component")}, {"256"})
        self.assertEqual({row["Root"] for row in table(self.msi, "Registry")}, {"2"})

    def test_CodesStayTheSameFromVersionToVersion(self):
        # With others an upgrade would leave the older version installed beside the newer one.
        code = "{BAE0F222-7368-45F6-9793-7A6933386CAE}"
        self.assertEqual(msi_property(self.msi, "UpgradeCode"), code)
        self.assertEqual([(row["UpgradeCode"], row["Attributes"], row["ActionProperty"])
                          for row in table(self.msi, "Upgrade")],
                         [(code, "2", "NEWERPRODUCTS"), (code, "256", "REPLACEDPRODUCTS")])
        self.assertEqual({row["Component"]: row["ComponentId"] for row in table(self.msi, "Component")},
                         {"Engine": "{6CF98AC9-5D19-4A6F-A1DE-9D5BD0C41285}",
                          "Notices": "{0B62E2A3-82A7-41D3-AA2D-EDC4EC203C15}",
                          "Addin": "{CD67008A-8EFB-4BCD-A590-0431413C89EC}"})

    def test_LongNamesHaveShortOnes(self):
        names = [row["FileName"] for row in table(self.msi, "File")]
        names += [row["DefaultDir"] for row in table(self.msi, "Directory") if row["Directory_Parent"] != ""]
        self.assertIn("ZAVOOF~1|ZAVO Office Add-in", names)
        for name in names:
            short, *long = name.split("|")
            self.assertRegex(short, r"^([\w~-]{1,8}(\.\w{1,3})?|\.)$")
            self.assertLessEqual(len(long), 1)
        self.assertEqual(sorted(name.split("|")[-1] for name in names[:3]), INSTALLED)

    def test_ListOfInstalledProgramsHasAPictureAndNothingToChange(self):
        self.assertEqual((msi_property(self.msi, "ProductName"), msi_property(self.msi, "Manufacturer"),
                          msi_property(self.msi, "ARPNOMODIFY")), ("ZAVO Office Add-in", "ZAVO", "1"))
        picture = subprocess.run(["msiinfo", "extract", self.msi, "Icon." + msi_property(self.msi, "ARPPRODUCTICON")],
                                 capture_output=True, check=True).stdout
        self.assertEqual(picture, (ROOT / "src" / "resources" / "icons" / "create-light.ico").read_bytes())

    def test_RefusalsAreInPlainWords(self):
        conditions = {row["Description"]: row["Condition"] for row in table(self.msi, "LaunchCondition")}
        self.assertEqual(conditions, {
            "A newer version of ZAVO Office Add-in is installed already. To go back to version "
            f"{VERSION}, uninstall the newer version first.": "Installed OR NOT NEWERPRODUCTS",
            "ZAVO Office Add-in needs a 64-bit edition of Windows.": "Installed OR VersionNT64",
            "ZAVO Office Add-in needs Windows 10, version 1607, or newer.":
                "Installed OR (VersionNT >= 603 AND WINDOWSBUILDNUMBER >= 14393)"})

    def test_FilesInUseAreSaidInPlainWords(self):
        texts = {row["Error"]: row["Message"] for row in table(self.msi, "Error")}
        # A file that a program holds; programs that would have to end, before and after they were asked to.
        self.assertEqual(sorted(texts), ["1603", "1610", "1611"])
        self.assertIn("The file [2][3] is in use{ by [4]}.", texts["1603"])
        for text in texts.values():
            self.assertRegex(text, "the machine is restarted|restart the machine")

    def test_SilentInstallationNeitherClosesProgramsNorRestarts(self):
        self.assertEqual(msi_property(self.msi, "MSIRESTARTMANAGERCONTROL"), "DisableShutdown")
        self.assertEqual(msi_property(self.msi, "REBOOT"), "ReallySuppress")
        tables = subprocess.run(["msiinfo", "tables", self.msi], capture_output=True, text=True, check=True).stdout
        if "CustomAction" in tables.split():
            self.assertEqual(table(self.msi, "CustomAction"), [])


class Installer(unittest.TestCase):
    """The installation package, installed and taken out again."""

    @classmethod
    def setUpClass(cls):
        cls.enterClassContext(unittest.mock.patch.dict(os.environ, WINEPREFIX=os.environ["ZAVO_INSTALLER_PREFIX"]))
        cls.prefix = pathlib.Path(os.environ["WINEPREFIX"])
        cls.place = cls.prefix / "drive_c" / "Program Files" / PROGRAM_FOLDER
        cls.packages = pathlib.Path(tempfile.mkdtemp(prefix="zavo-installer-"))
        cls.addClassCleanup(shutil.rmtree, cls.packages)
        cls.msi = package(cls.packages / "this")
        cls.newer = package(cls.packages / "next", "--version", NEXT_VERSION)
        # On their first start the system's programs write down what display there is, and the script host its types.
        script = cls.packages / "nothing.js"
        script.touch()
        wine("cscript.exe", "//nologo", windows_path(script))
        wine("msiexec.exe", "/x", "{00000000-0000-0000-0000-000000000000}", "/qn")
        cls.before = cls.state()

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="zavo-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.log = self.folder / "msiexec.log"
        self.addCleanup(self.take_out_everything)

    def take_out_everything(self):
        if self.place.exists():
            for msi in (self.msi, self.newer):
                wine("msiexec.exe", "/x", windows_path(msi), "/qn")

    def msiexec(self, *arguments, expect=DONE):
        self.log.unlink(missing_ok=True)
        code, _, _ = wine("msiexec.exe", *arguments, "/qn", "/l*v", windows_path(self.log))
        self.assertIn(code, expect, self.log_text()[-2000:])

    def log_text(self):
        return self.log.read_text(encoding="utf-8", errors="replace") if self.log.exists() else ""

    def own_rows(self):
        """The rows of the keys that are ours."""
        return registry(*OWN_KEYS)

    def new_rows(self):
        """What is in the registry and was not before, but for what the system writes for itself."""
        return {(key, line) for key, line in registry() - self.before[1]
                if not SYSTEM.search(key) and not key.startswith(BOOKS)}

    @classmethod
    def state(cls):
        """Every file of the prefix, and every row of its registry."""
        files = {str(path.relative_to(cls.prefix)) for path in cls.prefix.rglob("*") if path.suffix != ".reg"}
        return files, registry()

    def assert_installed(self, libraries=BIN):
        self.assertEqual(sorted(path.name for path in self.place.iterdir()), INSTALLED)
        for name in LIBRARIES:
            self.assertTrue(filecmp.cmp(self.place / name, libraries / name, shallow=False), name)
        self.assertTrue(filecmp.cmp(self.place / INSTALLED[0], ROOT / "THIRD-PARTY-NOTICES", shallow=False))

    def test_RegistryRowsAreThoseOfRegistration(self):
        self.msiexec("/i", windows_path(self.msi))
        self.assert_installed()
        installed = self.new_rows()
        self.msiexec("/x", windows_path(self.msi))
        library = windows_path(BIN / "zavoofficeaddin.dll")
        self.assertEqual(wine("regsvr32.exe", "/s", library)[0], 0)
        try:
            registered = self.new_rows()
        finally:
            wine("regsvr32.exe", "/s", "/u", library)
        path = rf"C:\Program Files\{PROGRAM_FOLDER}\zavoofficeaddin.dll"
        self.assertEqual(sum(line == '@="' + path.replace("\\", "\\\\") + '"' for _, line in installed), 1)
        self.assertEqual(sum(bool(line) for _, line in installed), 21)
        self.assertEqual(installed, {(key, line.replace(library.replace("\\", "\\\\"), path.replace("\\", "\\\\")))
                                     for key, line in registered})

    def test_RepairBringsBackAFileAndAKey(self):
        self.msiexec("/i", windows_path(self.msi))
        rows = self.own_rows()
        (self.place / "ZavoKit.dll").unlink()
        reg("delete", r"HKLM\SOFTWARE\Microsoft\Office\Word\Addins\ZAVO.OfficeAddin", "/f")
        self.assertFalse(registry(OFFICE) >= {row for row in rows if row[0].startswith(OFFICE.lower())})
        # Wine's msiexec has no /f; on Windows "/famus" stands for these properties.
        self.msiexec("/i", windows_path(self.msi), "REINSTALL=ALL", "REINSTALLMODE=amus")
        self.assert_installed()
        self.assertEqual(self.own_rows(), rows)
        self.assertEqual(products(), [VERSION])

    def test_NewerVersionReplacesAndOlderIsRefused(self):
        self.msiexec("/i", windows_path(self.msi))
        rows = self.own_rows()
        self.msiexec("/i", windows_path(self.newer))
        self.assertEqual(products(), [NEXT_VERSION])
        self.assert_installed()
        self.assertEqual(self.own_rows(), rows)
        self.msiexec("/i", windows_path(self.msi), expect=REFUSED)
        # Wine shows a refusal's words in a window only; that they are there is tested with the package's other tables.
        self.assertIn("NEWERPRODUCTS = " + msi_property(self.newer, "ProductCode"), self.log_text())
        self.assertRegex(self.log_text(), r"Action ended [\d:]+: LaunchConditions\. Return value 0\.")
        self.assertEqual(products(), [NEXT_VERSION])
        self.assert_installed()

    def test_UpgradeLeavesAProgramThatUsesTheAddinAlone(self):
        self.msiexec("/i", windows_path(self.msi))
        script, said, stop = (self.folder / name for name in ("hold.js", "hold.log", "stop"))
        script.write_text('var addin = new ActiveXObject("ZAVO.OfficeAddin"); WScript.Echo("holds it");'
                          'var files = new ActiveXObject("Scripting.FileSystemObject");'
                          f"while (!files.FileExists({json.dumps(windows_path(stop))})) {{}}"
                          'WScript.Echo("ends");', encoding="ascii")
        with open(said, "wb") as file:
            host = subprocess.Popen(["wine", "cscript.exe", "//nologo", windows_path(script)], stdout=file,
                                    stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL)
        try:
            self.assertTrue(wait_until(lambda: b"holds it" in said.read_bytes(), 30))
            self.msiexec("/i", windows_path(self.newer), expect=DONE_OR_RESTART)
            self.assertIsNone(host.poll(), "the program was ended")
            stop.touch()
            self.assertEqual(host.wait(30), 0)
            self.assertIn(b"ends", said.read_bytes())
        finally:
            host.kill()
            host.wait(10)
        self.assertEqual(products(), [NEXT_VERSION])
        self.assert_installed()

    def test_WindowsThatIsTooOldIsRefused(self):
        (build,) = re.findall(r'"CurrentBuildNumber"="(\d+)"', "\n".join(
            line for key, line in self.before[1] if key.endswith(r"\software\microsoft\windows nt\currentversion")))
        try:
            for old, expect in (("9600", REFUSED), ("10586", REFUSED), ("14393", DONE)):
                reg("add", WINDOWS, "/v", "CurrentBuildNumber", "/d", old, "/f")
                self.msiexec("/i", windows_path(self.msi), expect=expect)
                self.assertEqual(self.place.exists(), expect == DONE)
            # What is installed can be taken out in any case.
            reg("add", WINDOWS, "/v", "CurrentBuildNumber", "/d", "10586", "/f")
            self.msiexec("/x", windows_path(self.msi))
            self.assertFalse(self.place.exists())
        finally:
            reg("add", WINDOWS, "/v", "CurrentBuildNumber", "/d", build, "/f")

    def test_UninstallLeavesNothing(self):
        self.msiexec("/i", windows_path(self.msi))
        self.make_pdf()
        self.msiexec("/i", windows_path(self.newer))
        self.make_pdf()
        self.msiexec("/i", windows_path(self.msi), expect=REFUSED)
        self.msiexec("/x", msi_property(self.newer, "ProductCode"))
        files, rows = self.state()
        self.assertEqual(files - self.before[0] - {BOOKS_FOLDER}, set())
        self.assertEqual(self.before[0] - files, set())
        self.assertEqual({(key, line) for key, line in rows - self.before[1]
                          if not SYSTEM.search(key) and (line or not key.startswith(BOOKS))}, set())
        self.assertEqual(self.before[1] - rows, set())

    def make_pdf(self):
        """Presses "Create PDF" in a host that finds the add-in in the registry."""
        document, pdf = self.folder / "report.docx", self.folder / "report.pdf"
        pdf.unlink(missing_ok=True)
        ask_bridge(command="convert", source=str(ROOT / "samples" / "project-report.fodt"), target=str(document),
                   filter="MS Word 2007 XML")
        code, out, errors = wine(BIN / "office-standin.exe", "--document", windows_path(document), "--click",
                                 "BUTTON_ID_CREATE")
        self.assertEqual((code, errors), (0, ""), out)
        self.assertIn("Harbour bridge", pdf_text(pdf))

    def test_SignedPackageInstallsSignedLibraries(self):
        certificate, key = make_certificate(self.folder)
        out = self.folder / "signed"
        code, _, errors = run_script("sign", "--certificate", str(certificate), "--key", str(key), "--out", str(out))
        self.assertEqual(code, 0, errors)
        (msi,) = out.glob("*.msi")
        self.assertTrue(is_signed(msi, certificate))
        subprocess.run(["sha256sum", "--check", "--quiet", "--strict", "SHA256SUMS"], cwd=out, check=True)
        (sbom,) = out.glob("*.spdx.json")
        sums = {item["checksumValue"] for file in json.loads(sbom.read_text(encoding="utf-8"))["files"]
                for item in file["checksums"]}
        self.assertLessEqual({sha256(out / name) for name in LIBRARIES}, sums)
        # It is another product than the unsigned one, and replaces it.
        self.msiexec("/i", windows_path(self.msi))
        self.msiexec("/i", windows_path(msi))
        self.assertEqual(products(), [VERSION])
        self.assert_installed(out)
        for name in LIBRARIES:
            self.assertTrue(is_signed(self.place / name, certificate), name)
            self.assertFalse(is_signed(BIN / name, certificate), name)
        self.assert_addin_is_created()
        self.msiexec("/x", windows_path(msi))
        self.assertFalse(self.place.exists())

    def assert_addin_is_created(self, expected=True):
        script = self.folder / "create.js"
        script.write_text('new ActiveXObject("ZAVO.OfficeAddin"); WScript.Echo("created");', encoding="ascii")
        self.assertEqual("created" in wine("cscript.exe", "//nologo", windows_path(script))[1], expected)

    def test_AddinIsCreatedFromWhereItIsInstalled(self):
        # Somebody who wants it elsewhere can say so.
        for place, options in ((self.place, ()),
                               (self.prefix / "drive_c" / "Else where", ("INSTALLFOLDER=C:\\Else where",))):
            self.msiexec("/i", windows_path(self.msi), *options)
            self.assert_addin_is_created()
            (place / "zavoofficeaddin.dll").rename(place / "away.dll")
            self.assert_addin_is_created(False)
            (place / "away.dll").rename(place / "zavoofficeaddin.dll")
            # Windows knows from its books where a component is; Wine has to be told again.
            self.msiexec("/x", windows_path(self.msi), *options)
            self.assertFalse(place.exists())


if __name__ == "__main__":
    unittest.main()
