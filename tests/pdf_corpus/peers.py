#!/usr/bin/python3
"""What common tools keep of the inputs when they merge them, beside the engine: tables for the documentation.

Usage: peers.py [KIND...]
Kinds are those of corpus.py; without any, all. The engine is left out where it is not built.
"""
import pathlib
import subprocess
import sys
import tempfile

import completeness
import corpus

TOOLS = {
    "zavopdf": lambda out, inputs: [completeness.ZAVOPDF, "merge", out, *inputs],
    "qpdf": lambda out, inputs: ["qpdf", "--empty", "--pages", *inputs, "--", out],
    "pdfunite": lambda out, inputs: ["pdfunite", *inputs, out],
    "mutool": lambda out, inputs: ["mutool", "merge", "-o", out, *inputs],
    "pdftk": lambda out, inputs: ["pdftk", *inputs, "cat", "output", out],
}
# Tools that end at an input that is repaired, encrypted or the like are given the others.
REFUSED = {"pdfunite": ("encrypted",), "pdftk": ("encrypted", "table-torn", "startxref-wrong", "junk-before")}


def merge(tool, out, inputs):
    """Runs the tool; gives what it said when it failed."""
    done = subprocess.run(list(map(str, TOOLS[tool](out, inputs))), stdin=subprocess.DEVNULL, capture_output=True,
                          text=True, errors="replace", check=False)
    # qpdf ends with 3 when it had to repair something.
    return "" if pathlib.Path(out).exists() and done.returncode in (0, 3) else done.stderr.strip()[-300:]


def table(kind):
    """The rows of the table for one kind of inputs: a feature and, tool by tool, what it kept."""
    inputs = corpus.KINDS[kind]()
    results = {}
    with tempfile.TemporaryDirectory(prefix="zavo-peers-") as folder:
        for tool in TOOLS:
            if tool == "zavopdf" and not completeness.ZAVOPDF.exists():
                continue
            out = f"{folder}/{tool}.pdf"
            taken = [path for path in inputs if not path.name.startswith(REFUSED.get(tool, ("//",)))]
            problem = merge(tool, out, taken)
            if problem:
                print(f"{tool} failed on {kind}: {problem}", file=sys.stderr)
                continue
            results[tool] = {feature.name: feature for feature in
                             completeness.judge(out, taken, kind != "manuals")}
    names = list(next(iter(results.values())))
    yield ["", *results]
    for name in names:
        row = [results[tool][name] for tool in results]
        if name in ("nothing left over", "no contradictions", "qpdf --check"):
            yield [name, *("yes" if feature.complete else f"no: {'; '.join(feature.findings)}" for feature in row)]
        elif any(feature.expected for feature in row):
            yield [name, *(f"{feature.kept} of {feature.expected}" for feature in row)]


if __name__ == "__main__":
    kinds = sys.argv[1:] or list(corpus.KINDS)
    if set(kinds) - set(corpus.KINDS):
        sys.exit(__doc__)
    for wanted in kinds:
        print(f"\n{wanted}\n")
        for number, cells in enumerate(table(wanted)):
            print("| " + " | ".join(cells) + " |")
            if number == 0:
                print("|" + "---|" * len(cells))
