"""Outlook's buttons, from the click to the files and the companion: two processes, real documents, the real engine."""
import collections
import email
import email.policy
import email.utils
import glob
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

from support import (BIN, ROOT, AddinTest, pdf_attachments, pdf_outline_titles, pdf_text, qpdf_check, wait_until,
                     windows_path, wine)

MAILS = ROOT / "samples" / "mails"
HOSTILE = ROOT / "tests" / "endtoend" / "hostile"
PREPARE = ROOT / "standins" / "outlook" / "prepare.py"
WORKING_FOLDER = r"\Documents\ZAVO Outlook PDFs"
BUTTONS = [f"Button_ID_{name}" for name in ("OpenFromMail", "OpenFromFolder", "CreateByMail", "CreateByFolder",
                                            "CreateMergeByFolder", "CreatePortfolioByMail")]


def read_mail(path, policy=email.policy.default):
    with open(path, "rb") as file:
        return email.message_from_binary_file(file, policy=policy)


def attachments_of(path):
    """The named attachments of a mail as pairs of name and bytes, in their order."""
    # The other policy stumbles over lone surrogates in names.
    return [(part.get_filename(), part.get_payload(decode=True))
            for part in read_mail(path, email.policy.compat32).walk() if part.get_filename()]


def received_time(path):
    message = read_mail(path)
    return email.utils.parsedate_to_datetime((message["Received"] or message["Date"]).rpartition(";")[2])


def word_processes():
    """The Words that run in this Wine session."""
    session = os.fsencode("WINEPREFIX=" + os.environ["WINEPREFIX"])

    def is_word(process):
        try:
            return b"word-server.exe" in (process / "cmdline").read_bytes() and \
                session in (process / "environ").read_bytes().split(b"\0")
        except OSError:  # it has just ended
            return False
    return [process for process in pathlib.Path("/proc").glob("[0-9]*") if is_word(process)]


class OutlookTest(AddinTest):
    """Outlook's stand-in on a folder of mails, and Word's registered as a local server."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.register_word()

    @classmethod
    def tearDownClass(cls):
        wine(BIN / "word-server.exe", "/UnregServer")
        super().tearDownClass()

    @staticmethod
    def register_word():
        code, _, errors = wine(BIN / "word-server.exe", "/RegServer")
        if code:
            raise RuntimeError(f"/RegServer: {code} {errors}")

    def setUp(self):
        super().setUp()
        self.journal = os.path.join(self.folder, "journal")
        users = os.path.join(os.environ["WINEPREFIX"], "drive_c", "users")
        self.documents = next(path for path in glob.glob(os.path.join(users, "*", "Documents"))
                              if os.path.basename(os.path.dirname(path)) != "Public")
        self.written = os.path.join(self.documents, "ZAVO Outlook PDFs")
        self.remove_written()
        self.addCleanup(self.remove_written)

    def remove_written(self):
        shutil.rmtree(self.written, ignore_errors=True)

    def tearDown(self):
        self.assertTrue(wait_until(lambda: not word_processes()), "a Word stayed behind")

    def prepare(self, *mails, name="Inbox"):
        """Makes a folder of these mails, or of all in a folder, ready for Outlook; gives the mails' paths."""
        self.mails = os.path.join(self.folder, name)
        self.prepared = os.path.join(self.folder, "prepared")
        os.mkdir(self.mails)
        for mail in mails:
            shutil.copy(mail, self.mails)
        subprocess.run([sys.executable, PREPARE, self.mails, self.prepared], check=True)
        return [os.path.join(self.mails, mail) for mail in sorted(os.listdir(self.mails))]

    def sample_paths(self, *numbers):
        return [next(MAILS.glob(f"{number:02}-*.eml")) for number in numbers]

    def click(self, *buttons, select=None, window=False, message=None):
        """Clicks in one session of Outlook, in its window if there is to be one; gives what it printed. In a window
        `message` gets the picture of the last message."""
        arguments = ["--outlook", windows_path(self.prepared)]
        if window:
            arguments.append("--window")
        if select:
            arguments += ["--select", ",".join(map(str, select))]
        for button in buttons:
            arguments += ["--click", button]
        if message:
            arguments += ["--message", windows_path(message)]
        code, out, errors = wine(BIN / "office-standin.exe", *arguments,
                                 environment={"ZAVO_COMPANION_LOG": windows_path(self.companion_log),
                                              "ZAVO_JOURNAL": windows_path(self.journal)})
        self.assertEqual((code, errors), (0, ""), out)
        return out

    def starts(self, count):
        """The files of each start of the companion, which was started `count` times."""
        lines = [line for line in self.companion_report().splitlines() if line.startswith("started as: ")]
        self.assertEqual(len(lines), count, lines)
        return [line.split('"')[3::2] for line in lines]

    def linux_path(self, path):
        """The Linux path of a file in the working folder."""
        _, found, rest = path.partition(WORKING_FOLDER)
        self.assertTrue(found, path)
        return self.written + rest.replace("\\", "/")

    def journal_entries(self, what):
        with open(self.journal, encoding="utf-8") as file:
            return [line.rstrip("\n").split("\t")[1:] for line in file if line.startswith(what + "\t")]

    def files_in(self, subfolder):
        """What is in a working folder, but for the folders of single mails."""
        return sorted(entry.name for entry in os.scandir(os.path.join(self.written, subfolder)) if entry.is_file())


class OpenFromOutlook(OutlookTest):
    def test_PdfAttachmentsOfTheSelectedMailsAreOpenedInTheirOrder(self):
        self.prepare(*self.sample_paths(2, 4, 20))
        self.click("Button_ID_OpenFromMail", select=(3, 1))
        (opened,) = self.starts(1)
        expected = [pair for number in (20, 2) for pair in attachments_of(*self.sample_paths(number))
                    if pair[0].endswith((".pdf", ".PDF"))]
        self.assertEqual([path.rpartition("\\")[2] for path in opened], [name for name, _ in expected])
        for path, (_, content) in zip(opened, expected):
            self.assertIn(WORKING_FOLDER + "\\Open\\", path)
            with open(self.linux_path(path), "rb") as file:
                self.assertEqual(file.read(), content)

    def test_PdfAttachmentsOfTheWholeFolderAreOpened(self):
        mails = self.prepare(*MAILS.glob("*.eml"))
        self.click("Button_ID_OpenFromFolder", select=(1,))
        (opened,) = self.starts(1)
        expected = [name for mail in mails for name, _ in attachments_of(mail) if name.endswith((".pdf", ".PDF"))]
        self.assertGreater(len(expected), 8)
        self.assertEqual([path.rpartition("\\")[2] for path in opened], expected)
        # Two mails have a file of one name, and one mail has two.
        self.assertEqual(len(set(opened)), len(opened) - 1)

    def test_AppointmentHasNothingToOpen(self):
        self.prepare(*self.sample_paths(10))
        out = self.click("Button_ID_OpenFromMail")
        self.assertIn("message: There are no PDF attachments that can be opened\n", out)
        self.assertTrue(os.path.isdir(os.path.join(self.written, "Open")))


class CreateFromOutlook(OutlookTest):
    def assert_attached(self, pdf, expected):
        """That the PDF holds these files, given as pairs of name and bytes, in any order."""
        self.assertEqual(sorted(pdf_attachments(pdf)), sorted(expected))

    def test_SelectedMailsBecomePdfsInTheOrderOfTheSelection(self):
        mails = self.prepare(*self.sample_paths(3, 4))
        self.click("Button_ID_CreateByMail", select=(2, 1))
        (opened,) = self.starts(1)
        self.assertEqual([path.rpartition("\\")[2] for path in opened],
                         ["Minutes of 6 October.pdf", "Main span with picture.pdf"])
        minutes, span = map(self.linux_path, opened)
        for words in ("From:", "Site office <office@harbour-bridge.example>", "Sent:", "7 October 2026", "To:",
                      "Maria Lindner", "Subject:", "Minutes of 6 October", "the offer that we spoke about"):
            self.assertIn(words, pdf_text(minutes))
        self.assert_attached(minutes, attachments_of(mails[1]))
        self.assertIn("Next: welding of the joints", pdf_text(span))
        self.assert_attached(span, [])
        images = subprocess.run(["pdfimages", "-list", span], capture_output=True, text=True, check=True).stdout
        self.assertRegex(images, r"image +240 +100 ")
        for pdf in (minutes, span):
            qpdf_check(pdf)
        self.assertEqual(self.files_in("Create"), [])  # neither documents nor attachments

    def test_FolderBecomesPdfsOldestFirstAndOnlyOnce(self):
        mails = self.prepare(*self.sample_paths(1, 3, 10, 18))
        self.click("Button_ID_CreateByFolder", "Button_ID_CreateByFolder", select=(1,))
        first, second = self.starts(2)
        expected = sorted((mail for mail in mails if "appointment" not in mail), key=received_time)
        self.assertEqual([path.rpartition("\\")[2] for path in first],
                         [read_mail(mail)["Subject"] + ".pdf" for mail in expected])
        self.assertEqual(first, second)
        self.assertEqual(len(self.journal_entries("exported")), 3)

    def test_FolderIsMergedOnceOldestMailFirst(self):
        # With all samples it takes as many seconds as there are mails.
        samples = MAILS.glob("*.eml") if "ZAVO_TEST_ALL" in os.environ else self.sample_paths(1, 2, 9, 11, 18)
        mails = self.prepare(*samples, name="Harbour bridge")
        self.click("Button_ID_CreateMergeByFolder")
        (merged,) = self.starts(1)[0]
        self.assertTrue(merged.endswith("\\Harbour bridge.pdf"), merged)
        pdf = self.linux_path(merged)
        qpdf_check(pdf)

        pdf_of = {int(saved[0]): self.linux_path(exported[1])
                  for saved, exported in zip(self.journal_entries("saved"), self.journal_entries("exported"))}
        self.assertEqual(len(pdf_of), 20 if "ZAVO_TEST_ALL" in os.environ else 4)
        parts = [pdf_of[number] for number in sorted(pdf_of, key=lambda number: received_time(mails[number - 1]))]
        self.assertEqual(pdf_text(pdf), "".join(map(pdf_text, parts)))
        # A mail without headings is in the tree under its own name.
        self.assertEqual(pdf_outline_titles(pdf),
                         [title for part in parts
                          for title in pdf_outline_titles(part) or [os.path.basename(part)[:-len(".pdf")]]])
        self.assert_attached(pdf, [pair for part in parts for pair in pdf_attachments(part)])
        self.assertLessEqual({content for number in pdf_of for content in self.last_of_each_name(mails[number - 1])},
                             {content for _, content in pdf_attachments(pdf)})

        before = os.stat(pdf)
        self.click("Button_ID_CreateMergeByFolder")
        self.assertEqual(self.starts(2)[1], [merged])
        after = os.stat(pdf)
        self.assertEqual((after.st_mtime_ns, after.st_size, after.st_ino),
                         (before.st_mtime_ns, before.st_size, before.st_ino))

    @staticmethod
    def last_of_each_name(mail):
        """The contents of a mail's attachments; the last of a name is written over the others."""
        return dict(attachments_of(mail)).values()

    def test_FolderWithOneMailOpensItsPdf(self):
        self.prepare(*self.sample_paths(1, 9, 13))
        self.click("Button_ID_CreateMergeByFolder")
        (opened,) = self.starts(1)[0]
        self.assertTrue(opened.endswith("\\Harbour bridge kick-off.pdf"), opened)
        self.assertFalse(glob.glob(os.path.join(self.written, "Create", "*", "Inbox.pdf")))

    def test_PortfolioHoldsTheMailsAndTheirAttachments(self):
        mails = self.prepare(*self.sample_paths(1, 2, 3, 4, 20))
        self.click("Button_ID_CreatePortfolioByMail")
        request, opened = self.starts(2)
        portfolio = self.linux_path(opened[0])
        self.assertEqual(os.path.relpath(portfolio, self.written), "Create/Portfolio.pdf")
        self.assertEqual(request, [opened[0] + " ZAVO_Q1JFQVRFX0VNUFRZX1BPUlRGT0xJTw"])
        qpdf_check(portfolio)
        expected = [pair for mail in mails for pair in attachments_of(mail)]
        self.assertEqual(len(expected), 8)
        for _, path in self.journal_entries("exported"):
            with open(self.linux_path(path), "rb") as file:
                expected.append((path.rpartition("\\")[2], file.read()))
        self.assertEqual(len(expected), 13)
        self.assert_attached(portfolio, expected)
        self.assertEqual(self.files_in("Create"), ["Portfolio.pdf"])

    def test_FilesOfTheUsersAreNotTouchedAndHinderNothing(self):
        mails = self.prepare(*self.sample_paths(4))
        mine = {f"{read_mail(mails[0])['Subject']}.doc": b"my document",
                **{name: b"mine: " + name.encode() for name, _ in attachments_of(mails[0])}, "temp": b"my temp"}
        create = os.path.join(self.written, "Create")
        os.makedirs(create)
        for name, content in mine.items():
            pathlib.Path(create, name).write_bytes(content)
        for button, starts in (("Button_ID_CreateByMail", 1), ("Button_ID_CreatePortfolioByMail", 3)):
            self.click(button)
            opened = self.linux_path(self.starts(starts)[-1][0])
            embedded = dict(pdf_attachments(opened))
            for name, content in attachments_of(mails[0]):
                self.assertEqual(embedded[name], content)
            for name, content in mine.items():
                self.assertEqual(pathlib.Path(create, name).read_bytes(), content)
        self.assertEqual(self.files_in("Create"), sorted([*mine, "Portfolio.pdf"]))
        self.assertEqual(glob.glob(os.path.join(create, "temp*")), [os.path.join(create, "temp")])

    def test_MailsThatAreLeftOutAreToldOnceInTheEnd(self):
        self.prepare(*self.sample_paths(3), *HOSTILE.glob("0[1-4]-*.eml"))
        out = self.click("Button_ID_CreateByMail")
        self.assertEqual(len(self.starts(1)[0]), 1)
        self.assertIn("message: 4 emails were left out. Their subjects cannot be used as file names: ", out)
        self.assertEqual(out.count("message: "), 1)
        self.assertLess(out.index("clicked: "), out.index("message: "))
        lines = [line.strip() for line in out[out.index("message: "):].splitlines()]
        self.assertEqual(lines[1:6], ["", "..\\..\\evil", "a/b", "CON", "x:y"])

    def test_WithoutWordAMessageIsShown(self):
        self.prepare(*self.sample_paths(1))
        wine(BIN / "word-server.exe", "/UnregServer")
        try:
            out = self.click("Button_ID_CreateByMail")
        finally:
            self.register_word()
        self.assertIn("message: There are no emails that can be created as PDFs\n", out)
        self.assertEqual(self.files_in("Create"), [])


class HostileMails(OutlookTest):
    # What Wine keeps its registry in, written when it sees fit, and what it writes first.
    CHANGING = re.compile(r"(system|user|userdef)\.reg|reg[0-9a-f]+\.tmp")

    def listing(self):
        found = {}
        for folder, _, names in os.walk(os.environ["WINEPREFIX"]):
            for name in names:
                path = os.path.join(folder, name)
                if folder != os.environ["WINEPREFIX"] or not self.CHANGING.fullmatch(name):
                    found[path] = (os.lstat(path).st_size, os.lstat(path).st_mtime_ns)
            found[folder] = None
        return found

    def test_OnlyTheWorkingFolderChanges(self):
        self.prepare(*HOSTILE.glob("*.eml"), name="in:out")
        before = self.listing()
        out = self.click(*BUTTONS)
        after = self.listing()
        messages = [line for line in out.splitlines() if line.startswith("message: ")]
        self.assertEqual(len(messages), 4)  # of the commands that make PDFs
        for message in messages:
            self.assertTrue(message.startswith("message: 8 emails were left out. "), message)
        changed = {path for path in before.keys() | after.keys() if before.get(path, 0) != after.get(path, 0)}
        self.assertEqual([path for path in changed if not (path + "/").startswith(self.written + "/")], [])

        attached = ["Portfolio.pdf", "all names.doc", "empty.pdf", "invoice\u202efdp.pdf", "plain.txt", "twice.pdf",
                    "\U0001f4a3.pdf"]
        opened = sorted(os.path.basename(path) for path in glob.glob(os.path.join(self.written, "Open", "*", "*")))
        self.assertEqual(opened, sorted(["harmless.pdf"] + [name for name in attached if name.endswith(".pdf")]))
        pdfs = collections.Counter(os.path.basename(path)
                                   for path in glob.glob(os.path.join(self.written, "Create", "*", "*")))
        subjects = ("all names", "invoice\u202efdp.exe", "\U0001f4a3\U0001f469\u200d\U0001f527")
        self.assertEqual(pdfs, collections.Counter(f"{subject}{ending}" for subject in subjects
                                                   for ending in (".pdf", "(1).pdf")))

        self.assertEqual(self.files_in("Create"), ["Portfolio.pdf"])
        portfolio = os.path.join(self.written, "Create", "Portfolio.pdf")
        qpdf_check(portfolio)
        contents = collections.Counter(content for _, content in pdf_attachments(portfolio))
        given = dict(attachments_of(HOSTILE / "09-all-names.eml"))
        self.assertEqual(contents[given["Portfolio.pdf"]], 1)
        self.assertEqual(contents[given["twice.pdf"]], 2)  # the second was written over the first
        self.assertEqual(contents[b""], 1)
        self.assertEqual(contents[given["all names.doc"]], 1)

        starts = self.starts(7)
        self.assertTrue(starts[4][0].endswith("\\in:out.pdf"), starts[4])  # no such file is made
        self.assertEqual(starts[6], [starts[5][0].rpartition(" ")[0]])


class WordServer(OutlookTest):
    def run_script(self, script):
        path = os.path.join(self.folder, "script.js")
        with open(path, "w", encoding="ascii") as file:
            file.write(script)
        code, out, errors = wine("cscript.exe", "//nologo", windows_path(path))
        self.assertEqual((code, errors), (0, ""), out)
        return out.split()

    def test_MissingDocumentIsRefusedWithWordsError(self):
        out = self.run_script("""
            var word = new ActiveXObject("Word.Application");
            WScript.Echo(word.Visible, word.Documents.Count);
            try { word.Documents.Open("C:\\\\no such document.doc"); WScript.Echo("opened"); }
            catch (error) { WScript.Echo((error.number >>> 0).toString(16)); }
            word.Quit();
        """)
        self.assertEqual([value.lower() for value in out], ["0", "0", "800a1436"])

    def test_ProcessEndsWithItsLastObject(self):
        self.run_script('var word = new ActiveXObject("Word.Application"); WScript.Echo(word.Name);')
        self.assertTrue(wait_until(lambda: not word_processes()))

    def test_ProcessThatNobodyAsksAnythingEnds(self):
        with subprocess.Popen(["wine", BIN / "word-server.exe", "-Embedding", "--idle", "1"], stdin=subprocess.DEVNULL,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as server:
            self.assertTrue(wait_until(word_processes))
            self.assertEqual(server.wait(10), 0)


class Preparation(unittest.TestCase):
    """What the preparation makes of a mail, whoever wrote it."""

    def prepare(self, *mails):
        """Prepares mails, given as texts; gives the entries of the list, and the folder with the files."""
        folder = tempfile.mkdtemp(prefix="zavo-")
        self.addCleanup(shutil.rmtree, folder)
        target = os.path.join(folder, "prepared")
        os.mkdir(os.path.join(folder, "Inbox"))
        for number, mail in enumerate(mails):
            with open(os.path.join(folder, "Inbox", f"{number:02}.eml"), "wb") as file:
                file.write(mail.encode("latin-1"))
        subprocess.run([sys.executable, PREPARE, os.path.join(folder, "Inbox"), target], check=True)
        with open(os.path.join(target, "folder.txt"), "rb") as file:
            lines = file.read().decode("utf-16-le", "surrogatepass").splitlines()
        return [tuple(line.split("\t", 1)) for line in lines], pathlib.Path(target)

    def page(self, body, kind="text/html"):
        _, target = self.prepare(f"Subject: S\nContent-Type: {kind}; charset=utf-8\n\n{body}")
        return (target / "0001.html").read_text(encoding="utf-8")

    def values(self, name, *mails):
        return [value for entry, value in self.prepare(*mails)[0] if entry == name]

    def test_NothingIsActiveOrFetched(self):
        page = self.page("""<html><head><base href="http://elsewhere.example/"><link rel="stylesheet" href="a.css">
            <meta http-equiv="refresh" content="0;url=http://elsewhere.example/"><style>@import "a"; p { background:
            url(http://elsewhere.example/b.png) }</style></head><body background="c.png" onload="run()">
            <script>run()</script><p style="background: URL( 'd.png' )" onclick="run()">kept &amp; &#8364;</p>
            <img src="http://elsewhere.example/e.png"><img src="file:///etc/passwd"><img src="cid:none">
            <iframe src="f.html"></iframe><object data="g"></object><table background="h.png"><tr><td>too</table>""")
        for gone in ("elsewhere", "run()", ".css", ".png", "passwd", "<img", "<script", "f.html", "refresh", "@import"):
            self.assertNotIn(gone, page)
        self.assertIn("kept &amp; &#8364;</p>", page)
        self.assertIn("<td>too", page)

    def test_PlainTextIsNotTakenForMarkup(self):
        page = self.page("<b>1 < 2</b> &amp;\n  two  blanks\n", "text/plain")
        self.assertIn("<p>&lt;b&gt;1 &lt; 2&lt;/b&gt; &amp;amp;<br>\n&nbsp; two&nbsp;&nbsp;blanks", page)

    def test_KindsOfItemsAreToldApart(self):
        kinds = {
            "text/plain": "IPM.Note",
            "text/calendar": "IPM.Appointment",
            "text/vcard": "IPM.Contact",
            'multipart/report; boundary="b"': "REPORT.IPM.Note.NDR",
            'multipart/signed; boundary="b"': "IPM.Note.SMIME.MultipartSigned",
            "application/pkcs7-mime": "IPM.Note.SMIME",
        }
        self.assertEqual(self.values("class", *(f"Content-Type: {kind}\n\n" for kind in kinds)), list(kinds.values()))

    def test_SubjectsAreDecoded(self):
        subjects = {
            "=?utf-8?B?w6k=?= =?iso-8859-1?Q?=E9?=\n end": "\u00e9\u00e9 end",
            "raw \u00c3\u00a9": "raw \u00e9",  # UTF-8
            "raw \u00e9": "raw \u00e9",  # Latin-1
            "=?utf-7?Q?+2D0-?=": "\ud83d",
            "=?no-such-code?Q?abc?=": "abc",
            "": "",
        }
        self.assertEqual(self.values("subject", *(f"Subject: {subject}\n\n" for subject in subjects)),
                         list(subjects.values()))

    def test_SenderIsTheNameInFromOrElseTheAddress(self):
        senders = {
            "Ines Weber <ines@a.example>": "Ines Weber",
            '"Weber, Ines" <ines@a.example>': "Weber, Ines",
            "ines@a.example (Ines Weber)": "Ines Weber",
            "ines@a.example": "ines@a.example",
            "<ines@a.example>": "ines@a.example",
            '"" <ines@a.example>': "ines@a.example",
            "=?utf-8?B?w6k=?=\n =?iso-8859-1?Q?=E9?=\n <ines@a.example>": "\u00e9\u00e9",
            "=?utf-8?Q?Weber=2C_Ines_=3Cother=40b=2Eexample=3E?= <ines@a.example>": "Weber, Ines <other@b.example>",
            "raw \u00c3\u00a9 <ines@a.example>": "raw \u00e9",
            "Ines Weber <ines@a.example>, Ken Tanaka <ken@b.example>": "Ines Weber",
            "nobody in particular;": "nobody in particular;",
        }
        self.assertEqual(self.values("sender", *(f"From: {sender}\n\n" for sender in senders)),
                         list(senders.values()))
        self.assertEqual(self.values("sender", "Subject: S\n\n", "From:\n\n", "From: <>\nSender: a@b.example\n\n"),
                         ["<>"])

    def test_ReceivedTimeIsThatOfTheLastHop(self):
        date = "Date: Thu, 01 Oct 2026 08:00:00 +0000\n"
        hop = "Received: by mx.example; Thu, 01 Oct 2026 09:30:00 +0000\n"
        first, second, none, wrong = (dict(entries) for entries in (
            self.prepare(mail)[0] for mail in (date + "\n", hop + date + "\n", "\n", "Date: yesterday\n\n")))
        self.assertAlmostEqual(float(second["received"]) - float(first["received"]), 1.5 / 24)
        self.assertNotIn("received", none)
        self.assertNotIn("received", wrong)

    def test_NamesInAMailAreNoNamesOnDisk(self):
        name = "..\\\\..\\\\evil"
        entries, target = self.prepare(f'Content-Type: application/x; name="{name}"\n\ncontent')
        self.assertIn(("name", "..\\\\..\\\\evil"), entries)
        self.assertEqual(sorted(path.name for path in target.iterdir()), ["0001-1.bin", "0001.html", "folder.txt"])

    def test_EntryIdsAreStableAndDiffer(self):
        mail = "Subject: S\n\n"
        first = self.values("id", mail, mail)
        self.assertEqual(first, self.values("id", mail, mail))
        self.assertEqual(len(set(first)), 2)


if __name__ == "__main__":
    unittest.main()
