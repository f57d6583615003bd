"""What a merge keeps, feature by feature, on small files made for it."""
import re
import subprocess
import unittest

import inventory
from merging import MergeTest


def links_to(found):
    return [item[3] for item in found.annotations if item[1] == "/Link"]


class Destinations(MergeTest):
    def test_NamesInADictionaryLeadToTheirPages(self):
        found = self.merged("dests-dictionary-a")
        self.assertEqual([target[0][1] for target in links_to(found)],
                         [("#page", 1), ("#page", 2), ("#page", 2), ("#page", 0)])

    def test_ClashingNamesOfDictionariesLeadToTheirOwnPages(self):
        found = self.merged("dests-dictionary-a", "dests-dictionary-b")
        self.assertEqual([target[0][1] for target in links_to(found)[4:]],
                         [("#page", 3), ("#page", 4), ("#page", 5), ("#page", 5)])

    def test_ClashingNamesOfTreesAreRenamed(self):
        names = dict(self.merged("dests-tree-a", "dests-tree-b").destinations)
        self.assertEqual(names["chapter1"][1], ("#page", 0))
        self.assertEqual(names["chapter1#2"][1], ("#page", 7))
        self.assertEqual(names["only in B"][1], ("#page", 6))

    def test_ANameThatIsTakenAlreadyIsNotTakenAgain(self):
        names = [name for name, _ in self.merged("dests-tree-a", "dests-tree-a", "dests-tree-a").destinations]
        self.assertEqual(len(names), len(set(names)))
        self.assertEqual(len(names), 30)

    def test_TheSameTextAsNameAndAsStringStaysTwoPlaces(self):
        found = self.merged("dests-both", "dests-both")
        self.assertEqual([target[0][1] for target in links_to(found)],
                         [("#page", 1), ("#page", 2), ("#page", 4), ("#page", 5)])

    def test_NamesForOtherFilesStay(self):
        found = self.merged("dests-tree-a", "remote", "dests-dictionary-a")
        outside = [dict(target[0][1:]) for target in links_to(found) if target[0][0] == "action"]
        self.assertEqual([action["/D"] for action in outside if action["/S"] == "/GoToR"],
                         [("s", "chapter1"), "/chapter1", ("a", 1, "/Fit")])
        self.assertEqual([action["/D"] for action in outside if action["/S"] == "/GoToE"], [("s", "chapter2")])

    def test_ActionsThatFollowOthersLeadToTheirPages(self):
        self.merged("dests-tree-b", "action-chains", "dests-tree-a", "action-chains")

    def test_LinksThatWereDeadDoNoHarm(self):
        self.merged("dests-dead", "dests-tree-a", "dests-dead")


class Bookmarks(MergeTest):
    def test_OpenAndClosedColouredAndDeepOnesStay(self):
        found = self.merged("outline-deep", "dests-tree-a", "outline-deep")
        self.assertEqual(sum(item[3] for item in found.outline), 2 * sum(
            item[3] for item in inventory.read(self.made("outline-deep")[0]).outline))

    def test_AFileWithoutAnyGetsOneWithItsName(self):
        found = self.merged("page-boxes", "outline-deep", "outline-empty", "inherited")
        named = [item for item in found.outline if item[1] in ("page-boxes", "outline-empty", "inherited")]
        self.assertEqual([(item[0], item[1], item[2][0][1]) for item in named],
                         [(0, "page-boxes", ("#page", 0)), (0, "outline-empty", ("#page", 6)),
                          (0, "inherited", ("#page", 8))])

    def test_AFileNameOfManyScriptsBecomesABookmark(self):
        source = self.folder / "Größe Ω 中 (1) \\ #2.v3.pdf"
        source.write_bytes(self.made("page-boxes")[0].read_bytes())
        found = self.assertKeepsAll(self.merge([source]), [source])
        self.assertEqual(found.outline[0][1], "Größe Ω 中 (1) \\ #2.v3")


class Pages(MergeTest):
    def test_InheritedAttributesStay(self):
        self.merged("inherited", "page-boxes", "inherited")

    def test_APageThatIsUsedTwiceStaysTwice(self):
        self.assertEqual(len(self.merged("page-twice", "page-twice").pages), 8)

    def test_ADeepPageTreeKeepsItsOrder(self):
        self.merged("many-pages", "inherited", "many-pages")

    def test_LabelsOfAllStylesStay(self):
        found = self.merged("labels-all", "labels-tree")
        self.assertEqual(found.labels[:1] + found.labels[8:9] + found.labels[-1:], ["i", "App-A", "IV"])

    def test_PagesWithoutLabelsAreNumberedBesideOthers(self):
        found = self.merged("page-boxes", "labels-all", "inherited", "labels-tree")
        self.assertEqual(found.labels[:4], ["1", "2", "3", "i"])

    def test_NotesTheirPopUpsAndRepliesStay(self):
        self.merged("annotations", "layers-on", "annotations")

    def test_ArticleThreadsStay(self):
        self.assertEqual([title for title, _ in self.merged("threads-a", "threads-b").threads],
                         ["A0", "A1", "B0", "B1"])


class Attachments(MergeTest):
    def test_FilesOfTheSameNameStayTwo(self):
        found = self.merged("attachments-a", "attachments-b")
        self.assertEqual([item[1] for item in found.attachments if item[1] == "notes.txt"], ["notes.txt"] * 4)

    def test_TheSameFileTwiceStaysTwice(self):
        self.assertEqual(len(self.merged("attachments-a", "attachments-a").attachments), 12)


class Layers(MergeTest):
    def test_TheirDefaultStatesStay(self):
        found = self.merged("layers-on", "layers-off", "layers-without-order")
        self.assertEqual([layer[3] for layer in found.layers],
                         [True, False, True, False, True, True, False, False, True, False, False])

    def test_TheirStatesStayWhenTheFirstStartsWithAllOff(self):
        self.merged("layers-off", "layers-on", "layers-off")

    def test_FilesWithoutLayersStayAsTheyAre(self):
        self.merged("page-boxes", "layers-off", "inherited")


class Tags(MergeTest):
    def test_RolesAndClassesThatClashKeepTheirMeaning(self):
        found = self.merged("tags-a", "tags-b", "tags-without-maps")
        roles = [item[1] for item in found.tags]
        self.assertEqual([role for role in roles if re.fullmatch(r"H\d", role)], ["H1", "H2", "H1"])
        self.assertEqual([role for role in roles if role in ("Unmapped", "Note")], ["Unmapped", "Note", "Unmapped"])

    def test_ARoleThatOnlyALaterFileMapsIsNotMappedInEarlierOnes(self):
        self.merged("tags-without-maps", "tags-b", "tags-a")

    def test_IdsThatClashLeadToTheirOwnElements(self):
        found = self.merged("tags-a", "tags-a", "tags-b")
        self.assertEqual(sum(item[2] is not None for item in found.tags), 3)

    def test_GapsInTheParentTreeAndContentInFormsStay(self):
        self.merged("tags-sparse", "tags-a", "tags-sparse")

    def test_FilesWithoutTagsStayBesideTagged(self):
        self.merged("page-boxes", "tags-a", "annotations", "tags-sparse")


class Forms(MergeTest):
    def test_FieldsOfTheSameNameBecomeTwo(self):
        names = [".".join(field[0]) for field in self.merged("form-a", "form-b").fields]
        self.assertEqual(len(names), len(set(names)))
        for name in ("total", "total+1", "person.name", "person+1.name"):
            self.assertIn(name, names)

    def test_NamesAsAMergeMakesThemAreNotTakenTwice(self):
        names = [field[0] for field in self.merged("form-taken-names", "form-a", "form-taken-names").fields]
        self.assertEqual(len(names), len(set(names)))

    def test_FontsOfTheSameNameStayApart(self):
        styles = {field[0]: field[2] for field in self.merged("form-a", "form-b").fields}
        self.assertEqual(styles[("shared",)][0][:2], ("/Helvetica", "/WinAnsiEncoding"))
        self.assertEqual(styles[("shared+1",)][0][:2], ("/Times-Bold", "/MacRomanEncoding"))

    def test_TheOrderOfCalculationStays(self):
        self.assertEqual(self.merged("form-a", "form-b").calculation,
                         [("person", "town"), ("total",), ("person+1", "town"), ("total+1",)])

    def test_AFormInALaterFileOnlyStays(self):
        self.merged("page-boxes", "form-b")

    def test_SignaturesGoButTheirFieldsStay(self):
        inputs = self.made("form-a", "signed")
        merged = self.merge(inputs)
        found = self.assertKeepsAll(merged, inputs)
        self.assertEqual([field[1][0] for field in found.fields].count("/Sig"), 2)
        plain = subprocess.run(["qpdf", "--qdf", "--object-streams=disable", merged, "-"], capture_output=True,
                               check=True).stdout
        for word in (b"/ByteRange", b"/SigFlags 3", b"/Perms", b"/DSS", b"/DocMDP"):
            self.assertNotIn(word, plain)

    def test_ALoneSignedFileLosesItsSignatureToo(self):
        self.merged("signed")

    def test_TheFormOfAnotherMakeGoesAndFieldsStay(self):
        self.assertFalse(self.merged("form-xfa", "form-a").xfa)


class WholeFiles(MergeTest):
    def test_MetadataOfTheFirstStays(self):
        found = self.merged("metadata-full", "tags-a")
        self.assertEqual((found.metadata["/Title"], found.metadata["dc:title"], found.language),
                         ("Ünïcode title", "Ünïcode title", "el-GR"))

    def test_MetadataOfLaterOnesDoesNotBecomeTheFirsts(self):
        self.assertNotIn("/Title", self.merged("page-boxes", "metadata-full").metadata)

    def test_AllWaysToWriteAFileAreRead(self):
        self.merged("object-streams", "linearized", "hybrid", "incremental", "odd-syntax")

    def test_EncryptedFilesWithAnEmptyPasswordAreRead(self):
        self.merged("encrypted-rc4-40", "encrypted-rc4-128", "encrypted-aes-128", "encrypted-aes-256")

    def test_AFirstFileThatIsEncryptedGivesAPlainOne(self):
        inputs = self.made("encrypted-aes-256", "page-boxes")
        state = subprocess.run(["qpdf", "--show-encryption", self.merge(inputs)], capture_output=True, text=True,
                               check=True).stdout
        self.assertIn("File is not encrypted", state)

    def test_DamagedFilesAreMended(self):
        self.merged("startxref-wrong", "table-torn", "junk-before", "junk-after")

    def test_PicturesAndFontsOfTheSameContentAreStoredOnce(self):
        self.assertEqual(self.merged("pictures", "pictures", "form-a", "pictures").copies, 0)

    def test_ALoneFileKeepsAll(self):
        for name in ("outline-deep", "tags-a", "form-b", "layers-off", "attachments-a", "dests-both", "threads-a"):
            with self.subTest(name):
                self.merged(name)


if __name__ == "__main__":
    unittest.main()
