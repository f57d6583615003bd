"""What programs that share no code with the inventory see in a PDF: qpdf's check and poppler's tools."""
import dataclasses
import hashlib
import re
import subprocess


@dataclasses.dataclass
class SecondView:
    """What the other programs say of one file; lists go page by page where there are pages."""
    complaints: set       # qpdf --check, without names and numbers
    page_sizes: list      # pdfinfo
    texts: list           # pdftotext
    attachments: list     # pdfdetach, sorted
    structure: list       # pdfinfo -struct-text
    destinations: int     # pdfinfo -dests: named ones that lead to a page
    pictures: list        # pdftoppm at 40 dpi, a hash a page


def run(*command, accept=(0,)):
    done = subprocess.run(list(map(str, command)), stdin=subprocess.DEVNULL, capture_output=True, check=False)
    if done.returncode not in accept:
        said = done.stderr.decode("utf-8", "replace")[-300:]
        raise RuntimeError(f"{command[0]} ended with {done.returncode}: {said}")
    return done.stdout


def complaints(path):
    """What qpdf finds wrong, without file names, object numbers and offsets."""
    done = subprocess.run(["qpdf", "--check", str(path)], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          errors="replace", check=False)
    found = set()
    for line in done.stderr.replace(str(path), "FILE").splitlines():
        if done.returncode != 3 or not line.startswith("qpdf: operation succeeded"):
            found.add(re.sub(r"\d+", "N", line.removeprefix("WARNING: ")))
    if done.returncode not in (0, 3):
        found.add(f"qpdf --check ended with {done.returncode}")
    return found


def page_sizes(path):
    lines = run("pdfinfo", "-box", "-f", 1, "-l", 1000000, path).decode("utf-8", "replace").splitlines()
    rows = (re.match(r"Page +(\d+) (size|rot|\w+Box): +(.*)", line) for line in lines)
    pages = {}
    for row in rows:
        if row:
            pages.setdefault(int(row[1]), []).append((row[2], row[3]))
    return [tuple(pages[number]) for number in sorted(pages)]


def texts(path):
    return run("pdftotext", "-enc", "UTF-8", path, "-").decode("utf-8", "replace").split("\f")[:-1]


def attachments(path):
    lines = run("pdfdetach", "-list", path).decode("utf-8", "replace").splitlines()
    return sorted(line.split(": ", 1)[1] for line in lines if re.match(r"\d+: ", line))


def structure(path):
    """The tree of tags with its texts, without object numbers and IDs, which a merge may change."""
    lines = run("pdfinfo", "-struct-text", path).decode("utf-8", "replace").splitlines()
    return [line if line.lstrip().startswith('"') else
            re.sub(r"(Object) \d+ \d+| <[^<>]*>|(/Headers) .*", lambda found: found[1] or found[2] or "", line)
            for line in lines]


def destinations(path):
    return sum(1 for line in run("pdfinfo", "-dests", path).splitlines() if re.match(rb" *\d+ \[", line))


def pictures(path, first=None, last=None):
    """A hash a page of its picture at 40 dpi."""
    span = ([] if first is None else ["-f", first]) + ([] if last is None else ["-l", last])
    data = run("pdftoppm", "-r", 40, "-gray", *span, path)
    found, at = [], 0
    while at < len(data):
        head = re.compile(rb"P5\s+(\d+)\s+(\d+)\s+255\s").match(data, at)
        end = head.end() + int(head[1]) * int(head[2])
        found.append(hashlib.sha256(data[at:end]).hexdigest()[:20])
        at = end
    return found


def second_view(path, with_pictures=True):
    return SecondView(complaints(path), page_sizes(path), texts(path), attachments(path), structure(path),
                      destinations(path), pictures(path) if with_pictures else [])
