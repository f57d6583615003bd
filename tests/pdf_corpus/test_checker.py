"""Whether the checker sees each kind of loss: in files damaged on purpose and in what common tools make."""
import random
import subprocess
import unittest

import pikepdf
from pikepdf import Array, Name, String

import completeness
import corpus
from compare import compare, moved
from inventory import Inventory, has_dead
from merging import MergeTest


def first_link(pdf):
    return next(item for item in pdf.pages[0].obj.Annots if item.Subtype == Name.Link)


def drop(*path):
    """Deletes what stands at the path from the catalog."""
    def damage(pdf):
        thing = pdf.Root
        for key in path[:-1]:
            thing = thing[key]
        del thing[path[-1]]
    return damage


def swap_bookmarks(pdf):
    first = pdf.Root.Outlines.First
    first.Title, first.Next.Title = first.Next.Title, first.Title


def swap_pages(pdf):
    pdf.pages.append(pdf.pages[0])
    del pdf.pages[0]


def retarget_bookmark(pdf):
    last = pdf.Root.Outlines.Last.Prev
    last.Dest = Array([pdf.pages[1].obj, *list(last.Dest)[1:]])


def other_font(pdf):
    pdf.Root.Pages.Resources.Font.F1.BaseFont = Name.Courier


def fold_bookmark(pdf):
    pdf.Root.Outlines.First.Count = -pdf.Root.Outlines.First.Count


def duplicate_field_name(pdf):
    pdf.Root.AcroForm.Fields[1].T = String("total")


def replace_attachment(pdf):
    node = pdf.Root.Names.EmbeddedFiles.Kids[0]
    node.Names[1].EF.F.write(b"other")
    node.Names[1].EF.UF.write(b"other")


def resign(pdf):
    pdf.Root.AcroForm.Fields[0].FT = Name.Sig
    pdf.Root.AcroForm.SigFlags = 3


def wrong_parent_tree(pdf):
    nums = pdf.Root.StructTreeRoot.ParentTree.Nums
    nums[1][0], nums[1][1] = nums[1][1], nums[1][0]


def lose_object_reference(pdf):
    pdf.Root.StructTreeRoot.ParentTree.Nums[4] = 9


def duplicate_picture(pdf):
    fresh = pdf.make_stream(pdf.pages[0].obj.Resources.XObject.Im.read_bytes())
    for key, value in pdf.pages[0].obj.Resources.XObject.Im.items():
        if key not in ("/Length", "/Filter", "/DecodeParms"):
            fresh[key] = value
    pdf.pages[1].obj.Resources.XObject.Im2 = fresh


# The file, what is done to it, and the feature that has to be found incomplete.
DAMAGES = (
    ("inherited", lambda pdf: setattr(pdf.pages[2].obj, "Rotate", 180), "pages"),
    ("inherited", other_font, "pictures of pages"),
    ("page-boxes", lambda pdf: setattr(pdf.pages[1].obj, "UserUnit", 1), "pages"),
    ("page-boxes", swap_pages, "pages"),
    ("page-boxes", swap_pages, "poppler's page sizes"),
    ("outline-deep", swap_bookmarks, "bookmarks"),
    ("outline-deep", retarget_bookmark, "bookmarks"),
    ("outline-deep", fold_bookmark, "bookmarks"),
    ("outline-deep", lambda pdf: setattr(pdf.Root.Outlines, "Count", 99), "no contradictions"),
    ("dests-tree-a", drop("/Names", "/Dests"), "links"),
    ("dests-tree-a", drop("/Names", "/Dests"), "named destinations"),
    ("dests-tree-a", drop("/Names", "/Dests"), "poppler's destinations"),
    ("dests-tree-a", lambda pdf: setattr(first_link(pdf), "Dest", Array([None, Name.Fit])), "links"),
    ("dests-dictionary-a", lambda pdf: setattr(first_link(pdf), "Dest", Name("/chapter1")), "links"),
    ("remote", lambda pdf: setattr(first_link(pdf).A, "D", String("chapter1#2")), "links"),
    ("action-chains", lambda pdf: setattr(first_link(pdf).A, "Next", Array([])), "links"),
    ("annotations", lambda pdf: pdf.pages[0].obj.Annots.__delitem__(1), "other annotations"),
    ("labels-all", drop("/PageLabels"), "page labels"),
    ("labels-all", lambda pdf: setattr(pdf.Root.PageLabels.Nums[5], "St", 2), "page labels"),
    ("form-a", duplicate_field_name, "form fields"),
    ("form-a", duplicate_field_name, "no contradictions"),
    ("form-a", lambda pdf: setattr(pdf.Root.AcroForm.Fields[0], "V", String("x")), "form fields"),
    ("form-a", drop("/AcroForm", "/CO"), "calculation order"),
    ("form-a", drop("/AcroForm", "/DR", "/Font", "/Helv"), "fonts of fields"),
    ("form-a", drop("/AcroForm", "/DA"), "fonts of fields"),
    ("form-a", resign, "nothing left over"),
    ("attachments-a", replace_attachment, "attachments"),
    ("attachments-a", drop("/Names", "/EmbeddedFiles"), "attachments"),
    ("attachments-a", drop("/Names", "/EmbeddedFiles"), "poppler's attachments"),
    ("layers-off", drop("/OCProperties", "/D", "/BaseState"), "layers"),
    ("layers-on", drop("/OCProperties", "/D", "/OFF"), "pictures of pages"),
    ("layers-on", drop("/OCProperties", "/D", "/Order"), "layers"),
    ("layers-on", drop("/OCProperties", "/D", "/RBGroups"), "layers"),
    ("tags-a", drop("/StructTreeRoot"), "tags"),
    ("tags-a", drop("/StructTreeRoot"), "poppler's structure"),
    ("tags-a", drop("/StructTreeRoot", "/RoleMap", "/Body"), "tags"),
    ("tags-a", lambda pdf: setattr(pdf.Root.StructTreeRoot.ClassMap.Wide, "SpaceBefore", 1), "tags"),
    ("tags-a", drop("/StructTreeRoot", "/IDTree"), "tags"),
    ("tags-a", drop("/MarkInfo"), "tags"),
    ("tags-a", wrong_parent_tree, "tagged content"),
    ("tags-a", lose_object_reference, "tagged content"),
    ("threads-a", lambda pdf: pdf.Root.Threads.__delitem__(0), "article threads"),
    ("metadata-full", drop("/Metadata"), "metadata"),
    ("metadata-full", drop("/Lang"), "metadata"),
    ("pictures", duplicate_picture, "nothing left over"),
)


def unique(name, taken, sign):
    """The name, or with the first number that makes it unique."""
    number, fresh = 1 if sign == "#" else 0, name
    while fresh in taken:
        number += 1
        fresh = f"{name}{sign}{number}"
    taken.add(fresh)
    return fresh


def ideal(inventories, stems):
    """What the inventory of a merged file has to be, made from those of its inputs."""
    merged, names, roots = Inventory(), set(), set()
    for part in moved(inventories, stems):
        found = part.found
        for field in ("pages", "annotations", "attachments", "tags", "layers", "layer_uses", "layer_order",
                      "layer_rules", "threads"):
            getattr(merged, field).extend(getattr(found, field))
        merged.outline += found.outline or [(0, part.stem, (("to", ("#page", part.first_page), "/Fit"),), False,
                                             (0.0, 0.0, 0.0), 0, None)]
        merged.destinations += ((unique(name, names, "#"), target) for name, target in found.destinations)
        own = {name: unique(name, roots, "+") for name in dict.fromkeys(field[0][0] for field in found.fields)}
        merged.fields += (((own[field[0][0]],) + field[0][1:],) + field[1:] for field in found.fields)
        merged.calculation += ((own[name[0]],) + name[1:] for name in found.calculation)
        if any(inventory.labels for inventory in inventories):
            merged.labels += found.labels or [str(number + 1) for number in range(len(found.pages))]
        merged.tag_links += found.tag_links
        merged.marked |= found.marked
        merged.need_appearances |= found.need_appearances
        merged.faults += found.faults
    merged.metadata, merged.language = inventories[0].metadata, inventories[0].language
    return merged


class IdealMerges(MergeTest):
    """The checker's own rules for names and places, without any merging program."""

    def assertAccepted(self, inputs):
        found = [corpus.facts(path)[0] for path in inputs]
        stems = [path.stem for path in inputs]
        self.assertEqual([str(feature) for feature in compare(found, stems, ideal(found, stems))
                          if not feature.complete], [])

    def test_AllConstructedFilesInAnyOrderAreAccepted(self):
        inputs = corpus.constructed_pdfs()
        self.assertAccepted(inputs)
        chance = random.Random(7)
        for number in range(20):
            with self.subTest(number):
                self.assertAccepted(chance.choices(inputs, k=20))

    def test_MailsAreAccepted(self):
        self.assertAccepted(corpus.mail_pdfs())

    def test_WithoutARenamedFieldTheOrderOfCalculationIsFoundWrong(self):
        found = [corpus.facts(path)[0] for path in self.made("form-a", "form-b")]
        merged = ideal(found, ["a", "b"])
        merged.calculation = merged.calculation[:2] * 2
        lacking = {feature.name for feature in compare(found, ["a", "b"], merged) if not feature.complete}
        self.assertEqual(lacking, {"calculation order"})


class DamagedFiles(MergeTest):
    def incomplete(self, name, damage):
        source = self.made(name)[0]
        damaged = self.folder / "damaged.pdf"
        with pikepdf.open(source, inherit_page_attributes=False) as pdf:
            damage(pdf)
            pdf.save(damaged)
        return {feature.name for feature in completeness.judge(damaged, [source]) if not feature.complete}

    def test_EachKindOfLossIsFound(self):
        for name, damage, feature in DAMAGES:
            with self.subTest(name, feature=feature):
                self.assertIn(feature, self.incomplete(name, damage))

    def test_PopplerReadsTheConstructedFilesWithoutComplaint(self):
        for source in corpus.constructed_pdfs():
            if source.stem in ("startxref-wrong", "table-torn"):
                continue
            with self.subTest(source.stem):
                said = subprocess.run(["pdftotext", source, "-"], capture_output=True, check=True).stderr
                self.assertEqual(said, b"")

    def test_PlacesAreDeadOnlyWhereTheyAreMeantToBe(self):
        for source in corpus.constructed_pdfs():
            found = corpus.facts(source)[0]
            with self.subTest(source.stem):
                dead = any(has_dead(tuple(getattr(found, name))) for name in (
                    "outline", "annotations", "destinations", "fields", "calculation", "tags", "threads"))
                self.assertEqual(dead, source.stem == "dests-dead")

    def test_NothingIsFoundWhereNothingIsLost(self):
        own = {"signed", "form-xfa"}  # a merge has to take something out of these
        for source in corpus.constructed_pdfs():
            if source.stem in own or source.stem.startswith("encrypted"):
                continue
            with self.subTest(source.stem):
                plain = self.folder / "plain.pdf"
                subprocess.run(["qpdf", source, plain], capture_output=True, check=False)
                lacking = {feature.name for feature in completeness.judge(plain, [source]) if not feature.complete}
                # A merge makes a bookmark for a file without any; qpdf does not.
                self.assertLessEqual(lacking, {"bookmarks"})
                if corpus.facts(source)[0].outline:
                    self.assertEqual(lacking, set())


class CommonTools(MergeTest):
    """What two merging tools drop is known; the checker has to say just that."""

    def kept(self, command, inputs):
        out = self.folder / "out.pdf"
        done = subprocess.run([str(out) if word is None else str(word) for word in command], capture_output=True,
                              check=False)
        self.assertIn(done.returncode, (0, 3), done.stderr)
        found = {feature.name: feature for feature in completeness.judge(out, inputs)}
        return {name: (feature.kept, feature.expected) for name, feature in found.items()}

    def test_WhatQpdfDropsFromMails(self):
        inputs = corpus.mail_pdfs()[:40]
        kept = self.kept(["qpdf", "--empty", "--pages", *inputs, "--", None], inputs)
        for name in ("pages", "form fields", "pictures of pages"):
            self.assertEqual(*kept[name], name)
        for name in ("bookmarks", "tags", "tagged content", "poppler's structure"):
            self.assertEqual(kept[name][0], 0, name)
            self.assertGreater(kept[name][1], 0, name)

    def test_WhatPdfuniteDropsFromMails(self):
        inputs = corpus.mail_pdfs()[:40]
        kept = self.kept(["pdfunite", *inputs, None], inputs)
        self.assertEqual(*kept["pages"])
        for name in ("bookmarks", "tags"):
            self.assertEqual(kept[name][0], 0, name)
            self.assertGreater(kept[name][1], 0, name)
        self.assertLess(*kept["links"])


if __name__ == "__main__":
    unittest.main()
