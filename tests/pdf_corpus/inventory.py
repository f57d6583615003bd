"""What a PDF holds, read into plain tuples that can be added up and compared: pages, bookmarks, links, fields, tags ...

References are written as places, not as objects: ("#page", 3), ("#annot", page, number), ("#layer", number),
("#element", number), so that the places of a merged file can be computed from those of its inputs (see shifted).
"""
import dataclasses
import hashlib
import sys
from collections import Counter
from decimal import Decimal

import pikepdf
from pikepdf import Array, Dictionary, Name, Stream, String

DEAD = "#dead"
STANDARD_ROLES = frozenset(
    "Document Part Art Sect Div BlockQuote Caption TOC TOCI Index NonStruct Private P H H1 H2 H3 H4 H5 H6 L LI Lbl "
    "LBody Table TR TH TD THead TBody TFoot Span Quote Note Reference BibEntry Code Link Annot Ruby RB RT RP Warichu "
    "WT WP Figure Formula Form DocumentFragment Aside Title FENote Sub Em Strong Artifact".split())
INHERITABLE = ("/Resources", "/MediaBox", "/CropBox", "/Rotate")


@dataclasses.dataclass
class Inventory:
    """The lists of one document, each in its own order."""
    pages: list = dataclasses.field(default_factory=list)         # boxes, rotation, content, unit, events, show
    outline: list = dataclasses.field(default_factory=list)       # level, title, targets, open, colour, style
    annotations: list = dataclasses.field(default_factory=list)   # page, subtype, rectangle, targets, the rest
    destinations: list = dataclasses.field(default_factory=list)  # name, target
    fields: list = dataclasses.field(default_factory=list)        # names from the root, facts, font of /DA
    calculation: list = dataclasses.field(default_factory=list)   # full names in the order of /CO
    attachments: list = dataclasses.field(default_factory=list)   # place, file name, description, content, dates
    tags: list = dataclasses.field(default_factory=list)          # depth, role, texts, attributes, content
    tag_links: int = 0                                            # marked contents and annotations found both ways
    layers: list = dataclasses.field(default_factory=list)        # name, intent, usage, visible, locked
    layer_uses: list = dataclasses.field(default_factory=list)    # page, name in its content, layer
    layer_order: list = dataclasses.field(default_factory=list)
    layer_rules: list = dataclasses.field(default_factory=list)   # radio groups and automatic states
    labels: list = dataclasses.field(default_factory=list)        # a text a page; empty without /PageLabels
    threads: list = dataclasses.field(default_factory=list)       # title, beads
    metadata: dict = dataclasses.field(default_factory=dict)
    language: str = ""
    marked: bool = False
    signatures: int = 0                                           # what says that something is signed
    xfa: bool = False
    need_appearances: bool = False
    copies: int = 0                                               # fonts and images stored more than once
    faults: Counter = dataclasses.field(default_factory=Counter)  # contradictions within the file


def shifted(value, pages, layers, elements):
    """The same with the places moved by so many pages, layers and structure elements."""
    if not isinstance(value, tuple):
        return value
    if value and value[0] in ("#page", "#annot"):
        return (value[0], value[1] + pages) + value[2:]
    if value and value[0] == "#layer":
        return (value[0], value[1] + layers)
    if value and value[0] == "#element":
        return (value[0], value[1] + elements)
    return tuple(shifted(item, pages, layers, elements) for item in value)


def has_dead(value):
    return isinstance(value, tuple) and (value[:1] == (DEAD,) or any(has_dead(item) for item in value))


def digest(data):
    return hashlib.sha256(data).hexdigest()[:20]


def plain(value):
    """A name or a string without its decoration."""
    if isinstance(value, String):
        return bytes(value).decode("latin-1")
    return str(value)[1:] if isinstance(value, Name) else str(value)


def text(value):
    return None if value is None else str(value)


def number(value):
    return round(float(value), 4)


def roman(value):
    result = ""
    for amount, sign in ((1000, "m"), (900, "cm"), (500, "d"), (400, "cd"), (100, "c"), (90, "xc"), (50, "l"),
                         (40, "xl"), (10, "x"), (9, "ix"), (5, "v"), (4, "iv"), (1, "i")):
        result += sign * (value // amount)
        value %= amount
    return result


def label_text(style, value):
    if style in ("/r", "/R"):
        return roman(value) if style == "/r" else roman(value).upper()
    if style in ("/a", "/A"):
        letters = chr(ord(style[1]) + (value - 1) % 26) * ((value - 1) // 26 + 1)
        return letters
    return str(value) if style == "/D" else ""


def is_table(value):
    return isinstance(value, (Dictionary, Stream))


def table(value):
    """The value where it is a dictionary, else an empty one."""
    return value if is_table(value) else {}


def items(value):
    """The array's items; a single value counts as an array of one."""
    if value is None:
        return []
    return list(value) if isinstance(value, Array) else [value]


class Reader:
    """Reads one opened document into an Inventory."""

    def __init__(self, pdf):
        self.pdf = pdf
        self.root = pdf.Root
        self.found = Inventory()
        self.places = {}     # object number to place
        self.fields_by_name = {}
        self.page_objects = [page.obj for page in pdf.pages]
        for index, page in enumerate(self.page_objects):
            self.places.setdefault(page.objgen, ("#page", index))
        self.annotation_objects = []
        for index, page in enumerate(self.page_objects):
            for place, annotation in enumerate(items(page.get("/Annots"))):
                if not is_table(annotation):
                    continue
                self.annotation_objects.append((index, place, annotation))
                if annotation.is_indirect:
                    self.places.setdefault(annotation.objgen, ("#annot", index, place))
        self.layer_objects = items(table(self.root.get("/OCProperties")).get("/OCGs"))
        for index, layer in enumerate(self.layer_objects):
            self.places.setdefault(layer.objgen, ("#layer", index))
        self.form = table(self.root.get("/AcroForm"))
        self.field_nodes = self.list_fields()
        self.structure = table(self.root.get("/StructTreeRoot"))
        self.element_nodes = self.list_elements()
        names = table(self.root.get("/Names"))
        self.named = {plain(key): value for key, value in self.tree(names.get("/Dests"), "/Names")}
        self.named_old = {key[1:]: value for key, value in table(self.root.get("/Dests")).items()}

    def read(self):
        self.read_pages()
        self.read_outline()
        self.read_annotations()
        self.found.destinations = [(name, self.target(value)) for names in (self.named_old, self.named)
                                   for name, value in names.items()]
        self.read_fields()
        self.read_attachments()
        self.read_tags()
        self.read_layers()
        self.read_labels()
        self.read_threads()
        self.read_metadata()
        self.read_copies()
        return self.found

    def fault(self, what):
        self.found.faults[what] += 1

    def place(self, value):
        return self.places.get(value.objgen) if getattr(value, "is_indirect", False) else None

    # --- Values -------------------------------------------------------------------------------------------------------

    def canon(self, value, path=()):
        """The value as nested tuples, references to known things as places."""
        if isinstance(value, (bool, int, type(None))):
            return value
        if isinstance(value, (Decimal, float)):
            return number(value)
        if isinstance(value, Name):
            return str(value)
        if isinstance(value, String):
            return ("s", bytes(value).decode("latin-1"))
        if value.is_indirect:
            known = self.places.get(value.objgen)
            if known is not None:
                return known
            if value.objgen in path:
                return ("#loop", len(path) - path.index(value.objgen))
            path += (value.objgen,)
        if len(path) > 40:
            return "#deep"
        if isinstance(value, Array):
            return ("a",) + tuple(self.canon(item, path) for item in value)
        if isinstance(value, Stream):
            try:
                content = digest(value.read_bytes())
            except pikepdf.PdfError:
                content = digest(value.read_raw_bytes())
            return ("stream", content) + self.canon_items(value, path, ("/Length", "/Filter", "/DecodeParms"))
        if isinstance(value, Dictionary):
            return ("d",) + self.canon_items(value, path)
        return str(value)

    def canon_items(self, value, path, but=()):
        return tuple((key, self.canon(item, path)) for key, item in sorted(value.items())
                     if key not in but and item is not None)

    def tree(self, root, leaf):
        """The pairs of a name tree ("/Names") or number tree ("/Nums"); a faulty order counts as a fault."""
        pairs, stack, seen = [], [root] if is_table(root) else [], set()
        while stack:
            node = stack.pop()
            if node.is_indirect:
                if node.objgen in seen:
                    self.fault("tree with a loop")
                    continue
                seen.add(node.objgen)
            flat = list(node.get(leaf, []))
            own = list(zip(flat[0::2], flat[1::2]))
            limits = node.get("/Limits")
            if own and limits is not None:
                bounds = [self.key(limits[0]), self.key(limits[1])]
                if bounds != [self.key(own[0][0]), self.key(own[-1][0])]:
                    self.fault("tree node with wrong limits")
            pairs += own
            stack += reversed([kid for kid in node.get("/Kids", []) if is_table(kid)])
        keys = [self.key(pair[0]) for pair in pairs]
        if any(first >= second for first, second in zip(keys, keys[1:])):
            self.fault("tree out of order")
        return pairs

    @staticmethod
    def key(value):
        return bytes(value) if isinstance(value, String) else value

    # --- Destinations and actions -------------------------------------------------------------------------------------

    def target(self, destination, depth=0):
        """("to", page, view ...) of a destination in this document, or a dead one."""
        if isinstance(destination, (String, Name)):
            names = self.named if isinstance(destination, String) else self.named_old
            name = plain(destination)
            return self.target(names[name], depth + 1) if name in names and depth < 5 else (DEAD, name)
        if is_table(destination):
            return self.target(destination.get("/D"), depth + 1) if "/D" in destination else (DEAD, "no /D")
        if not isinstance(destination, Array) or len(destination) == 0:
            return (DEAD, "no destination")
        place = self.place(destination[0]) if is_table(destination[0]) else None
        if place is None or place[0] != "#page":
            return (DEAD, "no page")
        return ("to", place) + tuple(self.canon(item) for item in list(destination)[1:])

    def field_place(self, name):
        """Where the field of that name stands, for actions that name fields."""
        return self.fields_by_name.get(str(name), (DEAD, str(name)))

    def actions(self, first):
        """The action and those that follow it, in their order."""
        result, stack, seen = [], [first], set()
        while stack:
            action = stack.pop()
            if not is_table(action) or action.objgen in seen:
                continue
            if action.is_indirect:
                seen.add(action.objgen)
            kind = str(action.get("/S"))
            if kind == "/GoTo":
                result.append(self.target(action.get("/D")))
            else:
                facts = [(key, self.canon(item)) for key, item in sorted(action.items())
                         if key not in ("/Next", "/Type", "/Fields", "/T")]
                for key in ("/Fields", "/T"):
                    if key in action and kind in ("/ResetForm", "/SubmitForm", "/Hide"):
                        facts.append((key, tuple(self.field_place(item) if isinstance(item, String) else
                                                 self.canon(item) for item in items(action[key]))))
                    elif key in action:
                        facts.append((key, self.canon(action[key])))
                result.append(("action",) + tuple(facts))
            stack += reversed(items(action.get("/Next")))
        return tuple(result)

    def targets(self, thing):
        """Where a bookmark or annotation leads: its destination or its actions, and those of its events."""
        result = (self.target(thing["/Dest"]),) if "/Dest" in thing else self.actions(thing.get("/A"))
        for event, action in sorted(table(thing.get("/AA")).items()):
            result += (("on", event) + self.actions(action),)
        return result

    # --- Pages --------------------------------------------------------------------------------------------------------

    def inherited(self, page, key):
        node, depth = page, 0
        while is_table(node) and depth < 100:
            if key in node:
                return node[key]
            node, depth = node.get("/Parent"), depth + 1
        return None

    def read_pages(self):
        for index, page in enumerate(self.page_objects):
            boxes = [self.box(self.inherited(page, "/MediaBox"))]
            boxes.append(self.box(self.inherited(page, "/CropBox")) or boxes[0])
            boxes += (self.box(page.get(key)) or boxes[1] for key in ("/BleedBox", "/TrimBox", "/ArtBox"))
            content = b"\n".join(part.read_bytes() for part in items(page.get("/Contents")) if isinstance(part, Stream))
            events = tuple((event, self.actions(action)) for event, action in sorted(table(page.get("/AA")).items()))
            self.found.pages.append((
                tuple(boxes), int(self.inherited(page, "/Rotate") or 0) % 360, digest(content),
                number(page.get("/UserUnit", 1)), events, self.canon(page.get("/Trans")), self.canon(page.get("/Dur"))))
            resources = table(self.inherited(page, "/Resources"))
            layers = list(table(resources.get("/Properties")).items())
            layers += ((key, value["/OC"]) for key, value in table(resources.get("/XObject")).items()
                       if is_table(value) and "/OC" in value)
            self.found.layer_uses += ((("#page", index), key, self.canon(value)) for key, value in sorted(layers)
                                      if key.encode() in content)
        self.check_page_tree()

    @staticmethod
    def box(value):
        if not isinstance(value, Array) or len(value) != 4:
            return None
        left, bottom, right, top = (number(item) for item in value)
        return (min(left, right), min(bottom, top), max(left, right), max(bottom, top))

    def check_page_tree(self):
        def count(node, depth):
            if "/Kids" not in node:
                return 1
            found = 0
            for kid in node.Kids:
                if depth > 200 or not is_table(kid):
                    continue
                if table(kid.get("/Parent")) and kid.Parent.objgen != node.objgen:
                    self.fault("page tree node with another parent")
                found += count(kid, depth + 1)
            if node.get("/Count") != found:
                self.fault("page tree node with a wrong count")
            return found

        count(self.root.Pages, 0)

    # --- Bookmarks ----------------------------------------------------------------------------------------------------

    def read_outline(self):
        root = table(self.root.get("/Outlines"))
        visible = self.read_outline_level(root, 0, set()) if root else 0
        if root and "/Count" in root and abs(int(root.Count)) != visible:
            self.fault("outline with a wrong count")

    def read_outline_level(self, parent, level, seen):
        """Reads the items below `parent`; gives how many are visible when it is open."""
        visible, previous, item = 0, None, parent.get("/First")
        while is_table(item) and item.objgen not in seen:
            seen.add(item.objgen)
            colour = tuple(number(part) for part in item.get("/C", [])) or (0.0, 0.0, 0.0)
            is_open = int(item.get("/Count", 0)) > 0
            self.found.outline.append((level, text(item.get("/Title")), self.targets(item), is_open, colour,
                                       int(item.get("/F", 0)), self.canon(item.get("/SE"))))
            if table(item.get("/Parent")) and item.Parent.objgen != parent.objgen:
                self.fault("bookmark with another parent")
            before = item.get("/Prev")
            if (before.objgen if is_table(before) else None) != (previous.objgen if previous is not None else None):
                self.fault("bookmark with another predecessor")
            below = self.read_outline_level(item, level + 1, seen) if level < 200 else 0
            if abs(int(item.get("/Count", 0))) != below:
                self.fault("bookmark with a wrong count")
            visible += 1 + (below if is_open else 0)
            previous, item = item, item.get("/Next")
        last = parent.get("/Last")
        if previous is not None and (not is_table(last) or last.objgen != previous.objgen):
            self.fault("outline level with another last item")
        return visible

    # --- Annotations --------------------------------------------------------------------------------------------------

    def read_annotations(self):
        for index, place, annotation in self.annotation_objects:
            subtype = str(annotation.get("/Subtype"))
            own_page = annotation.get("/P")
            if is_table(own_page) and self.place(own_page) != ("#page", index):
                self.fault("annotation that names another page")
            popup = annotation.get("/Popup")
            if is_table(popup) and is_table(popup.get("/Parent")) and popup.Parent.objgen != annotation.objgen:
                self.fault("popup with another parent")
            facts = [(key, self.canon(annotation[key])) for key in
                     ("/Contents", "/F", "/OC", "/IRT", "/RT", "/NM", "/QuadPoints", "/Popup", "/AS", "/C", "/Border")
                     if key in annotation]
            facts.append(tuple(sorted(table(table(annotation.get("/AP")).get("/N")).keys()))
                         if not isinstance(table(annotation.get("/AP")).get("/N"), Stream) else "one appearance")
            self.found.annotations.append((("#annot", index, place), subtype, self.box(annotation.get("/Rect")),
                                           self.targets(annotation), tuple(facts)))

    # --- Forms --------------------------------------------------------------------------------------------------------

    def list_fields(self):
        """Every terminal field: its names from the root down, its nodes from the root down, its widgets."""
        result, seen = [], set()
        stack = [((), (), node) for node in reversed(items(self.form.get("/Fields"))) if is_table(node)]
        roots = Counter()
        while stack:
            names, nodes, node = stack.pop()
            if node.objgen in seen:
                continue
            seen.add(node.objgen)
            if nodes and (not is_table(node.get("/Parent")) or node.Parent.objgen != nodes[-1].objgen):
                self.fault("field with another parent")
            if not nodes and "/Parent" in node:
                self.fault("top field with a parent")
            names += (str(node.get("/T", "")),)
            nodes += (node,)
            if len(names) == 1:
                roots[names] += 1
            kids = [kid for kid in items(node.get("/Kids")) if is_table(kid)]
            inner = [kid for kid in kids if "/T" in kid]
            if inner:
                stack += ((names, nodes, kid) for kid in reversed(inner))
                continue
            widgets = kids or [node]
            if kids and any(is_table(kid.get("/Parent")) and kid.Parent.objgen != node.objgen for kid in kids):
                self.fault("widget with another parent")
            places = tuple(self.place(widget) or (DEAD, "no page") for widget in widgets)
            result.append((names, nodes, widgets, places))
            self.fields_by_name[".".join(names)] = places
            for depth in range(1, len(names)):
                self.fields_by_name.setdefault(".".join(names[:depth]), places)
            for known in nodes:
                self.places.setdefault(known.objgen, ("#field",) + places)
        for repeated in (count for count in roots.values() if count > 1):
            self.found.faults["fields of one name"] += repeated - 1
        return result

    def read_fields(self):
        fonts = table(table(self.form.get("/DR")).get("/Font"))
        full_names = {}
        for names, nodes, widgets, places in self.field_nodes:
            def inherited(key, nodes=nodes):
                return next((node[key] for node in reversed(nodes) if key in node), None)

            kind = str(inherited("/FT"))
            appearance = inherited("/DA")
            appearance = self.form.get("/DA") if appearance is None else appearance
            quadding = inherited("/Q")
            value = inherited("/V")
            if kind == "/Sig" and value is not None:
                self.found.signatures += 1
                value = None
            facts = (kind, self.canon(value), self.canon(inherited("/DV")), int(inherited("/Ff") or 0),
                     self.canon(inherited("/Opt")), self.canon(inherited("/MaxLen")),
                     int((self.form.get("/Q") if quadding is None else quadding) or 0),
                     tuple(text(node.get("/TU")) for node in nodes), places,
                     tuple((event, self.actions(action)) for event, action in
                           sorted(table(inherited("/AA")).items())))
            style = None
            if kind in ("/Tx", "/Ch", "/Btn"):
                style = tuple(self.font_of(widget.get("/DA", appearance), widget, fonts) for widget in widgets)
            self.found.fields.append((names, facts, style))
            full_names[nodes[-1].objgen] = names
        for field in items(self.form.get("/CO")):
            self.found.calculation.append(full_names.get(field.objgen, (DEAD,)) if is_table(field) else (DEAD,))
        self.found.need_appearances = bool(self.form.get("/NeedAppearances", False))
        self.found.xfa = "/XFA" in self.form
        if int(self.form.get("/SigFlags", 0)):
            self.found.signatures += 1
        self.found.signatures += "/Perms" in self.root
        self.found.signatures += "/DSS" in self.root

    def font_of(self, appearance, widget, fonts):
        """The text style that /DA gives: the font that its name stands for in /DR, and the other operators."""
        if appearance is None:
            return None
        words = plain(appearance).split()
        if "Tf" not in words or words.index("Tf") < 2:
            return ("no font",) + tuple(words)
        at = words.index("Tf")
        font = fonts.get(words[at - 2])
        if font is None:
            return (DEAD, words[at - 2])
        encoding = font.get("/Encoding")
        return (str(font.get("/BaseFont")), self.canon(encoding)) + tuple(words[:at - 2] + words[at - 1:])

    # --- Attachments --------------------------------------------------------------------------------------------------

    def read_attachments(self):
        names = table(self.root.get("/Names"))
        for _, file_entry in self.tree(names.get("/EmbeddedFiles"), "/Names"):
            self.found.attachments.append(("document",) + self.file_facts(file_entry))
        for index, place, annotation in self.annotation_objects:
            if str(annotation.get("/Subtype")) == "/FileAttachment":
                self.found.attachments.append((("#annot", index, place),) + self.file_facts(annotation.get("/FS")))

    def file_facts(self, file_entry):
        file_entry = table(file_entry)
        embedded = table(file_entry.get("/EF"))
        stream = embedded.get("/UF", embedded.get("/F"))
        if not isinstance(stream, Stream):
            return (DEAD, "no file")
        return (text(file_entry.get("/UF", file_entry.get("/F"))), text(file_entry.get("/Desc")),
                digest(stream.read_bytes()), str(stream.get("/Subtype")), self.canon(stream.get("/Params")),
                self.canon(file_entry.get("/AFRelationship")))

    # --- Tags ---------------------------------------------------------------------------------------------------------

    def list_elements(self):
        """Every structure element in the order of the document, with its depth."""
        result, seen = [], set()
        stack = [(0, self.structure, kid) for kid in reversed(items(self.structure.get("/K")))]
        while stack:
            depth, parent, node = stack.pop()
            if not is_table(node) or str(node.get("/Type", "/StructElem")) != "/StructElem" or "/S" not in node:
                continue
            if node.objgen in seen or depth > 500:
                continue
            seen.add(node.objgen)
            if is_table(node.get("/P")) and node.P.objgen != parent.objgen:
                self.fault("structure element with another parent")
            self.places.setdefault(node.objgen, ("#element", len(result)))
            result.append((depth, node))
            stack += ((depth + 1, node, kid) for kid in reversed(items(node.get("/K"))))
        return result

    def role(self, name):
        """What the role map makes of a structure type."""
        roles, seen = table(self.structure.get("/RoleMap")), set()
        while name not in STANDARD_ROLES and name not in seen and "/" + name in roles:
            seen.add(name)
            name = str(roles["/" + name])[1:]
        return name

    def attributes(self, node, by_id):
        """The attributes of an element, those of its classes among them; header references as elements."""
        classes = table(self.structure.get("/ClassMap"))
        found = [item for item in items(node.get("/A")) if is_table(item)]
        for name in (item for item in items(node.get("/C")) if isinstance(item, Name)):
            if str(name) in classes:
                found += (item for item in items(classes[str(name)]) if is_table(item))
            else:
                self.fault("class that the class map lacks")
        result = []
        for attribute in found:
            result.append(tuple((key, tuple(by_id.get(plain(item), (DEAD, plain(item))) for item in items(value))
                                 if key == "/Headers" else self.canon(value))
                                for key, value in sorted(attribute.items())))
        return tuple(result)

    def read_tags(self):
        self.found.marked = bool(table(self.root.get("/MarkInfo")).get("/Marked", False))
        self.found.language = text(self.root.get("/Lang")) or ""
        if not self.structure:
            return
        by_id = {}
        for key, node in self.tree(self.structure.get("/IDTree"), "/Names"):
            by_id[plain(key)] = self.place(node) or (DEAD, "no element")
        parents = {int(key): value for key, value in self.tree(self.structure.get("/ParentTree"), "/Nums")}
        following = self.structure.get("/ParentTreeNextKey")
        if parents and following is not None and int(following) <= max(parents):
            self.fault("next key of the parent tree is taken")
        for index, (depth, node) in enumerate(self.element_nodes):
            identity = None
            if "/ID" in node:
                identity = "found by its ID"
                if by_id.get(plain(node["/ID"])) != ("#element", index):
                    self.fault("ID that leads to another element")
            page = node.get("/Pg")
            content = tuple(self.marked_content(kid, page, index, parents) for kid in items(node.get("/K"))
                            if not (is_table(kid) and self.place(kid) is not None and self.place(kid)[0] == "#element"))
            self.found.tags.append((depth, self.role(str(node.S)[1:]), identity, self.attributes(node, by_id),
                                    tuple(text(node.get(key)) for key in ("/Alt", "/ActualText", "/T", "/Lang", "/E")),
                                    self.canon(table(node.get("/NS")).get("/NS")),
                                    tuple(self.canon(item) for item in items(node.get("/Ref"))), content))

    def marked_content(self, kid, page, index, parents):
        """One content item of an element, checked against the parent tree."""
        if isinstance(kid, int):
            return self.content_item(kid, page, None, index, parents)
        if not is_table(kid):
            return "nothing"
        page = kid.get("/Pg", page)
        if str(kid.get("/Type")) == "/MCR":
            return self.content_item(int(kid.get("/MCID", -1)), page, kid.get("/Stm"), index, parents)
        target = kid.get("/Obj")
        if str(kid.get("/Type")) != "/OBJR" or not is_table(target):
            return "nothing"
        key = target.get("/StructParent")
        owner = parents.get(int(key)) if key is not None else None
        if is_table(owner) and self.place(owner) == ("#element", index):
            self.found.tag_links += 1
        else:
            self.fault("tagged object that the parent tree does not lead back from")
        return ("object", self.canon(target))

    def content_item(self, item, page, stream, index, parents):
        holder = stream if is_table(stream) else page
        if not is_table(holder):
            self.fault("marked content without a page")
            return ("content", DEAD, item)
        key = holder.get("/StructParents")
        owners = parents.get(int(key)) if key is not None else None
        owner = owners[item] if isinstance(owners, Array) and 0 <= item < len(owners) else None
        if is_table(owner) and self.place(owner) == ("#element", index):
            self.found.tag_links += 1
        else:
            self.fault("marked content that the parent tree does not lead back from")
        place = self.place(page) if is_table(page) else None
        if place is None:
            self.fault("marked content on no page")
        return ("content", place, "in a form" if is_table(stream) else "", item)

    # --- Layers -------------------------------------------------------------------------------------------------------

    def read_layers(self):
        default = table(table(self.root.get("/OCProperties")).get("/D"))

        def listed(key):
            return {layer.objgen for layer in items(default.get(key)) if is_table(layer)}

        on, off, locked = listed("/ON"), listed("/OFF"), listed("/Locked")
        base = str(default.get("/BaseState", "/ON")) != "/OFF"
        for layer in self.layer_objects:
            visible = (base or layer.objgen in on) and layer.objgen not in off
            self.found.layers.append((text(layer.get("/Name")), self.canon(layer.get("/Intent")),
                                      self.canon(layer.get("/Usage")), visible, layer.objgen in locked))
        self.found.layer_order = [self.canon(item) for item in items(default.get("/Order"))]
        self.found.layer_rules = [("one of", frozenset(self.canon(item) for item in items(group)))
                                  for group in items(default.get("/RBGroups"))]
        for rule in (table(rule) for rule in items(default.get("/AS"))):
            self.found.layer_rules += (("automatic", str(rule.get("/Event")), str(category), self.canon(layer))
                                       for category in items(rule.get("/Category"))
                                       for layer in items(rule.get("/OCGs")))

    # --- Labels, threads, metadata ------------------------------------------------------------------------------------

    def read_labels(self):
        ranges = sorted((int(key), table(value)) for key, value in self.tree(self.root.get("/PageLabels"), "/Nums"))
        if not ranges:
            return
        for index in range(len(self.page_objects)):
            start, rule = next(((key, value) for key, value in reversed(ranges) if key <= index), (0, {}))
            self.found.labels.append((text(rule.get("/P")) or "") +
                                     label_text(str(rule.get("/S")), int(rule.get("/St", 1)) + index - start))

    def read_threads(self):
        for thread in (table(thread) for thread in items(self.root.get("/Threads"))):
            beads, seen, bead = [], set(), thread.get("/F")
            while is_table(bead) and bead.objgen not in seen:
                seen.add(bead.objgen)
                page = bead.get("/P")
                place = (self.place(page) if is_table(page) else None) or (DEAD, "no page")
                if place[0] == "#page" and bead.objgen not in {
                        item.objgen for item in items(self.page_objects[place[1]].get("/B"))}:
                    self.fault("bead that its page does not name")
                beads.append((place, self.box(bead.get("/R"))))
                bead = bead.get("/N")
            self.found.threads.append((text(table(thread.get("/I")).get("/Title")), tuple(beads)))

    def read_metadata(self):
        information = table(self.pdf.trailer.get("/Info"))
        self.found.metadata = {key: text(information[key]) for key in
                               ("/Title", "/Author", "/Subject", "/Keywords", "/Creator", "/CreationDate")
                               if key in information}
        if isinstance(self.root.get("/Metadata"), Stream):
            with self.pdf.open_metadata() as xmp:
                self.found.metadata.update((key, str(xmp[key])) for key in ("dc:title", "dc:creator") if key in xmp)

    def read_copies(self):
        """Counts fonts and images that are there more than once. Those that are tagged or on a layer are their own."""
        seen = Counter()
        for thing in self.pdf.objects:
            if not is_table(thing):
                continue
            if isinstance(thing, Stream) and str(thing.get("/Subtype")) == "/Image":
                if not any(key in thing for key in ("/StructParent", "/OC", "/Metadata")):
                    seen[self.canon(thing)] += 1
            elif str(thing.get("/Type")) == "/FontDescriptor":
                seen[self.canon(thing)] += 1
        self.found.copies = sum(count - 1 for count in seen.values())


def read(path):
    """The inventory of the PDF at `path`."""
    with pikepdf.open(path, inherit_page_attributes=False) as pdf:
        return Reader(pdf).read()


if __name__ == "__main__":
    for argument in sys.argv[1:]:
        inventory = read(argument)
        print(argument)
        for field in dataclasses.fields(Inventory):
            value = getattr(inventory, field.name)
            print(f"  {field.name:17}", len(value) if isinstance(value, list) else value)
