"""Create PDF in Word, from the click to the PDF and the companion."""
import os
import stat
import subprocess
import unittest
import xml.etree.ElementTree

from support import (BIN, HostTest, pdf_info, pdf_is_pdfa, pdf_outline_titles, pdf_text, reg, windows_path)

HEADINGS = ["Summary", "Progress", "Piers", "Main span", "Cost"]
NAMESPACE = "{http://schemas.microsoft.com/office/2006/01/customui}"


class CreatePdf(HostTest):
    def test_PdfHoldsTheDocumentsText(self):
        self.create_pdf()
        text = pdf_text(self.pdf)
        for words in ("Harbour bridge: project report", "Brücken & Stahl", "Dvořák", "Жанна", "13 October"):
            self.assertIn(words, text)
        subprocess.run(["qpdf", "--check", self.pdf], check=True, capture_output=True)

    def test_SaveDialogProposesTheDocumentsName(self):
        document = self.make_document("Plan.final.docx")
        out = self.create_pdf(document=document)
        self.assertIn("save dialog proposed: Plan.final.pdf\n", out)
        self.assertIn("Plan.final.pdf", self.files())

    def test_TitleFollowsPreserveDocumentProperties(self):
        self.create_pdf()
        info = pdf_info(self.pdf)
        self.assertEqual(info["Title"], "Harbour bridge: project report")
        self.assertEqual(info["Author"], "Ines Köhler")
        self.create_pdf("--overwrite", "--untick", "CheckBox_ID_IncludeDocProps")
        info = pdf_info(self.pdf)
        self.assertEqual((info.get("Title", ""), info.get("Author", "")), ("", ""))

    def test_OutlineFollowsCreateBookmark(self):
        self.create_pdf()
        self.assertEqual([title for title in pdf_outline_titles(self.pdf) if title in HEADINGS], HEADINGS)
        self.create_pdf("--overwrite", "--untick", "CheckBox_ID_CreateBookmarks")
        self.assertEqual(pdf_outline_titles(self.pdf), [])

    def test_PdfAMarkingFollowsItsBox(self):
        self.create_pdf()
        self.assertFalse(pdf_is_pdfa(self.pdf))
        self.create_pdf("--overwrite", "--tick", "CheckBox_ID_PDFA")
        self.assertTrue(pdf_is_pdfa(self.pdf))

    def test_BoxThatIsTickedAndClearedAgainIsClear(self):
        self.create_pdf("--tick", "CheckBox_ID_PDFA", "--untick", "CheckBox_ID_PDFA")
        self.assertFalse(pdf_is_pdfa(self.pdf))

    def test_RestartedHostHasTheDefaultsAgain(self):
        out = self.host("--untick", "CheckBox_ID_CreateBookmarks", "--tick", "CheckBox_ID_PDFA", "--ribbon")
        self.assertIn('"Create Bookmark" [ ]', out)
        self.assertIn('"Supports PDF/A standards" [x]', out)
        out = self.host("--ribbon")
        self.assertIn('"Create Bookmark" [x]', out)
        self.assertIn('"Supports PDF/A standards" [ ]', out)

    def test_CompanionGetsThePdfInQuotationMarksAndATrailingBlank(self):
        self.create_pdf()
        report = self.companion_report()
        self.assertIn(f'"{windows_path(self.pdf)}" ]\n', report)
        self.assertIn(f"file: {windows_path(self.pdf)}, 2 pages, {os.path.getsize(self.pdf)} bytes\n", report)

    def test_CompanionIsNotStartedWhenViewPdfResultsIsCleared(self):
        self.create_pdf("--untick", "CheckBox_ID_OpenAfterExport")
        self.assertTrue(os.path.exists(self.pdf))
        self.assertEqual(self.companion_report(), "")

    def test_MissingCompanionStillMakesThePdf(self):
        reg("delete", r"HKLM\SOFTWARE\ZAVO", "/f")
        try:
            self.create_pdf()
        finally:
            self.setUpClass()
        self.assertTrue(os.path.exists(self.pdf))
        self.assertEqual(self.companion_report(), "")

    def test_MissingCompanionSendsNothing(self):
        reg("delete", r"HKLM\SOFTWARE\ZAVO", "/f")
        try:
            self.host("--click", "BUTTON_ID_CREATE_AND_SHARE")
        finally:
            self.setUpClass()
        self.assertTrue(os.path.exists(self.pdf))
        self.assertEqual(self.mails(), [])

    def test_CreateAndSendHandsThePdfToTheMailProgram(self):
        self.host("--click", "BUTTON_ID_CREATE_AND_SHARE")
        self.assertTrue(os.path.exists(self.pdf))
        self.assertEqual(len(self.mails()), 2)
        self.assertIn(" subject=[report] note=null ", self.mails()[0])
        self.assertIn(f" path=[{windows_path(self.pdf)}] name=[report] ", self.mails()[0])

    def test_CreatePdfSendsNothing(self):
        self.create_pdf()
        self.assertEqual(self.mails(), [])

    def test_CreateAndSendSendsNothingThatIsNotShown(self):
        self.host("--untick", "CheckBox_ID_OpenAfterExport", "--click", "BUTTON_ID_CREATE_AND_SHARE")
        self.assertTrue(os.path.exists(self.pdf))
        self.assertEqual(self.mails(), [])

    def test_CancelledDialogLeavesEverythingAsItWas(self):
        before = self.files()
        self.create_pdf("--cancel")
        self.assertEqual(self.files(), before)

    def test_ExistingPdfStaysWhenTheUserSaysNo(self):
        with open(self.pdf, "w", encoding="ascii") as file:
            file.write("precious")
        out = self.create_pdf()
        self.assertIn("message: File already exists.", out)
        with open(self.pdf, encoding="ascii") as file:
            self.assertEqual(file.read(), "precious")
        self.assertEqual(self.companion_report(), "")

    def test_UnwritableTargetIsSilentAndKeepsTheOldFile(self):
        with open(self.pdf, "w", encoding="ascii") as file:
            file.write("precious")
        os.chmod(self.pdf, stat.S_IRUSR)
        before = self.files()
        self.create_pdf("--overwrite")
        self.assertEqual(self.files(), before)
        with open(self.pdf, encoding="ascii") as file:
            self.assertEqual(file.read(), "precious")
        self.assertEqual(self.companion_report(), "")

    def test_NamesBeyondAsciiAndBlanksWork(self):
        document = self.make_document("Übersicht – 概要 план.docx")
        target = os.path.join(self.folder, "Ergebnis ärgerlich 結果.pdf")
        self.create_pdf("--save-as", windows_path(target), document=document)
        self.assertIn("Harbour bridge", pdf_text(target))
        self.assertIn(windows_path(target), self.companion_report())

    def test_DocumentThatCannotBeExportedEndsSilently(self):
        document = os.path.join(self.folder, "broken.docx")
        with open(document, "wb") as file:
            file.write(b"PK\3\4" + bytes(range(256)) * 20)
        self.create_pdf("--save-as", windows_path(self.pdf), document=document)
        self.assertFalse(os.path.exists(self.pdf))

    def test_SeveralClicksInOneSessionWork(self):
        self.create_pdf("--overwrite", "--click", "BUTTON_ID_CREATE", "--tick", "CheckBox_ID_PDFA")
        self.assertTrue(pdf_is_pdfa(self.pdf))


class Ribbon(HostTest):
    # Locale name and the label of "Create PDF"; only the name matters to Wine.
    LANGUAGES = {
        "en_US": "Create PDF", "de_DE": "PDF erstellen", "fr_FR": "Créer un PDF", "it_IT": "Crea PDF",
        "ja_JP": "PDFを作成", "pt_BR": "Criar PDF", "pt_PT": "Criar PDF", "es_ES": "Crear PDF", "es_MX": "Crear PDF",
        "zh_CN": "创建PDF", "zh_HK": "创建PDF", "zh_SG": "创建PDF", "zh_MO": "创建PDF", "zh_TW": "創建PDF",
        "ru_RU": "Создать PDF", "nl_NL": "PDF aanmaken", "ko_KR": "PDF 생성", "pl_PL": "Create PDF",
    }

    def test_MarkupComesInTheLanguageOfWindows(self):
        locales = os.path.join(self.folder, "locales")
        os.mkdir(locales)
        for language, label in self.LANGUAGES.items():
            os.symlink("/usr/lib/locale/C.utf8", os.path.join(locales, f"{language}.UTF-8"))
            out = self.host("--markup", LOCPATH=locales, LC_MESSAGES=f"{language}.UTF-8")
            markup = next(line for line in out.splitlines() if line.startswith("<customUI"))
            root = xml.etree.ElementTree.fromstring(markup)
            group = root.find(f".//{NAMESPACE}group[@id='CreatePdf_Group']")
            button = root.find(f".//{NAMESPACE}button[@id='BUTTON_ID_CREATE']")
            with self.subTest(language):
                self.assertEqual(group.get("label"), label)
                self.assertEqual(button.get("label"), label)
                self.assertEqual(root.find(f".//{NAMESPACE}tab").get("label"), "ZAVO")
                for element in root.iter():
                    for value in element.attrib.values():
                        self.assertNotEqual(value, "")


    def test_ChangedThemeHasTheRibbonDrawnAfresh(self):
        common = r"HKCU\Software\Microsoft\Office\16.0\Common"
        reg("add", common, "/v", "UI Theme", "/t", "REG_DWORD", "/d", "0", "/f")
        self.addCleanup(reg, "delete", common, "/v", "UI Theme", "/f")
        out = self.host("--theme", "4", "--theme", "5")
        self.assertIn("theme 4: the ribbon was drawn afresh\n", out)
        self.assertIn("theme 5: the ribbon was drawn afresh\n", out)


class Companion(HostTest):
    def test_ArgumentThatIsNoFileGetsAClearMessage(self):
        from support import wine
        code, out, _ = wine(BIN / "ZAVO.exe", "--what", environment={"ZAVO_COMPANION_LOG": ""})
        self.assertEqual(code, 1)
        self.assertIn("unknown argument, no such file: --what\n", out)


if __name__ == "__main__":
    unittest.main()
