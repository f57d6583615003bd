"""Create PDF in Excel and PowerPoint, on real documents."""
import unittest

from support import (ExcelDocument, HostTest, PowerPointDocument, pdf_info, pdf_is_pdfa, pdf_text, windows_path)


class Excel(ExcelDocument, HostTest):
    def test_PdfHoldsTheTextOfEverySheet(self):
        out = self.create_pdf()
        self.assertIn("host: Excel\n", out)
        text = pdf_text(self.pdf)
        for words in ("Brücken & Stahl, Linz", "431500", "Steel delivered", "Three joints to be sealed again"):
            self.assertIn(words, text)
        self.assertIn(windows_path(self.pdf), self.companion_report())

    def test_TitleFollowsPreserveDocumentProperties(self):
        self.create_pdf()
        self.assertEqual(pdf_info(self.pdf)["Title"], "Harbour bridge: budget")
        self.create_pdf("--overwrite", "--untick", "CheckBox_ID_IncludeDocProps")
        self.assertEqual(pdf_info(self.pdf).get("Title", ""), "")

    def test_RibbonHasTwoCheckBoxes(self):
        out = self.host("--ribbon")
        boxes = [line.split()[-1] for line in out.splitlines() if line.strip().startswith("checkBox")]
        self.assertEqual(boxes, ["CheckBox_ID_OpenAfterExport", "CheckBox_ID_IncludeDocProps"])

    def test_CreateAndSendHandsThePdfToTheMailProgram(self):
        self.host("--click", "BUTTON_ID_CREATE_AND_SHARE")
        self.assertIn(f" path=[{windows_path(self.pdf)}] name=[report] ", self.mails()[0])


class PowerPoint(PowerPointDocument, HostTest):
    def test_PdfHoldsTheTextOfEverySlide(self):
        out = self.create_pdf()
        self.assertIn("host: PowerPoint\n", out)
        text = pdf_text(self.pdf)
        for words in ("Harbour bridge", "Steel delivered on 4 September", "Lifting of the main span: 6 to 24 November"):
            self.assertIn(words, text)
        self.assertEqual(pdf_info(self.pdf)["Pages"], "2")

    def test_TitleFollowsPreserveDocumentProperties(self):
        self.create_pdf()
        self.assertEqual(pdf_info(self.pdf)["Title"], "Harbour bridge: talk")
        self.create_pdf("--overwrite", "--untick", "CheckBox_ID_IncludeDocProps")
        self.assertEqual(pdf_info(self.pdf).get("Title", ""), "")

    def test_PdfAMarkingFollowsItsBox(self):
        self.create_pdf()
        self.assertFalse(pdf_is_pdfa(self.pdf))
        self.create_pdf("--overwrite", "--tick", "CheckBox_ID_PDFA")
        self.assertTrue(pdf_is_pdfa(self.pdf))

    def test_CreateAndSendHandsThePdfToTheMailProgram(self):
        self.host("--click", "BUTTON_ID_CREATE_AND_SHARE")
        self.assertIn(f" path=[{windows_path(self.pdf)}] name=[report] ", self.mails()[0])

    def test_RibbonHasThreeCheckBoxes(self):
        out = self.host("--ribbon")
        boxes = [line.split()[-1] for line in out.splitlines() if line.strip().startswith("checkBox")]
        self.assertEqual(boxes, ["CheckBox_ID_OpenAfterExport", "CheckBox_ID_PDFA", "CheckBox_ID_IncludeDocProps"])


class OtherDocuments(HostTest):
    def test_DocumentThatNoHostOpensIsSaidInOneLine(self):
        from support import BIN, wine
        document = self.make_document("report.zip")
        code, out, errors = wine(BIN / "office-standin.exe", "--document", windows_path(document))
        self.assertEqual((code, out), (1, ""))
        self.assertIn("no host opens a document of this kind", errors)


if __name__ == "__main__":
    unittest.main()
