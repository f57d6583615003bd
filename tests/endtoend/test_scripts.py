"""The scripts as a user calls them."""
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
import time
import unittest

from support import ROOT, ask_bridge, pdf_outline_titles, pdf_text, plain_environment, run_script

MAILS = ROOT / "samples" / "mails"


class Scripts(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="zavo demo ")
        self.addCleanup(shutil.rmtree, self.folder)

    def test_HelpExplainsItself(self):
        for script in ("demo", "gallery", "test", "build", "lint", "make-icons", "check-binaries",
                       "check-reproducible", "package", "sign", "benchmark"):
            code, out, _ = run_script(script, "--help")
            self.assertEqual(code, 0, script)
            self.assertIn(f"Usage: scripts/{script}", out)

    def test_WrongArgumentsAreSaidInOneLine(self):
        for arguments, said in ((("demo", "--what"), "unknown option --what"),
                                (("demo", "/no/such.docx"), "no such document: /no/such.docx"),
                                (("demo", "--tick"), "--tick needs the ID of a check box"),
                                (("demo", "--tick", "other"), "there is no check box other"),
                                (("demo", "/etc/hostname"), "neither Word, Excel nor PowerPoint opens"),
                                (("demo", "--out", "/tmp"), "--out names a folder, not a file: /tmp"),
                                (("demo", "--out", "/no/such/a.pdf"), "no such folder: /no/such"),
                                (("demo", "--outlook"), "--outlook needs a folder of .eml files"),
                                (("demo", "--outlook", "/no/such"), "no such folder: /no/such"),
                                (("demo", "--outlook", ROOT / "docs"), "there are no .eml files in"),
                                (("demo", "--outlook", MAILS, "--select", "1,x"), "--select needs the numbers"),
                                (("demo", "--outlook", MAILS, "--select", "1,99"), "there is no mail 99 in"),
                                (("demo", "--outlook", MAILS, "--click", "other"), "there is no button other"),
                                (("demo", "--outlook", MAILS, "--out", "/etc/hostname"), "--out names a file, not"),
                                (("demo", "--outlook", MAILS, "--out", ROOT / "docs"), "docs is not empty"),
                                (("demo", "--outlook", MAILS, "--send"), "--outlook goes with --select, --click"),
                                (("demo", "--select", "1"), "--select and --click need --outlook"),
                                (("demo", "--window", "--send"), "--window goes with a FILE, or with --outlook"),
                                (("demo", "--window"), "--window needs a display, and DISPLAY is not set"),
                                (("gallery", "--what"), "unknown option --what"),
                                (("gallery", "--language"), "--language needs a language"),
                                (("gallery", "--language", "xx"), "there is no language xx"),
                                (("gallery", "--host"), "--host needs the name of a host"),
                                (("gallery", "--host", "word excel"), "there is no host word excel"),
                                (("gallery", "--out"), "--out needs a folder"),
                                (("gallery", "--out", "/etc/hostname"), "--out names a file, not a folder"),
                                (("gallery", "--out", "/no/such/folder"), "no such folder: /no/such"),
                                (("gallery", "--out", ROOT / "docs"), "docs is not empty"),
                                (("test", "--what"), "unknown option --what"),
                                (("build", "--what"), "unknown option --what"),
                                (("package", "--what"), "unknown option --what"),
                                (("package", "--out"), "--out needs a folder"),
                                (("package", "--out", "/etc/hostname"), "--out names a file, not a folder"),
                                (("package", "--out", "/no/such/folder"), "no such folder: /no/such"),
                                (("package", "--out", ROOT / "docs"), "docs is not empty"),
                                (("package", "--libraries", ROOT / "docs"), "zavoofficeaddin.dll and ZavoKit.dll are"),
                                (("package", "--version", "1.2"), "a version has three numbers, as in 1.2.3: 1.2"),
                                (("package", "--version", "1.256.0"), "Windows Installer takes versions below 256"),
                                (("make-icons", "--what"), "unknown option --what"),
                                (("check-binaries", "--what"), "unknown option --what"),
                                (("check-reproducible", "--what"), "unknown option --what"),
                                (("make-icons", "--sheet"), "--sheet needs a FILE")):
            code, out, errors = run_script(*arguments)
            self.assertEqual((code, out), (1, ""), arguments)
            self.assertEqual(len(errors.splitlines()), 1, errors)
            self.assertIn(said, errors)

    def test_DemoMakesAPdfOfTheUsersDocument(self):
        document = os.path.join(self.folder, "my plan.docx")
        target = os.path.join(self.folder, "out file.pdf")
        ask_bridge(command="convert", source=str(ROOT / "samples" / "project-report.fodt"), target=document,
                   filter="MS Word 2007 XML")
        code, out, errors = run_script("demo", "my plan.docx", "--out", "out file.pdf", "--untick",
                                       "CheckBox_ID_CreateBookmarks", cwd=self.folder)
        self.assertEqual(code, 0, out + errors)
        self.assertIn(f"PDF:       {target}\n", out)
        self.assertIn("Companion: started as: [", out)
        self.assertIn("Harbour bridge", pdf_text(target))
        self.assertEqual(pdf_outline_titles(target), [])

    def test_DemoMakesPdfsOfTheUsersMails(self):
        mails = os.path.join(self.folder, "my mails")
        os.mkdir(mails)
        for number in (1, 2, 9):
            shutil.copy(next(MAILS.glob(f"{number:02}-*.eml")), mails)
        code, out, errors = run_script("demo", "--outlook", "my mails", "--select", "3,2", "--click",
                                       "Button_ID_OpenFromMail", "--click", "Button_ID_CreateByMail", "--out",
                                       "results", cwd=self.folder)
        self.assertEqual(code, 0, out + errors)
        results = pathlib.Path(self.folder, "results")
        (pdf,) = results.glob("Create/*/*.pdf")
        self.assertEqual(pdf.name, "Piers 1 to 4.pdf")
        self.assertIn("All four piers stand", pdf_text(pdf))
        self.assertIn(f"           {pdf.relative_to(results)}, {pdf.stat().st_size} bytes\n", out)
        self.assertIn("message: 1 email was left out. Its subject cannot be used as a file name: ", out)
        self.assertIn('No PDF:    09-reply.eml, "RE: Piers 1 to 4": no file can have its subject as a name, ', out)
        self.assertEqual(len(list(results.glob("Open/*/site-plan.pdf"))), 1)
        companion = (results / "companion.txt").read_text(encoding="utf-8")
        self.assertEqual(companion.count("started as: ["), 2)
        self.assertIn('\\Piers 1 to 4.pdf" ]\n', companion)
        self.assertIn("".join(f"Companion: {line}\n" for line in companion.splitlines()), out)

    def test_DemoFailsWhenNothingCameOfACommand(self):
        mails = os.path.join(self.folder, "replies")
        os.mkdir(mails)
        shutil.copy(next(MAILS.glob("09-*.eml")), mails)
        code, out, errors = run_script("demo", "--outlook", "replies", "--click", "Button_ID_CreateByMail", "--click",
                                       "Button_ID_CreatePortfolioByMail", "--out", "results", cwd=self.folder)
        self.assertEqual(code, 1, out + errors)
        self.assertIn("message: There are no emails that can be created as PDFs\n"
                      "message: 1 email was left out. Its subject cannot be used as a file name: ", out)
        self.assertIn("\n         \n         RE: Piers 1 to 4\n", out)
        self.assertTrue(errors.endswith("demo: nothing came of Button_ID_CreateByMail Button_ID_CreatePortfolioByMail: "
                                        "see the messages and reasons above\n"), errors)

    def test_DemoKeepsAnOutFileThatIsThereAlready(self):
        target = os.path.join(self.folder, "precious.pdf")
        with open(target, "w", encoding="ascii") as file:
            file.write("precious")
        for arguments in (("--out", target), ("--out", target[:-4])):
            code, _, errors = run_script("demo", *arguments)
            self.assertEqual(code, 1)
            self.assertIn("precious.pdf exists; name another with --out or say --overwrite", errors)
        with open(target, encoding="ascii") as file:
            self.assertEqual(file.read(), "precious")

    def test_DemoSaysSoWhenNoPdfCameOfIt(self):
        document = os.path.join(self.folder, "broken.docx")
        with open(document, "wb") as file:
            file.write(b"PK\3\4" + bytes(range(256)) * 20)
        target = os.path.join(self.folder, "broken.pdf")
        with open(target, "w", encoding="ascii") as file:
            file.write("old")
        code, out, errors = run_script("demo", document, "--overwrite")
        self.assertEqual(code, 1)
        self.assertIn("the host could not export: ", out)
        self.assertTrue(errors.endswith("demo: no PDF came of it\n"), errors)

    def test_InterruptedDemoEndsAtOnceAndLeavesNothingBehind(self):
        cache = os.environ.get("ZAVO_CACHE") or os.path.join(
            os.environ.get("XDG_CACHE_HOME") or os.path.expanduser("~/.cache"), "zavo-office-addin")
        runs = os.path.join(cache, "runs")
        before = set(os.listdir(runs))
        for moment in ("Starting Wine", "Registering", "Clicking"):
            with open(os.path.join(self.folder, "log"), "w+", encoding="utf-8") as log:
                demo = subprocess.Popen([ROOT / "scripts" / "demo"], env=plain_environment(), stdin=subprocess.DEVNULL,
                                        stdout=log, stderr=log, start_new_session=True)
                deadline = time.monotonic() + 100
                while moment not in pathlib.Path(log.name).read_text(encoding="utf-8"):
                    self.assertLess(time.monotonic(), deadline)
                    time.sleep(0.02)
                time.sleep(0.3)
                started = set(os.listdir(runs)) - before
                os.killpg(demo.pid, signal.SIGINT)
                self.assertEqual(demo.wait(30), 130, moment)
            self.assertEqual(set(os.listdir(runs)) - before, set(), moment)
            for process in pathlib.Path("/proc").glob("[0-9]*/cmdline"):
                try:
                    command = process.read_bytes().replace(b"\0", b" ").decode("utf-8", "replace")
                except OSError:
                    continue
                self.assertFalse(any(run in command for run in started), f"left running: {command}")

    def test_NamesThatWindowsCannotOpenAreRefused(self):
        document = os.path.join(self.folder, "a:b.docx")
        with open(document, "w", encoding="ascii"):
            pass
        code, _, errors = run_script("demo", document)
        self.assertEqual(code, 1)
        self.assertIn("Windows cannot open a path with one of", errors)

    def test_DocumentBehindALinkIsMadeIntoAPdfBesideTheLink(self):
        folder = os.path.join(self.folder, "elsewhere")
        os.mkdir(folder)
        ask_bridge(command="convert", source=str(ROOT / "samples" / "project-report.fodt"),
                   target=os.path.join(folder, "real.docx"), filter="MS Word 2007 XML")
        os.symlink(os.path.join(folder, "real.docx"), os.path.join(self.folder, "link.docx"))
        code, out, errors = run_script("demo", os.path.join(self.folder, "link.docx"))
        self.assertEqual(code, 0, out + errors)
        self.assertIn("Harbour bridge", pdf_text(os.path.join(self.folder, "link.pdf")))

    def test_DemoKeepsAPdfThatIsThereAlready(self):
        document = os.path.join(self.folder, "plan.docx")
        for name in (document, os.path.join(self.folder, "plan.pdf")):
            with open(name, "w", encoding="ascii") as file:
                file.write("precious")
        code, _, errors = run_script("demo", document)
        self.assertEqual(code, 1)
        self.assertIn("plan.pdf exists; name another with --out or say --overwrite", errors)
        with open(os.path.join(self.folder, "plan.pdf"), encoding="ascii") as file:
            self.assertEqual(file.read(), "precious")


if __name__ == "__main__":
    unittest.main()
