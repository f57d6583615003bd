"""What a merge of given inputs has to hold, and what of it a merged file keeps, feature by feature."""
import dataclasses
import re
from collections import Counter, defaultdict

from inventory import DEAD, has_dead, shifted

SHOWN = 4  # findings that are spelled out for a feature
LONGEST = 400  # characters of a finding
MADE_NAME = re.compile(r"[#+]\d+$")  # names as a merge makes them; an input that has such a one may lose it


@dataclasses.dataclass
class Feature:
    """One thing that a merge keeps or drops: how many the inputs have, how many the merged file has of them."""
    name: str
    expected: int
    kept: int
    findings: list

    @property
    def complete(self):
        return self.kept == self.expected and not self.findings

    def __str__(self):
        lines = [f"{self.name}: {self.kept} of {self.expected} kept"]
        lines += (finding if len(finding) < LONGEST else finding[:LONGEST] + " ..." for finding in
                  self.findings[:SHOWN])
        if len(self.findings) > SHOWN:
            lines.append(f"and {len(self.findings) - SHOWN} more")
        return "\n    ".join(lines)


@dataclasses.dataclass
class Part:
    """One input of a merge: its inventory with all places as they are in the merged file."""
    stem: str
    first_page: int
    found: object


def moved(inventories, stems):
    """The inputs as parts of the merged file."""
    parts, pages, layers, elements = [], 0, 0, 0
    for inventory, stem in zip(inventories, stems):
        def move(value, by=(pages, layers, elements)):
            return shifted(value, *by)

        found = dataclasses.replace(inventory, **{
            name: [move(item) for item in getattr(inventory, name)] for name in
            ("pages", "outline", "annotations", "destinations", "fields", "attachments", "tags", "layers", "threads",
             "layer_uses", "layer_order")})
        found.layer_rules = [(rule[0], frozenset(map(move, rule[1]))) if rule[0] == "one of" else move(rule)
                             for rule in inventory.layer_rules]
        parts.append(Part(stem, pages, found))
        pages, layers, elements = (pages + len(inventory.pages), layers + len(inventory.layers),
                                   elements + len(inventory.tags))
    return parts


def kept_of(name, expected, actual, ordered=True, core=lambda item: item):
    """Compares two lists; a place that is dead in the inputs may lead anywhere.

    An item counts as kept where its core is there; all that differs is a finding.
    """
    kept = sum((Counter(map(core, expected)) & Counter(map(core, actual))).values())
    if any(has_dead(item) for item in expected):
        actual = [masked(*pair) for pair in zip(expected, actual)] + list(actual[len(expected):])
        expected = [masked(item, item) for item in expected]
        kept = max(kept, sum((Counter(map(core, expected)) & Counter(map(core, actual))).values()))
    wanted, had = Counter(expected), Counter(actual)
    findings = []
    for what, which in (("missing", wanted - had), ("not expected", had - wanted)):
        findings += (f"{what}{f' {count} times' if count > 1 else ''}: {item}" for item, count in which.items())
    if ordered and not findings and list(expected) != list(actual):
        findings.append("another order")
    return Feature(name, len(expected), kept, findings)


def pages_of(targets):
    """The pages that targets lead to, and the actions that lead elsewhere."""
    return tuple(target[1] if target[:1] == ("to",) else target for target in targets)


def rounded(numbers):
    return tuple(round(number, 1) for number in numbers or ())


def masked(want, have):
    if isinstance(want, tuple) and want[:1] == (DEAD,):
        return (DEAD,)
    if isinstance(want, tuple) and isinstance(have, tuple) and len(want) == len(have):
        return tuple(masked(*pair) for pair in zip(want, have))
    if isinstance(want, tuple) and isinstance(have, tuple) and has_dead(want):
        # A list with a dead link may have become longer or shorter only by that link.
        return have
    return have


def pages(parts, actual):
    return kept_of("pages", [page for part in parts for page in part.found.pages], actual.pages,
                   core=lambda page: (tuple(map(rounded, page[0])),) + page[1:3])


def bookmarks(parts, actual):
    expected = []
    for part in parts:
        expected += part.found.outline or [
            (0, part.stem, "first page", False, (0.0, 0.0, 0.0), 0, None)]
    have = list(actual.outline)
    first_pages = {part.first_page for part in parts if not part.found.outline}
    stems = {part.stem for part in parts if not part.found.outline}
    for place, item in enumerate(have):
        # A bookmark that the merge made may show its page in any way.
        targets = item[2]
        if (place < len(expected) and expected[place][2] == "first page" and item[1] in stems and len(targets) == 1 and
                targets[0][:1] == ("to",) and targets[0][1][1] in first_pages):
            have[place] = item[:2] + ("first page",) + item[3:]
    def core(item):
        return item[:2] + (item[2] if item[2] == "first page" else pages_of(item[2]),)

    found = kept_of("bookmarks", expected, have, core=core)
    # Those that the merge has to make are not counted, so that nobody is said to drop what no input has.
    made = Counter(core(item) for item in expected if item[2] == "first page")
    found.expected -= sum(made.values())
    found.kept -= sum((made & Counter(map(core, have))).values())
    return found


def links(parts, actual):
    return kept_of("links", [item for part in parts for item in part.found.annotations if item[1] == "/Link"],
                   [item for item in actual.annotations if item[1] == "/Link"],
                   core=lambda item: (item[0][1], rounded(item[2]), pages_of(item[3])))


def other_annotations(parts, actual):
    return kept_of("other annotations",
                   [item for part in parts for item in part.found.annotations if item[1] != "/Link"],
                   [item for item in actual.annotations if item[1] != "/Link"])


def destinations(parts, actual):
    """Every name with its place; one that is taken becomes name#2, name#3 and so on."""
    expected = [item for part in parts for item in part.found.destinations]
    free = defaultdict(list)
    for name, target in actual.destinations:
        free[re.sub(r"#\d+$", "", name), target].append(name)
        if re.search(r"#\d+$", name):
            free[name, target].append(name)
    kept, findings, used = 0, [], set()
    for name, target in expected:
        candidates = free.get((name, target), []) + free.get((re.sub(r"#\d+$", "", name), target), [])
        candidates = [other for other in candidates if (other, target) not in used]
        chosen = name if name in candidates else (candidates[0] if candidates else None)
        if chosen is None:
            if has_dead(target):
                kept += 1  # nothing is lost with a name that led nowhere
            else:
                findings.append(f"missing: {name} {target}")
            continue
        used.add((chosen, target))
        kept += 1
    first_of = {}  # an input may have a text twice, as a name and as a string
    for part in parts:
        own = {}
        for name, target in part.found.destinations:
            if not has_dead(target):
                own.setdefault(name, set()).add(target)
        first_of = {**own, **first_of}
    have = set(actual.destinations)
    names = {name for name, _ in have}
    findings += (f"the first {name} lost its name" for name, targets in first_of.items()
                 if name in names and not any((name, target) in have for target in targets) and
                 not MADE_NAME.search(name))
    findings += (f"not expected: {name} {target}" for name, target in actual.destinations
                 if (name, target) not in used and not has_dead(target))
    return Feature("named destinations", len(expected), kept, findings)


def base_name(name):
    return re.sub(r"\+\d+$", "", name)


def match_fields(parts, actual):
    """Pairs of expected and actual fields: the same facts, and the same name but for what makes it unique."""
    free = defaultdict(list)
    for place, (names, facts, style) in enumerate(actual.fields):
        for first in {names[0], base_name(names[0])}:
            free[(first,) + names[1:], facts].append(place)
    used, pairs = set(), []
    for part in parts:
        roots = {}
        for field in part.found.fields:
            names, facts, _ = field
            candidates = [place for place in free.get((names, facts), []) if place not in used]
            kept_root = [place for place in candidates
                         if actual.fields[place][0][0] == roots.get(names[0], actual.fields[place][0][0])]
            chosen = kept_root[0] if kept_root else None
            if chosen is not None:
                used.add(chosen)
                roots[names[0]] = actual.fields[chosen][0][0]
            pairs.append((part, field, chosen))
    return pairs, used


def fields(parts, actual):
    pairs, used = match_fields(parts, actual)
    findings = [f"missing: {'.'.join(field[0])} {field[1]}" for _, field, place in pairs if place is None]
    findings += (f"not expected: {'.'.join(field[0])} {field[1]}"
                 for place, field in enumerate(actual.fields) if place not in used)
    first_of = {}
    for part, field, place in pairs:
        owner = first_of.setdefault(field[0][0], part)
        if (owner is part and place is not None and actual.fields[place][0] != field[0] and
                not MADE_NAME.search(field[0][0])):
            findings.append(f"the first {field[0][0]} lost its name")
    if any(part.found.need_appearances for part in parts) and not actual.need_appearances and actual.fields:
        findings.append("NeedAppearances is gone")
    return Feature("form fields", len(pairs), sum(place is not None for *_, place in pairs), findings)


def field_fonts(parts, actual):
    pairs, _ = match_fields(parts, actual)
    expected = kept = 0
    findings = []
    for _, field, place in pairs:
        if field[2] is None or any(style is None or has_dead(style) for style in field[2]):
            continue
        expected += 1
        have = actual.fields[place][2] if place is not None else None
        if have == field[2]:
            kept += 1
        else:
            findings.append(f"{'.'.join(field[0])}: {have} instead of {field[2]}")
    return Feature("fonts of fields", expected, kept, findings)


def calculation_order(parts, actual):
    pairs, _ = match_fields(parts, actual)
    expected = []
    for part in parts:
        names = {field[0]: actual.fields[place][0] if place is not None else ("lost",) + field[0]
                 for owner, field, place in pairs if owner is part}
        expected += (names.get(name, (DEAD,)) for name in part.found.calculation)
    return kept_of("calculation order", expected, actual.calculation)


def attachments(parts, actual):
    return kept_of("attachments", [item for part in parts for item in part.found.attachments], actual.attachments,
                   ordered=False)


def tags(parts, actual):
    feature = kept_of("tags", [item for part in parts for item in part.found.tags], actual.tags)
    if any(part.found.marked for part in parts) and actual.tags and not actual.marked:
        feature.findings.append("the file does not say that it is tagged")
    return feature


def tag_links(parts, actual):
    expected = sum(part.found.tag_links for part in parts)
    return Feature("tagged content", expected, min(actual.tag_links, expected),
                   [f"{actual.tag_links} instead of {expected}"] if actual.tag_links != expected else [])


def layers(parts, actual):
    feature = kept_of("layers", [item for part in parts for item in part.found.layers], actual.layers)
    for name in ("layer_uses", "layer_order", "layer_rules"):
        findings = kept_of(name, [item for part in parts for item in getattr(part.found, name)],
                           getattr(actual, name), ordered=name == "layer_order").findings
        feature.findings += (f"{name}: {finding}" for finding in findings)
    return feature


def labels(parts, actual):
    if not any(part.found.labels for part in parts):
        plain = [str(number + 1) for number in range(len(actual.pages))]
        return Feature("page labels", 0, 0, [] if actual.labels in ([], plain) else ["labels that no input has"])
    expected = []
    for part in parts:
        count, at = len(part.found.pages), part.first_page
        # Pages of an input without labels are numbered through, from 1 or as in the merged file.
        choices = [part.found.labels] if part.found.labels else [
            [str(start + number + 1) for number in range(count)] for start in (0, at)]
        expected += next((choice for choice in choices if choice == actual.labels[at:at + count]), choices[0])
    findings = [f"page {number}: {want!r} is {have!r}" for number, (want, have) in
                enumerate(zip(expected, actual.labels)) if want != have]
    if len(actual.labels) != len(expected):
        findings.append(f"{len(actual.labels)} labels instead of {len(expected)}")
    labelled = [number for part in parts for number in
                range(part.first_page, part.first_page + len(part.found.labels))]
    kept = sum(number < len(actual.labels) and actual.labels[number] == expected[number] for number in labelled)
    return Feature("page labels", len(labelled), kept, findings)


def threads(parts, actual):
    return kept_of("article threads", [item for part in parts for item in part.found.threads], actual.threads)


def metadata(parts, actual):
    first = parts[0].found
    findings = [f"{key}: {actual.metadata.get(key)!r} instead of {value!r}" for key, value in first.metadata.items()
                if actual.metadata.get(key) != value]
    expected, lost = len(first.metadata), len(findings)
    if first.language and actual.language != first.language:
        findings.append(f"language: {actual.language!r} instead of {first.language!r}")
    return Feature("metadata", expected, expected - lost, findings)


def cleanliness(_parts, actual):
    findings = []
    if actual.signatures:
        findings.append(f"{actual.signatures} signs of a signature that no longer holds")
    if actual.xfa:
        findings.append("an XFA form beside the changed fields")
    if actual.copies:
        findings.append(f"{actual.copies} fonts or images are there again")
    return Feature("nothing left over", 0, 0, findings)


def soundness(parts, actual):
    """Contradictions that no input had."""
    known = Counter()
    for part in parts:
        known += part.found.faults
    findings = [f"{count} times: {fault}" for fault, count in (actual.faults - known).items()]
    return Feature("no contradictions", 0, 0, findings)


FEATURES = (pages, bookmarks, links, other_annotations, destinations, fields, field_fonts,
            calculation_order, attachments, tags, tag_links, layers, labels, threads, metadata, cleanliness, soundness)


def compare(inventories, stems, actual):
    """A Feature each for what a merge promises to keep."""
    parts = moved(inventories, stems)
    return [feature(parts, actual) for feature in FEATURES]
