"""What the merge tests share: the corpus by name, one merge with its verdict."""
import os
import pathlib
import shutil
import tempfile
import unittest

import completeness
import corpus
import inventory

# Tests that take minutes run where this is set; scripts/test --all sets it.
EVERYTHING = bool(os.environ.get("ZAVO_TEST_ALL"))


class MergeTest(unittest.TestCase):
    """Merges in a folder of its own."""

    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="zavo-merge-"))
        self.addCleanup(shutil.rmtree, self.folder)

    def made(self, *names):
        """Constructed inputs by name. One that is asked for again is a copy with another name."""
        known = {path.stem: path for path in corpus.constructed_pdfs()}
        paths = []
        for number, name in enumerate(names):
            path = known[name]
            if path in paths:
                path = self.folder / f"{name} again {number}.pdf"
                shutil.copyfile(known[name], path)
            paths.append(path)
        return paths

    def merge(self, inputs, name="merged.pdf"):
        target = self.folder / name
        code, _, errors = completeness.zavopdf("merge", target, *inputs)
        self.assertEqual((code, errors), (0, ""))
        return target

    def assertKeepsAll(self, merged, inputs, everything=True):
        """Fails with all that the merged file lacks; gives its inventory."""
        lacking = [str(feature) for feature in completeness.judge(merged, inputs, everything) if not feature.complete]
        self.assertEqual(lacking, [], "\n" + "\n".join(lacking))
        return inventory.read(merged)

    def merged(self, *names):
        """Merges constructed inputs, sees to it that nothing is lost, gives the inventory."""
        inputs = self.made(*names)
        return self.assertKeepsAll(self.merge(inputs), inputs)
