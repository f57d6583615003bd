#!/usr/bin/python3
"""Says which of the mails that were to become PDFs did not, and why.

Usage: report.py PREPARED_FOLDER JOURNAL [N,M]

PREPARED_FOLDER is what prepare.py made, JOURNAL what the stand-ins wrote (standins/common/Journal.h says what is in
it), N,M the selected mails. Prints a line for each mail without a PDF that a button for creating PDFs was clicked for.
"""
import os
import re
import sys

DEVICE = re.compile(r"(CON|PRN|AUX|NUL|CONIN\$|CONOUT\$|(COM|LPT)[0-9\u00b9\u00b2\u00b3]) *(\..*)?", re.IGNORECASE)
SHOWN = 60  # characters of a subject
LONG = 150  # a path has less than 260 characters, folders included


def read_items(prepared):
    """The items of a prepared folder, each with the values that it has once."""
    with open(os.path.join(prepared, "folder.txt"), "rb") as file:
        lines = file.read().decode("utf-16-le", "surrogatepass").split("\n")
    items = []
    for line in lines:
        name, _, value = line.partition("\t")
        value = re.sub(r"\\(.)", lambda escaped: "\n" if escaped[1] == "n" else escaped[1], value)
        if name == "item":
            items.append({})
        if items:
            items[-1].setdefault(name, value)
    return items


def read_journal(path):
    """The ids of the clicked buttons, the numbers of the mails with a PDF, and by number why others have none."""
    clicked, done, failed = [], set(), {}
    latest = {}  # which item a document was last saved from
    with open(path, encoding="utf-8") as file:
        lines = [line.rstrip("\n").split("\t") for line in file]
    for what, *values in lines:
        if what == "clicked":
            clicked.append(values[0])
        elif what == "saved":
            latest[values[1]] = int(values[0])
            failed[int(values[0])] = "no PDF was made of it: its path may be too long, or Word refused it"
        elif what == "not saved":
            failed[int(values[0])] = f"it was not saved: {values[2]}"
        elif what == "exported" and values[0] in latest:
            done.add(latest[values[0]])
        elif what == "not exported" and values[0] in latest:
            failed[latest[values[0]]] = f"Word could not export it: {values[1]}"
    return clicked, done, failed


def reason_never_saved(item):
    subject = item["subject"]
    if "IPM.Note" not in item["class"]:
        return f"it is no mail ({item['class']})"
    forbidden = sorted({c for c in subject if c < " " or c in '<>:"/\\|?*'})
    if forbidden:
        names = " ".join(c if c >= " " else f"U+{ord(c):04X}" for c in forbidden)
        return f"no file can have its subject as a name, because of {names}"
    if DEVICE.fullmatch(subject):
        return "no file can have its subject as a name, which is that of a device"
    if len(subject) > LONG:
        return f"no file can have its subject as a name, which has {len(subject)} characters"
    return "the add-in did not save it"


def main(prepared, journal, selection=""):
    items = read_items(prepared)
    clicked, done, failed = read_journal(journal)
    selected = [int(number) for number in selection.split(",")] if selection else range(1, len(items) + 1)
    wanted = set()
    for button in clicked:
        if button.startswith("Button_ID_Create"):
            wanted.update(selected if button.endswith("ByMail") else range(1, len(items) + 1))
    for number in sorted(wanted - done):
        item = items[number - 1]
        subject = "".join(c if c.isprintable() else "\ufffd" for c in item["subject"])
        if len(subject) > SHOWN:
            subject = subject[:SHOWN] + "..."
        print(f"{item['item']}, \"{subject}\": {failed.get(number) or reason_never_saved(item)}")


if __name__ == "__main__":
    if not 3 <= len(sys.argv) <= 4:
        sys.exit(__doc__)
    sys.stdout.reconfigure(encoding="utf-8", errors="replace")
    main(*sys.argv[1:])
