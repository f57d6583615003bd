"""The engine as programs: the command line for Windows and for this machine, and the companion's portfolio job."""
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

from support import BIN, pdf_text, windows_path, wine

WORD = "ZAVO_Q1JFQVRFX0VNUFRZX1BPUlRGT0xJTw"


def native(*arguments):
    done = subprocess.run([BIN / "zavopdf", *arguments], stdin=subprocess.DEVNULL, capture_output=True, check=False)
    return done.returncode, done.stdout.decode("utf-8"), done.stderr.decode("utf-8")


def windows(*arguments):
    return wine(BIN / "zavopdf.exe", *(windows_path(argument) if os.sep in str(argument) else argument
                                       for argument in arguments))


def make_pdf(path, text):
    """A page that says `text`."""
    content = f"BT /F1 12 Tf 20 100 Td ({text}) Tj ET"
    objects = ["<</Type/Catalog/Pages 2 0 R>>", "<</Type/Pages/Kids[3 0 R]/Count 1>>",
               "<</Type/Page/Parent 2 0 R/MediaBox[0 0 200 200]/Contents 4 0 R/Resources<</Font<</F1 5 0 R>>>>>>",
               f"<</Length {len(content)}>>\nstream\n{content}\nendstream",
               "<</Type/Font/Subtype/Type1/BaseFont/Helvetica>>"]
    pdf, places = "%PDF-1.7\n", []
    for number, value in enumerate(objects, 1):
        places.append(len(pdf))
        pdf += f"{number} 0 obj\n{value}\nendobj\n"
    table = "".join(f"{place:010} 00000 n \n" for place in places)
    pdf += (f"xref\n0 {len(objects) + 1}\n0000000000 65535 f \n{table}"
            f"trailer\n<</Size {len(objects) + 1}/Root 1 0 R>>\nstartxref\n{len(pdf)}\n%%EOF\n")
    pathlib.Path(path).write_text(pdf, encoding="ascii")
    return str(path)


class EngineTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="zavo engine ")
        self.addCleanup(shutil.rmtree, self.folder)

    def path(self, name):
        return os.path.join(self.folder, name)

    def file(self, name, content):
        path = self.path(name)
        with open(path, "wb") as file:
            file.write(content)
        return path

    def check(self, pdf):
        done = subprocess.run(["qpdf", "--check", pdf], capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def attachments(self, pdf):
        """Names and contents as another reader sees them."""
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run(["pdfdetach", "-saveall", "-o", folder, pdf], capture_output=True, check=True)
            return {path.name: path.read_bytes() for path in pathlib.Path(folder).iterdir()}

    def both(self, *arguments):
        """What the programs for both systems do; they must agree."""
        first, second = native(*arguments), windows(*arguments)
        self.assertEqual(first[0], second[0], first[2] + second[2])
        return first


class CommandLine(EngineTest):
    def test_ExplainsItself(self):
        version = (BIN.parents[1] / "VERSION").read_text(encoding="ascii").strip()
        self.assertEqual(self.both("--version"), (0, f"zavopdf {version}\n", ""))
        code, out, errors = self.both("--help")
        self.assertEqual((code, errors), (0, ""))
        self.assertIn("Usage: zavopdf merge OUT IN...", out)

    def test_WrongUsageIsSaid(self):
        for arguments in ((), ("what",), ("merge",), ("merge", "out.pdf"), ("list",), ("list", "a", "b"),
                          ("attach", "a"), ("list", "-a.pdf"), ("list", "-"), ("--what",), ("-x", "list", "a"),
                          ("--help", "-x"), ("--",), ("list", "--")):
            code, out, errors = self.both(*arguments)
            self.assertEqual((code, out), (2, ""), arguments)
            self.assertIn("Usage:", errors)

    def test_EmptyPathIsSaid(self):
        for arguments in (("list", ""), ("merge", "out.pdf", ""), ("attach", "", "a"), ("portfolio", "")):
            for run in (native, windows):
                code, out, errors = run(*arguments)
                self.assertEqual((code, out), (1, ""), arguments)
                self.assertRegex(errors, r"\Azavopdf: the path is empty\n?\Z")

    def test_BehindTwoHyphensEverythingIsAPath(self):
        for arguments in (("list", "--", "-none.pdf"), ("--", "list", "-none.pdf")):
            code, _, errors = self.both(*arguments)
            self.assertEqual(code, 1)
            self.assertRegex(errors, r"\Azavopdf: -none\.pdf: cannot be opened: .*\n\Z")

    def test_WhatIsNoPdfIsSaidToBeNone(self):
        for name, content in (("empty.pdf", b""), ("text.pdf", b"no PDF"), ("late.pdf", b" " * 1024 + b"%PDF-1.7")):
            path = self.file(name, content)
            self.assertEqual(native("list", path), (1, "", f"zavopdf: {path}: this is not a PDF\n"))
            self.assertEqual(self.both("list", path)[0], 1)

    def test_MergesInOrder(self):
        inputs = [make_pdf(self.path(f"{text}.pdf"), text) for text in ("one", "two", "three")]
        outputs = []
        for name, run in (("native.pdf", native), ("windows.pdf", windows)):
            out = self.path(name)
            self.assertEqual(run("merge", out, *inputs), (0, "", ""))
            self.check(out)
            self.assertEqual(pdf_text(out).split(), ["one", "two", "three"])
            outputs.append(pathlib.Path(out).read_bytes())
        self.assertEqual(outputs[0], outputs[1])

    def test_InputThatIsNoPdfIsNamedAndNothingIsWritten(self):
        good, bad = make_pdf(self.path("good.pdf"), "good"), self.file("bad.pdf", b"no PDF")
        out = self.file("out.pdf", b"old")
        code, _, errors = self.both("merge", out, good, bad)
        self.assertEqual(code, 1)
        self.assertRegex(errors, r"\Azavopdf: .*bad\.pdf: .*\n\Z")
        self.assertEqual(pathlib.Path(out).read_bytes(), b"old")
        code, _, errors = self.both("merge", out, good, self.path("none.pdf"))
        self.assertEqual(code, 1)
        self.assertRegex(errors, r"\Azavopdf: .*none\.pdf: cannot be opened: .*\n\Z")
        self.assertEqual(sorted(os.listdir(self.folder)), ["bad.pdf", "good.pdf", "out.pdf"])

    def test_AttachesAndLists(self):
        for run in (native, windows):
            pdf = make_pdf(self.path("a.pdf"), "text")
            contents = {"für 日本.txt": b"words " * 1000, "noise.bin": os.urandom(5000), "empty": b""}
            files = [self.file(name, content) for name, content in contents.items()]
            os.utime(files[0], (1709251199, 1709251199))
            self.assertEqual(run("attach", pdf, *files), (0, "", ""))
            self.check(pdf)
            self.assertEqual(self.attachments(pdf), contents)
            for lister in (native, windows):
                code, out, errors = lister("list", pdf)
                self.assertEqual((code, errors), (0, ""))
                self.assertIn("6000\t2024-02-29 23:59:59\tfür 日本.txt\n", out)
                self.assertEqual(len(out.splitlines()), 3)

    def test_NamesAreListedWithoutControlCharacters(self):
        pdf = pathlib.Path(make_pdf(self.path("a.pdf"), "text"))
        name = "a\u202eb\x9b\x1bc".encode("utf-16-be").hex()
        tree = f"/Names<</EmbeddedFiles<</Names[(key)<</Type/Filespec/UF<FEFF{name}>>>]>>>>"
        pdf.write_bytes(pdf.read_bytes().replace(b"/Type/Catalog", b"/Type/Catalog" + tree.encode("ascii")))
        for run in (native, windows):
            self.assertEqual(run("list", pdf), (0, "-\t-\ta?b??c\n", ""))

    def test_FileThatCannotBeReadIsNamedAndThePdfStays(self):
        pdf = make_pdf(self.path("a.pdf"), "text")
        old = pathlib.Path(pdf).read_bytes()
        code, _, errors = self.both("attach", pdf, pdf, self.path("none.txt"))
        self.assertEqual(code, 1)
        self.assertRegex(errors, r"\Azavopdf: .*none\.txt: cannot be opened: .*\n\Z")
        self.assertEqual(pathlib.Path(pdf).read_bytes(), old)
        self.assertEqual(os.listdir(self.folder), ["a.pdf"])

    def test_PortfoliosAreMadeFilledAndNeverOverwritten(self):
        for name, run in (("native.pdf", native), ("windows.pdf", windows)):
            box = self.path(name)
            self.assertEqual(run("portfolio", box), (0, "", ""))
            self.check(box)
            self.assertIn("collection of files", pdf_text(box))
            self.assertEqual(self.attachments(box), {})
            self.assertEqual(run("attach", box, self.file("mail.pdf", b"abc")), (0, "", ""))
            self.check(box)
            self.assertEqual(self.attachments(box), {"mail.pdf": b"abc"})
            code, _, errors = run("portfolio", box)
            self.assertEqual(code, 1)
            self.assertRegex(errors, r"\Azavopdf: .*: exists already\n?\Z")
            self.assertEqual(self.attachments(box), {"mail.pdf": b"abc"})


class CompanionPortfolio(EngineTest):
    SUCCESS = 2000 & 255  # what is left of the exit code here

    def run_companion(self, *arguments):
        log = self.path("companion.log")
        code, out, _ = wine(BIN / "ZAVO.exe", *arguments, environment={"ZAVO_COMPANION_LOG": windows_path(log)})
        report = pathlib.Path(log).read_text(encoding="utf-8")
        self.assertEqual(out.replace("\r\n", "\n"), report)
        os.remove(log)
        return code, report

    def test_MakesAPortfolioAtThePath(self):
        box = self.path("A box 日.pdf")
        code, report = self.run_companion(f"{windows_path(box)} {WORD}")
        self.assertEqual(code, self.SUCCESS, report)
        self.assertTrue(report.startswith("started as: ["), report)
        self.assertIn(f"\nportfolio: {windows_path(box)}\n", report)
        self.check(box)
        self.assertEqual(os.listdir(self.folder), ["A box 日.pdf"])

    def test_FailureIsACodeAndALine(self):
        for path in (self.file("mine.pdf", b"mine"), self.path("none/box.pdf")):
            code, report = self.run_companion(f"{windows_path(path)} {WORD}")
            self.assertEqual(code, 3, report)
            self.assertIn("\nno portfolio: ", report)
        self.assertEqual(pathlib.Path(self.path("mine.pdf")).read_bytes(), b"mine")

    def test_WordIsTakenOnlyAtTheEndOfOneArgument(self):
        box = windows_path(self.path("box.pdf"))
        for arguments in ((box, WORD), (f"{box}{WORD}",), (f"{box} {WORD}x",), (f"{box} {WORD}", box)):
            code, report = self.run_companion(*arguments)
            self.assertEqual(code, 1, report)
            self.assertNotIn("portfolio:", report)
        self.assertEqual(os.listdir(self.folder), [])


if __name__ == "__main__":
    unittest.main()
