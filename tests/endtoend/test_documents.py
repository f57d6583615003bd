"""The pages for people: whether what they name is there, and whether what is there is named."""
import itertools
import re
import unittest

from support import ROOT

LINK = re.compile(r"!?\[[^\]\n]*\]\(([^)\s]+)\)|^\[[^\]]+\]: (\S+)$", re.MULTILINE)
CODE = re.compile(r"^(```|~~~).*?^\1|`[^`\n]*`", re.MULTILINE | re.DOTALL)
SCRIPT = re.compile(r"(?<![\w/.-])scripts/([\w.-]*\w)")
TEXT = re.compile(r'L"((?:[^"\\]|\\.)*)"')
# Written by benchmarks/engine.
GENERATED = {ROOT / "benchmarks" / "README.md"}


def files(pattern):
    """The tree's own files, not what was built."""
    return [path for path in ROOT.glob(pattern)
            if path.is_file() and path.relative_to(ROOT).parts[0] not in ("build", "dist", ".git")]


def read(*parts):
    return ROOT.joinpath(*parts).read_text(encoding="utf-8")


def anchors(text):
    """The names that the page's headings can be reached by, as code hosts make them."""
    counts, result = {}, set()
    outside_code = re.sub(r"^(```|~~~).*?^\1", "", text, flags=re.MULTILINE | re.DOTALL)
    for heading in re.findall(r"^#+ +(.+?) *$", outside_code, re.MULTILINE):
        shown = re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", heading)
        name = re.sub(r"[^\w\- ]", "", shown.lower()).replace(" ", "-")
        number = counts[name] = counts.get(name, -1) + 1
        result.add(f"{name}-{number}" if number else name)
    return result


def texts(source):
    """The wide texts of a C++ file; neighbours are one text, as the compiler has it."""
    joined = re.sub(r'"\s*\n\s*L"', "", re.sub(r"//.*", "", source))
    return [text.replace(r"\\", "\\") for text in TEXT.findall(joined)]


def registry_texts():
    """What src/ asks the registry for: paths wherever they stand, and the names of values."""
    found = set()
    for path in [*files("src/**/*.cpp"), *files("src/**/*.h")]:
        source = path.read_text(encoding="utf-8")
        # Of the keys of Office's versions the guide has the newest whole, and the other versions.
        found.update(re.sub(r"\\\d\d\.0\\", r"\\16.0\\", text)
                     for text in texts(source) if re.match(r"(?i)software\\", text))
        found.update(version for text in texts(source) for version in re.findall(r"\\(\d\d\.0)\\", text))
        if path.name in ("Registration.cpp", "Identity.h"):
            found.update(text.strip("\\") for text in texts(source))
        hosts = re.search(r"hosts\[\] = {([^}]*)}", source)
        for pattern in re.findall(r"wstring HostKey\([^{]*{([^}]*)}", source):
            start, between = texts(pattern)
            prog_id, = re.findall(r'addinProgId\[\] = L"([^"]*)"', read("src", "addin", "Identity.h"))
            found.update(start + host + between + prog_id for host in texts(hosts.group(1)))
        for call in re.findall(r"(?:ReadRegistryValue|Reg(?:QueryValueEx|GetValue|SetValueEx)W)\(([^;]*);", source):
            found.update(texts(call))
        found.update(itertools.chain.from_iterable(map(texts, re.findall(r"wchar_t \w+Value\[\] = ([^;]*);", source))))
    return found - {""}


def written_names():
    """What src/ and the engine call files and folders that they write."""
    sources = "".join(path.read_text(encoding="utf-8") for path in files("src/outlook/*.cpp"))
    found = {name.strip("\\") for name in
             re.findall(r'wchar_t \w+(?:Folder|Name|Ending)\[\] = L"([^"]+)";', sources)}
    sources = read("engine", "File.cpp") + read("engine", "FileWindows.cpp")
    return found | set(re.findall(r'(?:name =|name \+|from \+) L?"([^"]+)"', sources))


def product_source():
    """All of src/."""
    return "".join(path.read_text(encoding="utf-8") for path in [*files("src/**/*.cpp"), *files("src/**/*.h")])


def shown_messages(source):
    """The English texts of the message boxes, with N for a number, and their title."""
    shown = re.findall(r"\b(?:OpenInCompanion|ShowMessage|ShowComError)\([^;]*;| caption = [^;]*;", source)
    left_out = [text.replace("{}", "N") for text in texts(read("src", "ui", "LeftOutTexts.h"))]
    return {text for call in shown for text in texts(call)} | set(left_out) - {"N"}


def started_programs(source):
    """The programs and libraries that src/ starts or loads, their functions, and the classes that it makes."""
    found = set(re.findall(r'(?:LoadLibraryW\(|CLSIDFromProgID\(|GetProcAddress\(\w+, )L?"([^"]+)"', source))
    found.update(re.findall(r"CoCreateInstance\(CLSID_(\w+)", source))
    found.update(name.strip("\\") for name in re.findall(r'L"([^"]*\.(?:exe|dll))"', source, re.IGNORECASE))
    found.update(re.findall(r'#include "engine/(\w+)\.h"', source))
    return found


def called_members(source):
    """What src/ asks of Office's objects, by name."""
    calls = re.findall(r"\b(?:Automation\w+|Get(?:Object|Text|Number)Property)\(([^;]*);", source)
    found = {text for call in calls for text in texts(call)}
    found.update(itertools.chain.from_iterable(re.findall(r'{L"(\w+)", Host\w+}|{Host\w+, L"(\w+)"}', source)))
    found.update(itertools.chain.from_iterable(map(texts, re.findall(r"const property : {([^}]*)}", source))))
    return found - {""}


class Documents(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.pages = {path: path.read_text(encoding="utf-8") for path in files("**/*.md")}

    def test_EveryLinkAndPictureLeadsSomewhere(self):
        dead = []
        for page, text in self.pages.items():
            for target in itertools.chain.from_iterable(LINK.findall(CODE.sub("", text))):
                if not target or re.match(r"[a-z]+:", target):
                    continue
                name, _, anchor = target.partition("#")
                path = (page.parent / name).resolve() if name else page
                if not path.is_relative_to(ROOT) or not path.exists() or (
                        anchor and anchor not in anchors(self.pages.get(path, ""))):
                    dead.append(f"{page.relative_to(ROOT)}: {target}")
        self.assertEqual(dead, [])

    def test_EveryPageIsLinkedFromAnother(self):
        linked = {(page.parent / (inline or reference).partition("#")[0]).resolve()
                  for page, text in self.pages.items() for inline, reference in LINK.findall(text)}
        self.assertEqual(sorted(str(page.relative_to(ROOT)) for page in self.pages
                                if page not in linked and page != ROOT / "README.md"
                                and page.parent.name != "decisions"), [])

    def test_NothingIsLeftToBeWritten(self):
        left = [f"{page.relative_to(ROOT)}: {line}" for page, text in self.pages.items()
                for line in text.splitlines() if re.search(r"\b(TODO|FIXME|XXX|TBD)\b", line)]
        self.assertEqual(left, [])

    def test_LinesFitTheEditor(self):
        wide = [f"{page.relative_to(ROOT)}:{number}" for page, text in self.pages.items() if page not in GENERATED
                for number, line in enumerate(text.splitlines(), 1)
                if len(line) > 120 and not line.startswith("|") and " " in line.strip()]
        self.assertEqual(wide, [])

    def test_ScriptsThatPagesNameExist(self):
        missing = {f"{page.relative_to(ROOT)}: scripts/{name}" for page, text in self.pages.items()
                   for name in SCRIPT.findall(text) if not (ROOT / "scripts" / name).is_file()}
        self.assertEqual(missing, set())

    def test_EveryScriptIsExplained(self):
        explained = {name for page, text in self.pages.items()
                     if page.parent == ROOT or (ROOT / "docs") in page.parents for name in SCRIPT.findall(text)}
        self.assertEqual({path.name for path in files("scripts/*")} - explained, set())

    def test_EveryFolderIsExplained(self):
        folders = {path.name for path in ROOT.iterdir()
                   if path.is_dir() and not path.name.startswith(".") and path.name not in ("build", "dist")}
        self.assertEqual({name for name in folders if f"`{name}/`" not in read("CONTRIBUTING.md")}, set())

    def test_AdminGuideNamesWhatTheRegistryIsAskedFor(self):
        expected = registry_texts()
        for sample in ("ZAVO.OfficeAddin", "UI Theme", "InstallPath", "LoadBehavior", "16.0",
                       r"SOFTWARE\Microsoft\Office\Word\Addins\ZAVO.OfficeAddin", r"SOFTWARE\WOW6432Node\ZAVO"):
            self.assertIn(sample, expected)  # the sources are still read as they are written
        guide = read("docs", "admin-guide.md").casefold()
        self.assertEqual({text for text in expected if text.casefold() not in guide}, set())

    def test_AdminGuideHasTheNumbersThatRegistrationWrites(self):
        source = read("src", "addin", "Registration.cpp")
        numbers = dict(re.findall(r"constexpr DWORD (\w+) = (\d+);", source))
        rows = set(re.findall(r'L"(\w+)", REG_DWORD, &(\w+)', source))
        self.assertEqual(len(rows), 2)
        claims = [f"`{value}` | {numbers[number]} (DWORD)" for value, number in rows]
        guide = read("docs", "admin-guide.md")
        self.assertEqual([claim for claim in claims if claim not in guide], [])

    def test_AdminGuideNamesTheFilesThatAreWritten(self):
        expected = written_names()
        for sample in ("ZAVO Outlook PDFs", "Open", "Create", "Portfolio", ".files", "~zavo", ".tmp", ".old"):
            self.assertIn(sample, expected)  # the sources are still read as they are written
        guide = read("docs", "admin-guide.md")
        section = guide[guide.index("\n## Files and folders"):guide.index("\n## Other programs")]
        spans = re.findall(r"`([^`]+)`", section)
        self.assertEqual({text for text in expected if not any(
            re.search(("\\b" if text[0].isalnum() else "") + re.escape(text) + "(?![a-z])", span) for span in spans)},
            set())

    def troubleshooting(self):
        """The part of the admin guide about failures, on one line."""
        guide = read("docs", "admin-guide.md")
        return " ".join(guide[guide.index("\n## Troubleshooting"):guide.index("\n## When a library")].split())

    def test_TroubleshootingHasEveryMessage(self):
        showing = re.compile(r"\b(MessageBoxW|ShowMessage|ShowComError)\(")
        self.assertEqual({path.stem for path in [*files("src/**/*.cpp"), *files("src/**/*.h")]
                          if showing.search(path.read_text(encoding="utf-8"))},
                         {"Companion", "ComErrorText", "LeftOutMails"})  # nothing else shows one
        expected = shown_messages(product_source())
        for sample in ("There are no emails that can be created as PDFs", "ZAVO Add-in", "and N more",
                       "There are no PDF attachments that can be opened"):
            self.assertIn(sample, expected)  # the sources are still read as they are written
        self.assertEqual(len([text for text in expected if "left out" in text]), 2)
        section = self.troubleshooting()
        self.assertEqual({text for text in expected if text not in section}, set())

    def test_TroubleshootingNamesWhatIsStartedAndLoaded(self):
        expected = started_programs(product_source())
        for sample in ("ZAVO.exe", "mapi32.dll", "MAPISendMailW", "Word.Application", "TaskbarList", "ZavoKit"):
            self.assertIn(sample, expected)
        section = self.troubleshooting().casefold()
        self.assertEqual({name for name in expected if name.casefold() not in section}, set())

    def test_TroubleshootingHasWhatIsAskedOfOffice(self):
        expected = called_members(product_source())
        for sample in ("Explorers", "ActiveWorkbook", "FullName", "ExportAsFixedFormat", "SaveAsFile", "Quit",
                       "Visible", "Count", "hwnd"):
            self.assertIn(sample, expected)
        section = self.troubleshooting().partition("### What is asked of Office")[2]
        self.assertEqual({name for name in expected if f"`{name}`" not in section}, set())

    def test_TroubleshootingHasTheFilesThatMayStay(self):
        section = self.troubleshooting()
        left = section[section.index("### Files that stay"):section.index("### Installing")]
        scratch = {name for name in written_names() if name in ("temp", ".files", "Portfolio", "~zavo", ".tmp")}
        self.assertEqual(len(scratch), 5)
        self.assertEqual({name for name in scratch if not re.search(f"`[^` ]*{re.escape(name)}[^`]*`", left)}, set())

    def test_TroubleshootingHasTheLimits(self):
        source = product_source()
        number = {name: re.search(rf"\b{name} = (\d+);", source).group(1)
                  for name in ("companionSuccess", "fewest", "mostShown", "longestSubject")}
        claims = [f"exit code {number['companionSuccess']}", f"fewer than {number['fewest']} items",
                  f"The first {number['mostShown']} subjects follow, each cut at {number['longestSubject']} characters",
                  "attachmentLimit = 0x80000000;" in source and "2 GiB or more", "32,767 characters",
                  "path.size() < MAX_PATH" in source and "260 characters or more"]
        section = self.troubleshooting()
        self.assertEqual([claim for claim in claims if not claim or claim not in section], [])
        buffer, = re.findall(r"wchar_t buffer\[(\d+)\];\s*const auto size = ReadRegistryValue\(", source)
        self.assertIn(f"more than {2 * int(buffer)} bytes counts as missing", read("docs", "admin-guide.md"))

    def test_UserGuideHasThePicturesThatScriptsDraw(self):
        documented, = re.findall(r"documented=\(([^)]*)\)", read("scripts", "gallery"))
        drawn = set(re.findall(r"\]=(\S+)", documented))
        self.assertIn("outlook-dark", drawn)
        self.assertEqual({path.stem for path in files("docs/user-guide/*.png")} - {"icons-light", "icons-dark"}, drawn)

    def test_AdminGuideHasTheMeasuredLoadCost(self):
        rows = {name: [float(number) for number in numbers.split(" | ")] for name, numbers in re.findall(
            r"^\| (all|ribbon loaded) \| ([\d. |]+) \|$", read("benchmarks", "README.md"), re.MULTILINE)}
        empty, _, with_engine, ours = rows["all"][:4]
        claims = [f"takes {ours:.1f} ms in a fresh process", f"{ours - with_engine:.1f} ms of it for the engine",
                  f"beside {empty:.1f} ms for an empty add-in", f"{rows['ribbon loaded'][3]:.1f} ms are spent"]
        guide = " ".join(read("docs", "admin-guide.md").split())
        self.assertEqual([claim for claim in claims if claim not in guide], [])

    def test_ReadmeIsShortAndLeadsOn(self):
        readme = read("README.md")
        self.assertLessEqual(len(readme.splitlines()), 80)
        self.assertIn("](docs/user-guide/word.png)", readme.partition("\n## ")[0])
        self.assertEqual(re.findall(r"^## (.+)$", readme, re.MULTILINE),
                         ["Try it", "Install it", "Change it", "Pages", "Licence"])
        self.assertIn("owner has yet to name", readme.partition("\n## Licence")[2])

    def test_ChangelogHasTheVersion(self):
        versions = re.findall(r"^## \[(\d+\.\d+\.\d+)\]", read("CHANGELOG.md"), re.MULTILINE)
        self.assertEqual(versions[:1], [read("VERSION").strip()])


if __name__ == "__main__":
    unittest.main()
