"""Merges of many files at once: mails as LibreOffice writes them, manuals, and all that was constructed."""
import random
import unittest

import corpus
from merging import EVERYTHING, MergeTest


class WholeCorpus(MergeTest):
    def test_TwoHundredMailsKeepAll(self):
        inputs = corpus.mail_pdfs()
        self.assertGreaterEqual(len(inputs), 200)
        self.assertKeepsAll(self.merge(inputs), inputs)

    def test_AllConstructedFilesKeepAll(self):
        inputs = corpus.constructed_pdfs()
        self.assertKeepsAll(self.merge(inputs), inputs)

    def test_ManualsKeepAll(self):
        inputs = corpus.manual_pdfs()
        self.assertKeepsAll(self.merge(inputs), inputs, everything=False)

    def test_TheSameInputsGiveTheSameBytes(self):
        for inputs in (corpus.constructed_pdfs(), corpus.mail_pdfs()):
            first, second = (self.merge(inputs, name).read_bytes() for name in ("first.pdf", "second.pdf"))
            self.assertTrue(first == second, f"{len(inputs)} files: the outputs differ")

    def test_AMergeOfMergesKeepsAll(self):
        inputs = corpus.constructed_pdfs()
        halves = [self.merge(part, f"half {number}.pdf") for number, part in enumerate((inputs[::2], inputs[1::2]))]
        self.assertKeepsAll(self.merge(halves), halves)

    def test_EveryConstructedFileKeepsAllBesideItself(self):
        names = [path.stem for path in corpus.constructed_pdfs()]
        for name in names if EVERYTHING else names[::6]:
            with self.subTest(name):
                self.merged("page-boxes", name, name)

    @unittest.skipUnless(EVERYTHING, "takes minutes; ZAVO_TEST_ALL is not set")
    def test_FilesInAnyOrderKeepAll(self):
        pool = corpus.constructed_pdfs() + corpus.mail_pdfs()
        chance = random.Random(4)
        for number in range(100):
            inputs = chance.sample(pool, chance.randint(2, 12))
            with self.subTest(number, inputs=[path.name for path in inputs]):
                self.assertKeepsAll(self.merge(inputs), inputs)

    @unittest.skipUnless(EVERYTHING, "takes minutes; ZAVO_TEST_ALL is not set")
    def test_EverythingAtOnceKeepsAllAndLooksTheSame(self):
        inputs = corpus.manual_pdfs() + corpus.constructed_pdfs() + corpus.mail_pdfs()
        self.assertKeepsAll(self.merge(inputs), inputs)


if __name__ == "__main__":
    unittest.main()
