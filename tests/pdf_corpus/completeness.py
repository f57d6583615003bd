#!/usr/bin/python3
"""Whether a merged PDF holds all that its inputs hold.

Usage: completeness.py MERGED INPUT...
Prints what the merged file keeps of its inputs, feature by feature; exit code 1 when something is missing.
"""
import os
import pathlib
import random
import subprocess
import sys

import corpus
import inventory
import readers
from compare import Feature, compare, kept_of

SAMPLE = 24  # pages that are drawn and compared of a file whose pages are too many for all
ZAVOPDF = pathlib.Path(os.environ.get("ZAVOPDF", corpus.ROOT / "build" / "bin" / "zavopdf"))


def zavopdf(*arguments):
    """Runs the engine's command line; gives its exit code, output and errors."""
    done = subprocess.run([str(ZAVOPDF), *map(str, arguments)], stdin=subprocess.DEVNULL, capture_output=True,
                          text=True, errors="replace", timeout=300, check=False)
    return done.returncode, done.stdout, done.stderr


def drawn_pages(inputs, facts, merged, everything):
    """The pictures of pages before and after: of all pages, or of a sample."""
    if everything:
        return [picture for _, view in facts for picture in view.pictures], readers.pictures(merged)
    pages = [(path, page) for path, (found, _) in zip(inputs, facts) for page in range(1, len(found.pages) + 1)]
    chosen = sorted(random.Random(len(pages)).sample(range(len(pages)), min(SAMPLE, len(pages))))
    before = [readers.pictures(pages[number][0], pages[number][1], pages[number][1]) for number in chosen]
    return before, [readers.pictures(merged, number + 1, number + 1) for number in chosen]


def second_opinions(inputs, facts, merged, everything):
    """A Feature each for what qpdf and poppler see."""
    views = [view for _, view in facts]
    after = readers.second_view(merged, with_pictures=False)
    known = set().union(*(view.complaints for view in views))
    fresh = sorted(after.complaints - known)
    found = [Feature("qpdf --check", 0, 0, fresh)]
    # Where one input's form asks for it, readers draw all fields anew, so pages with fields may look different.
    redrawn = set()
    if len({item.need_appearances for item, _ in facts if item.fields}) > 1:
        redrawn = set(widget_pages([item for item, _ in facts]))

    def settled(by_page):
        return [item for number, item in enumerate(by_page) if number not in redrawn]

    for name, ordered in (("page_sizes", True), ("texts", True), ("attachments", False), ("structure", True)):
        expected = [item for view in views for item in getattr(view, name)]
        actual = getattr(after, name)
        if name == "texts":
            expected, actual = settled(expected), settled(actual)
        found.append(kept_of(f"poppler's {name.replace('_', ' ')}", expected, actual, ordered))
    names = sum(view.destinations for view in views)
    found.append(Feature("poppler's destinations", names, min(names, after.destinations),
                         [] if after.destinations == names else [f"{after.destinations} instead of {names}"]))
    before, pictures = drawn_pages(inputs, facts, merged, everything)
    if everything:
        before, pictures = settled(before), settled(pictures)
    different = [f"page {number + 1} looks different" for number, pair in enumerate(zip(before, pictures))
                 if pair[0] != pair[1]]
    found.append(Feature("pictures of pages", len(before), len(pictures) - len(different), different))
    return found


def widget_pages(inventories):
    """The pages of the merged file that have fields."""
    first = 0
    for found in inventories:
        for annotation in found.annotations:
            if annotation[1] == "/Widget":
                yield annotation[0][1] + first
        first += len(found.pages)


def judge(merged, inputs, everything=True):
    """A Feature each for what the merge of the inputs has to keep. The pages are all drawn, or a sample of them."""
    inputs = [pathlib.Path(path) for path in inputs]
    facts = corpus.all_facts(inputs, everything)
    found = compare([item for item, _ in facts], [path.stem for path in inputs], inventory.read(merged))
    return found + second_opinions(inputs, facts, merged, everything)


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    result = judge(sys.argv[1], sys.argv[2:])
    for feature in result:
        print(feature)
    sys.exit(any(not feature.complete for feature in result))
