"""PDFs that LibreOffice does not write: a small file a feature, many in twos whose names clash when merged."""
import io
import re

import pikepdf
from pikepdf import Array, Dictionary, Name, Stream, String

MAKERS = {}


def makes(function):
    """Registers a maker under its own name: "dests_tree_a" makes dests-tree-a.pdf."""
    MAKERS[function.__name__.replace("_", "-") + ".pdf"] = function
    return function


def helvetica(pdf, base="/Helvetica", encoding="/WinAnsiEncoding"):
    return pdf.make_indirect(Dictionary(Type=Name.Font, Subtype=Name.Type1, BaseFont=Name(base),
                                        Encoding=Name(encoding)))


def new(*texts, size=(300, 400)):
    """A document with a page a text."""
    pdf = pikepdf.new()
    font = helvetica(pdf)
    for text in texts:
        content = f"BT /F1 14 Tf 30 {size[1] - 40} Td ({text}) Tj ET\n30 40 m {size[0] - 30} 40 l S".encode()
        page = Dictionary(Type=Name.Page, MediaBox=[0, 0, *size], Contents=pdf.make_stream(content),
                          Resources=Dictionary(Font=Dictionary(F1=font)))
        pdf.pages.append(pikepdf.Page(pdf.make_indirect(page)))
    return pdf


def saved(pdf, **options):
    out = io.BytesIO()
    pdf.save(out, **{"static_id": True, "object_stream_mode": pikepdf.ObjectStreamMode.disable, **options})
    return out.getvalue()


def annotate(pdf, page, **facts):
    """Adds an annotation to the page of that number."""
    target = pdf.pages[page].obj
    annotation = pdf.make_indirect(Dictionary(Type=Name.Annot, P=target, **facts))
    if "/Annots" not in target:
        target.Annots = Array()
    target.Annots.append(annotation)
    return annotation


def link(pdf, page, **facts):
    height = 300 - 20 * len(pdf.pages[page].obj.get("/Annots", []))
    return annotate(pdf, page, Subtype=Name.Link, Rect=[30, height, 200, height + 15], Border=[0, 0, 1], **facts)


def spot(pdf, page, top=350):
    return Array([pdf.pages[page].obj, Name.XYZ, 0, top, None])


def name_tree(pdf, pairs, fan_out=3):
    """A name tree of two levels; the pairs are sorted by their names' bytes."""
    pairs = sorted(pairs, key=lambda pair: bytes(String(pair[0])))
    kids = []
    for at in range(0, len(pairs), fan_out):
        part = pairs[at:at + fan_out]
        kids.append(pdf.make_indirect(Dictionary(
            Limits=[String(part[0][0]), String(part[-1][0])],
            Names=Array([item for key, value in part for item in (String(key), value)]))))
    return pdf.make_indirect(Dictionary(Kids=Array(kids)))


def add_names(pdf, key, pairs):
    if "/Names" not in pdf.Root:
        pdf.Root.Names = pdf.make_indirect(Dictionary())
    pdf.Root.Names[key] = name_tree(pdf, pairs)


def add_outline(pdf, items):
    """Items are (title, facts, open, items below)."""
    def level(parent, below):
        made = [pdf.make_indirect(Dictionary(Title=String(title), Parent=parent, **facts))
                for title, facts, _, _ in below]
        visible = 0
        for place, (node, (_, _, is_open, inner)) in enumerate(zip(made, below)):
            if place:
                node.Prev, made[place - 1].Next = made[place - 1], node
            if inner:
                count = level(node, inner)
                node.Count = count if is_open else -count
                visible += count if is_open else 0
            visible += 1
        parent.First, parent.Last = made[0], made[-1]
        return visible

    root = pdf.make_indirect(Dictionary(Type=Name.Outlines))
    root.Count = level(root, items)
    pdf.Root.Outlines = root


# --- Destinations, links, bookmarks -----------------------------------------------------------------------------------

def dests_dictionary(letter, order):
    pdf = new(*(f"Chapter {number} of {letter}" for number in (1, 2, 3)))
    pdf.Root.Dests = pdf.make_indirect(Dictionary({
        f"/chapter{number + 1}": spot(pdf, page) for number, page in enumerate(order)}))
    pdf.Root.Dests["/summary"] = Dictionary(D=Array([pdf.pages[2].obj, Name.FitH, 200]))
    link(pdf, 0, Dest=Name("/chapter2"))
    link(pdf, 0, A=Dictionary(S=Name.GoTo, D=Name("/chapter3")))
    link(pdf, 1, A=Dictionary(S=Name.GoTo, D=Name("/summary")))
    link(pdf, 2, Dest=Name("/chapter1"))
    return saved(pdf)


@makes
def dests_dictionary_a():
    return dests_dictionary("A", (0, 1, 2))


@makes
def dests_dictionary_b():
    return dests_dictionary("B", (2, 0, 1))


def dests_tree(letter, order):
    pdf = new(*(f"Section {number} of {letter}" for number in (1, 2, 3, 4)))
    pairs = [(f"chapter{number + 1}", spot(pdf, page)) for number, page in enumerate(order)]
    pairs += [("summary", Dictionary(D=Array([pdf.pages[3].obj, Name.Fit]))), ("Übersicht", spot(pdf, 0)),
              ("(odd) \\ name", spot(pdf, 1)), (f"only in {letter}", pdf.make_indirect(spot(pdf, 2))),
              ("a", spot(pdf, 1)), ("a#2", spot(pdf, 2))]
    add_names(pdf, "/Dests", pairs)
    for page, (name, _) in enumerate(pairs):
        link(pdf, page % 4, Dest=String(name))
        link(pdf, page % 4, A=Dictionary(S=Name.GoTo, D=String(name)))
    add_outline(pdf, [(f"{letter} by name", {"Dest": String("chapter2")}, False, []),
                      (f"{letter} by action", {"A": Dictionary(S=Name.GoTo, D=String("chapter3"))}, False, [])])
    return saved(pdf)


@makes
def dests_tree_a():
    return dests_tree("A", (0, 1, 2, 3))


@makes
def dests_tree_b():
    return dests_tree("B", (3, 2, 1, 0))


@makes
def dests_both():
    """The same text as a name and as a string, for two places."""
    pdf = new("one", "two", "three")
    pdf.Root.Dests = Dictionary({"/intro": spot(pdf, 1)})
    add_names(pdf, "/Dests", [("intro", spot(pdf, 2))])
    link(pdf, 0, Dest=Name("/intro"))
    link(pdf, 0, Dest=String("intro"))
    return saved(pdf)


@makes
def dests_dead():
    """Links that lead nowhere already in the input, and one to a page that is not in the page tree."""
    pdf = new("one", "two")
    lost = pdf.make_indirect(Dictionary(Type=Name.Page, MediaBox=[0, 0, 300, 400]))
    add_names(pdf, "/Dests", [("lost", Array([lost, Name.Fit])), ("null", Array([None, Name.Fit])),
                              ("there", spot(pdf, 1))])
    for name in ("lost", "null", "there", "never", "chapter1"):
        link(pdf, 0, Dest=String(name))
    link(pdf, 1, Dest=Array([lost, Name.Fit]))
    return saved(pdf)


@makes
def remote():
    """Actions that leave the file: their names belong to another file and stay."""
    pdf = new("one", "two")
    add_names(pdf, "/Dests", [("chapter1", spot(pdf, 1)), ("chapter2", spot(pdf, 0))])
    other = String("other.pdf")
    link(pdf, 0, A=Dictionary(S=Name.GoToR, F=other, D=String("chapter1")))
    link(pdf, 0, A=Dictionary(S=Name.GoToR, F=other, D=Name("/chapter1"), NewWindow=True))
    link(pdf, 0, A=Dictionary(S=Name.GoToR, F=other, D=Array([1, Name.Fit])))
    link(pdf, 0, A=Dictionary(S=Name.GoToE, F=other, D=String("chapter2"),
                              T=Dictionary(R=Name.C, N=String("chapter1"))))
    link(pdf, 0, A=Dictionary(S=Name.URI, URI=String("https://example.org/?q=(chapter1)")))
    link(pdf, 1, A=Dictionary(S=Name.Launch, F=String("chapter1")))
    link(pdf, 1, A=Dictionary(S=Name.Named, N=Name.NextPage))
    add_outline(pdf, [("elsewhere", {"A": Dictionary(S=Name.GoToR, F=other, D=String("chapter1"))}, False, [])])
    return saved(pdf)


@makes
def action_chains():
    """Chains of actions, shared ones among them, some of which lead within the file and some out of it."""
    pdf = new("one", "two", "three")
    add_names(pdf, "/Dests", [("chapter1", spot(pdf, 2))])
    last = pdf.make_indirect(Dictionary(S=Name.GoTo, D=String("chapter1")))
    chain = last
    for number in range(50):
        chain = pdf.make_indirect(Dictionary(S=Name.URI, URI=String(f"https://example.org/{number}"), Next=chain))
    link(pdf, 0, A=chain)
    link(pdf, 0, A=Dictionary(S=Name.GoTo, D=spot(pdf, 1), Next=Array([last, Dictionary(
        S=Name.GoToR, F=String("other.pdf"), D=String("chapter1"))])))
    link(pdf, 1, A=Dictionary(S=Name.JavaScript, JS=String("app.alert('chapter1')"), Next=last))
    pdf.pages[1].obj.AA = Dictionary(O=Dictionary(S=Name.GoTo, D=String("chapter1")))
    return saved(pdf)


@makes
def outline_deep():
    """Bookmarks that are open and closed, coloured, bold, on five levels, without a target and with one elsewhere."""
    pdf = new("one", "two", "three")
    below = []
    for level in range(5):
        below = [(f"level {level}, first", {"Dest": spot(pdf, level % 3)}, level % 2 == 0, below),
                 (f"level {level}, second", {"A": Dictionary(S=Name.GoTo, D=spot(pdf, 2, 100 + level))}, False, [])]
    add_outline(pdf, below + [
        ("no target", {}, True, [("red", {"C": Array([1, 0, 0]), "F": 2, "Dest": spot(pdf, 1)}, False, [])]),
        ("Überschrift Ω 中", {"Dest": Array([pdf.pages[0].obj, Name.FitR, 1, 2, 3, 4]), "F": 1}, False, []),
        ("web", {"A": Dictionary(S=Name.URI, URI=String("https://example.org"))}, False, [])])
    return saved(pdf)


@makes
def outline_empty():
    """Has an outline without any item, so a bookmark for the file is due."""
    pdf = new("one", "two")
    pdf.Root.Outlines = pdf.make_indirect(Dictionary(Type=Name.Outlines, Count=0))
    return saved(pdf)


# --- Pages ------------------------------------------------------------------------------------------------------------

@makes
def labels_all():
    pdf = new(*(f"page {number}" for number in range(60)))
    rules = ((0, Dictionary(S=Name.r)), (4, Dictionary(S=Name.D, St=7)), (8, Dictionary(S=Name.A, P=String("App-"))),
             (38, Dictionary(S=Name.a, St=25)), (42, Dictionary(S=Name.R, St=1988)),
             (46, Dictionary(P=String("cover"))), (48, Dictionary()), (50, Dictionary(S=Name.D, P=String("Größe "))))
    pdf.Root.PageLabels = Dictionary(Nums=Array([item for rule in rules for item in rule]))
    return saved(pdf)


@makes
def labels_tree():
    pdf = new("one", "two", "three", "four")
    kids = [pdf.make_indirect(Dictionary(Limits=[at, at], Nums=Array([at, Dictionary(S=Name.R, St=at + 1)])))
            for at in (0, 2)]
    pdf.Root.PageLabels = pdf.make_indirect(Dictionary(Kids=Array(kids)))
    return saved(pdf)


@makes
def page_boxes():
    pdf = new("one", "two", "three", size=(400, 300))
    first, second, third = (page.obj for page in pdf.pages)
    first.CropBox, first.BleedBox = Array([10, 10, 390, 290]), Array([15, 15, 385, 285])
    first.TrimBox, first.ArtBox = Array([20, 20, 380, 280]), Array([30, 30, 370, 270])
    second.MediaBox, second.UserUnit = Array([400, 300, 0, 0]), 2
    third.MediaBox, third.Trans, third.Dur = Array([-100.5, -50.25, 300, 250]), Dictionary(S=Name.Dissolve, D=2), 5
    third.Contents = Array([pdf.make_stream(b"q 1 0 0 RG"), pdf.make_stream(b"0 0 m 100 100 l S Q")])
    return saved(pdf)


@makes
def page_twice():
    """One page object that is in the page tree twice."""
    pdf = new("one", "again", "three")
    link(pdf, 0, Dest=spot(pdf, 2))
    kids = [page.obj for page in pdf.pages]
    pdf.Root.Pages.Kids, pdf.Root.Pages.Count = Array([kids[0], kids[1], kids[1], kids[2]]), 4
    return saved(pdf)


@makes
def many_pages():
    """A page tree in which every node has one page and one node below."""
    pdf = new(*(f"page {number}" for number in range(40)))
    pages = [page.obj for page in pdf.pages]
    node = None
    for count, page in enumerate(reversed(pages)):
        kids = [page] if node is None else [page, node]
        fresh = pdf.make_indirect(Dictionary(Type=Name.Pages, Kids=Array(kids), Count=count + 1))
        for kid in kids:
            kid.Parent = fresh
        node = fresh
    pdf.Root.Pages = node
    return saved(pdf)


@makes
def annotations():
    """Notes with pop-ups, replies and an appearance, a stamp, a highlight."""
    pdf = new("one", "two")
    note = annotate(pdf, 0, Subtype=Name.Text, Rect=[10, 10, 30, 30], Contents=String("look"), NM=String("n1"))
    note.Popup = annotate(pdf, 0, Subtype=Name.Popup, Rect=[40, 10, 140, 60], Parent=note)
    annotate(pdf, 0, Subtype=Name.Text, Rect=[10, 40, 30, 60], Contents=String("reply"), IRT=note, RT=Name.R)
    annotate(pdf, 1, Subtype=Name.Highlight, Rect=[30, 350, 100, 370], C=[1, 1, 0],
             QuadPoints=[30, 370, 100, 370, 30, 350, 100, 350])
    look = pdf.make_stream(b"0 1 0 rg 0 0 50 20 re f", Type=Name.XObject, Subtype=Name.Form, BBox=[0, 0, 50, 20])
    annotate(pdf, 1, Subtype=Name.Stamp, Rect=[200, 200, 250, 220], AP=Dictionary(N=look))
    return saved(pdf)


# --- Attachments ------------------------------------------------------------------------------------------------------

def file_entry(pdf, name, content, description="", **facts):
    stream = pdf.make_stream(content, Type=Name.EmbeddedFile, Subtype=Name("/text/plain"), Params=Dictionary(
        Size=len(content), ModDate=String("D:20240102030405Z"), CreationDate=String("D:20230102030405Z")))
    return pdf.make_indirect(Dictionary(Type=Name.Filespec, F=String(name.encode("ascii", "replace").decode()),
                                        UF=String(name), Desc=String(description),
                                        EF=Dictionary(F=stream, UF=stream), **facts))


def attachments(letter):
    pdf = new(f"attachments of {letter}")
    files = [("notes.txt", f"notes of {letter}".encode()), ("same.txt", b"the same in both"), ("empty.bin", b""),
             (f"Größe {letter} 中.txt", bytes(range(256)) * 20)]
    data = file_entry(pdf, "data.xml", f"<data>{letter}</data>".encode(), AFRelationship=Name.Data)
    pdf.Root.AF = Array([data])
    add_names(pdf, "/EmbeddedFiles", [(name, file_entry(pdf, name, content, f"from {letter}"))
                                      for name, content in files] + [("data.xml", data)])
    annotate(pdf, 0, Subtype=Name.FileAttachment, Rect=[100, 100, 120, 120],
             FS=file_entry(pdf, "notes.txt", f"pinned in {letter}".encode()))
    return saved(pdf)


@makes
def attachments_a():
    return attachments("A")


@makes
def attachments_b():
    return attachments("B")


# --- Layers -----------------------------------------------------------------------------------------------------------

def layered(letter, off_by_default):
    pdf = new(f"layers of {letter}", "two")
    layers = [pdf.make_indirect(Dictionary(Type=Name.OCG, Name=String(name), Usage=Dictionary(
        View=Dictionary(ViewState=Name.ON), Print=Dictionary(PrintState=Name.OFF))))
        for name in ("Background", "Notes", "English", "Deutsch", f"Only {letter}")]
    membership = pdf.make_indirect(Dictionary(Type=Name.OCMD, OCGs=Array(layers[:2]), P=Name.AllOn))
    default = Dictionary(Name=String("default"), Order=Array([layers[0], Array([layers[1]]), Array([
        String("Languages"), layers[2], layers[3]]), layers[4]]), RBGroups=Array([Array(layers[2:4])]),
        Locked=Array([layers[0]]), AS=Array([
            Dictionary(Event=event, Category=Array([event]), OCGs=Array(layers[1:3]))
            for event in (Name.View, Name.Print)]))
    if off_by_default:
        default.BaseState, default.ON, default.Intent = Name.OFF, Array([layers[0], layers[3]]), Name.View
    else:
        default.OFF = Array([layers[1], layers[3]])
    pdf.Root.OCProperties = pdf.make_indirect(Dictionary(OCGs=Array(layers), D=default))
    for number, page in enumerate(page.obj for page in pdf.pages):
        page.Resources.Properties = Dictionary({f"/MC{place}": layer for place, layer in enumerate(layers)})
        page.Resources.Properties["/MD"] = membership
        shown = b"".join(b"/OC /MC%d BDC 0.%d g %d 100 30 %d re f EMC\n" % (
            place, place * 2, 30 + 40 * place, 50 + number) for place in range(5))
        shown += b"/OC /MD BDC 1 0 0 rg 100 200 50 50 re f EMC"
        page.Contents = Array([page.Contents, pdf.make_stream(shown)])
    form = pdf.make_stream(b"0 0 1 rg 0 0 40 40 re f", Type=Name.XObject, Subtype=Name.Form, BBox=[0, 0, 40, 40],
                           OC=layers[1])
    pdf.pages[1].obj.Resources.XObject = Dictionary(X1=form)
    pdf.pages[1].obj.Contents.append(pdf.make_stream(b"/X1 Do"))
    annotate(pdf, 0, Subtype=Name.Square, Rect=[10, 10, 50, 50], OC=layers[4], C=[1, 0, 0])
    return saved(pdf, min_version="1.6")


@makes
def layers_on():
    return layered("A", False)


@makes
def layers_off():
    return layered("B", True)


@makes
def layers_without_order():
    pdf = new("one layer")
    layer = pdf.make_indirect(Dictionary(Type=Name.OCG, Name=String("Background"), Intent=Name.Design))
    pdf.Root.OCProperties = Dictionary(OCGs=Array([layer]), D=Dictionary(OFF=Array([layer])))
    pdf.pages[0].obj.Resources.Properties = Dictionary(MC0=layer)
    pdf.pages[0].obj.Contents = pdf.make_stream(b"/OC /MC0 BDC 10 10 100 100 re f EMC")
    return saved(pdf)


# --- Tags -------------------------------------------------------------------------------------------------------------

def tagged(letter, roles, classes, prefix="", with_ids=True):
    """A heading, two paragraphs, a table with header references, a figure, a link; on two pages."""
    pdf = new("tags", "tags")
    first, second = (page.obj for page in pdf.pages)
    root = pdf.make_indirect(Dictionary(Type=Name.StructTreeRoot))
    if roles:
        root.RoleMap = Dictionary({"/" + own: Name("/" + standard) for own, standard in roles.items()})
    if classes:
        root.ClassMap = Dictionary({"/" + name: value for name, value in classes.items()})
    parents = {0: {}, 1: {}}

    def element(parent, role, page=None, marks=(), **facts):
        node = pdf.make_indirect(Dictionary(Type=Name.StructElem, S=Name("/" + role), P=parent, **facts))
        if page is not None:
            node.Pg = pdf.pages[page].obj
        if marks:
            node.K = Array(list(marks)) if len(marks) > 1 else marks[0]
            for mark in marks:
                parents[page][mark] = node
        if parent.objgen != root.objgen:
            if "/K" not in parent:
                parent.K = Array()
            parent.K.append(node)
        return node

    document = element(root, "Document", Lang=String("en-GB" if letter == "A" else "de-DE"))
    root.K = Array([document])
    element(document, "Heading", 0, (0,), T=String(f"title {letter}"), C=Name("/Wide"))
    element(document, "Body", 0, (1, 2), ActualText=String("text"), C=Array([Name("/Wide"), 0, Name("/Tall")]))
    element(document, "Unmapped", 1, (0,))
    grid = element(document, "Table", Summary=String("a table"))
    row = element(grid, "TR")
    identity = {"ID": String("head1")} if with_ids else {}
    element(row, "TH", 0, (3,), A=Dictionary(O=Name.Table, Scope=Name.Column), **identity)
    facts = {"A": Dictionary(O=Name.Table, Headers=Array([String("head1")]))} if with_ids else {}
    cell = element(row, "TD", 0, (4,), **facts)
    figure = element(document, "Figure", Alt=String(f"figure of {letter}"), Pg=second)
    figure.K = Array([Dictionary(Type=Name.MCR, Pg=second, MCID=1)])
    parents[1][1] = figure
    figure.Ref = Array([cell])
    jump = link(pdf, 0, Dest=spot(pdf, 1))
    jump.StructParent = 2
    holder = element(document, "Link", 0, (5,))
    holder.K = Array([5, Dictionary(Type=Name.OBJR, Obj=jump, Pg=first)])
    for number, page in enumerate((first, second)):
        page.StructParents, page.Tabs = number, Name.S
        marks = b"".join(b"/P <</MCID %d>> BDC BT /F1 10 Tf 30 %d Td (%s %d) Tj ET EMC\n" % (
            mark, 300 - 20 * mark, letter.encode(), mark) for mark in sorted(parents[number]))
        page.Contents = pdf.make_stream(marks)
    rows = [Array([parents[number].get(mark) for mark in range(max(parents[number]) + 1)]) for number in (0, 1)]
    root.ParentTree = pdf.make_indirect(Dictionary(Nums=Array([
        0, pdf.make_indirect(rows[0]), 1, pdf.make_indirect(rows[1]), 2, holder])))
    root.ParentTreeNextKey = 3
    if with_ids:
        root.IDTree = Dictionary(Names=Array([String("head1"), row.K[0]]))
    pdf.Root.StructTreeRoot = root
    pdf.Root.MarkInfo = Dictionary(Marked=True)
    pdf.Root.Lang = String("en-GB" if letter == "A" else "de-DE")
    return saved(pdf, min_version="1.7")


@makes
def tags_a():
    return tagged("A", {"Heading": "H1", "Body": "P"},
                  {"Wide": Dictionary(O=Name.Layout, SpaceBefore=10), "Tall": Dictionary(O=Name.Layout, SpaceAfter=5)})


@makes
def tags_b():
    """The names of the first, with other meanings; one that the first does not map."""
    return tagged("B", {"Heading": "H2", "Body": "Step", "Step": "LBody", "Unmapped": "Note"},
                  {"Wide": Dictionary(O=Name.Layout, SpaceBefore=20),
                   "Tall": Array([Dictionary(O=Name.Layout, SpaceAfter=5), Dictionary(O=Name.Layout, StartIndent=3)])})


@makes
def tags_without_maps():
    return tagged("C", {"Heading": "H1", "Body": "P"}, {"Wide": Dictionary(O=Name.Layout, SpaceBefore=10),
                                                        "Tall": Dictionary(O=Name.List)}, with_ids=False)


@makes
def tags_sparse():
    """Keys of the parent tree with gaps and in several nodes, marked content in a form, elements that are direct."""
    pdf = new("one", "two", "three")
    pages = [page.obj for page in pdf.pages]
    root = pdf.make_indirect(Dictionary(Type=Name.StructTreeRoot))
    elements = [pdf.make_indirect(Dictionary(Type=Name.StructElem, S=Name.P, P=root, Pg=page, K=2)) for page in pages]
    form = pdf.make_stream(b"/Span <</MCID 0>> BDC 0 0 40 40 re f EMC", Type=Name.XObject, Subtype=Name.Form,
                           BBox=[0, 0, 40, 40], StructParents=90)
    pages[1].Resources = Dictionary(XObject=Dictionary(X1=form))
    span = pdf.make_indirect(Dictionary(Type=Name.StructElem, S=Name.Span, P=elements[1], Pg=pages[1],
                                        K=Dictionary(Type=Name.MCR, Pg=pages[1], Stm=form, MCID=0)))
    elements[1].K = Array([2, span])
    for page, key in zip(pages, (7, 40, 41)):
        page.StructParents = key
        page.Contents = pdf.make_stream(b"/P <</MCID 2>> BDC 100 100 20 20 re f EMC " +
                                        (b"/X1 Do" if key == 40 else b""))
    kids = [pdf.make_indirect(Dictionary(Limits=[low, high], Nums=Array(nums))) for low, high, nums in (
        (7, 7, [7, Array([None, None, elements[0]])]),
        (40, 90, [40, Array([None, None, elements[1]]), 41, Array([None, None, elements[2]]), 90, Array([span])]))]
    root.K, root.ParentTree, root.ParentTreeNextKey = Array(elements), Dictionary(Kids=Array(kids)), 100
    pdf.Root.StructTreeRoot, pdf.Root.MarkInfo = root, Dictionary(Marked=True)
    return saved(pdf)


# --- Forms ------------------------------------------------------------------------------------------------------------

def look(pdf, label):
    return pdf.make_stream(b"0.8 g 0 0 100 20 re f BT /F1 8 Tf 0 g 5 5 Td (%s) Tj ET" % label.encode(),
                           Type=Name.XObject, Subtype=Name.Form, BBox=[0, 0, 100, 20],
                           Resources=Dictionary(Font=Dictionary(F1=helvetica(pdf))))


def widget(pdf, page, top, label="", **facts):
    return annotate(pdf, page, Subtype=Name.Widget, Rect=[30, top, 130, top + 20], F=4,
                    AP=Dictionary(N=look(pdf, label)), **facts)


def form(letter, base_font, encoding, default):
    """Names, fonts and the order of calculation that clash; radio buttons and one field on two pages."""
    pdf = new(f"form {letter}", "two")
    own = helvetica(pdf, base_font, encoding)
    total = widget(pdf, 0, 300, f"sum {letter}", FT=Name.Tx, T=String("total"), V=String(f"1{letter}"),
                   AA=Dictionary(C=Dictionary(S=Name.JavaScript, JS=String("AFSimple_Calculate('SUM', ['a'])"))))
    plain = widget(pdf, 0, 270, "plain", FT=Name.Tx, T=String("plain"), V=String("Größe"), DA=String("/F9 10 Tf 1 g"))
    person = pdf.make_indirect(Dictionary(T=String("person"), Kids=Array()))
    for top, name in ((240, "name"), (210, "town")):
        person.Kids.append(widget(pdf, 0, top, name, FT=Name.Tx, T=String(name), Parent=person,
                                  V=String(f"{name} {letter}"), MaxLen=40))
    shared = pdf.make_indirect(Dictionary(FT=Name.Tx, T=String("shared"), V=String(letter), Kids=Array(),
                                          DA=String("/Helv 8 Tf 0 g")))
    for page in (0, 1):
        shared.Kids.append(widget(pdf, page, 180, "shared", Parent=shared))
    radio = pdf.make_indirect(Dictionary(FT=Name.Btn, T=String("choice"), Ff=49152, V=Name("/1"), Kids=Array()))
    for state in range(3):
        button = widget(pdf, 1, 300 - 30 * state, Parent=radio, AS=Name("/1") if state == 1 else Name.Off)
        button.AP = Dictionary(N=Dictionary({f"/{state}": look(pdf, str(state)), "/Off": look(pdf, "")}))
        radio.Kids.append(button)
    menu = widget(pdf, 1, 150, "menu", FT=Name.Ch, T=String("menu"), Ff=131072, Opt=Array(
        [Array([String("a"), String("Alpha")]), String("Beta")]), V=String("a"), DV=String("Beta"), Q=2)
    reset = widget(pdf, 1, 120, "reset", FT=Name.Btn, T=String("reset"), Ff=65536, A=Dictionary(
        S=Name.ResetForm, Fields=Array([String("total"), String("person.name"), plain])))
    pdf.Root.AcroForm = pdf.make_indirect(Dictionary(
        Fields=Array([total, plain, person, shared, radio, menu, reset]), CO=Array([person.Kids[1], total]),
        DA=String(default), Q=1 if letter == "B" else 0,
        DR=Dictionary(Font=Dictionary(Helv=own, F9=helvetica(pdf, "/Courier")))))
    return saved(pdf)


@makes
def form_a():
    return form("A", "/Helvetica", "/WinAnsiEncoding", "/Helv 12 Tf 0 g")


@makes
def form_b():
    return form("B", "/Times-Bold", "/MacRomanEncoding", "/Helv 9 Tf 0 0 1 rg")


@makes
def form_taken_names():
    """Names as a merge makes them, here from the start."""
    pdf = new("form")
    made = [widget(pdf, 0, 300 - 30 * place, name, FT=Name.Tx, T=String(name), V=String(name))
            for place, name in enumerate(("total", "total+1", "total+2", "Straße"))]
    pdf.Root.AcroForm = Dictionary(Fields=Array(made), DA=String("/Helv 0 Tf 0 g"), NeedAppearances=True,
                                   DR=Dictionary(Font=Dictionary(Helv=helvetica(pdf))))
    return saved(pdf)


@makes
def form_xfa():
    pdf = new("form")
    made = widget(pdf, 0, 300, "name", FT=Name.Tx, T=String("name"), V=String("Ann"))
    pdf.Root.AcroForm = Dictionary(Fields=Array([made]), DA=String("/Helv 0 Tf 0 g"), XFA=pdf.make_stream(
        b'<xdp:xdp xmlns:xdp="http://ns.adobe.com/xdp/"/>'), DR=Dictionary(Font=Dictionary(Helv=helvetica(pdf))))
    return saved(pdf)


@makes
def signed():
    """A signature over the file's bytes, with what else says that the file is signed."""
    pdf = new("signed", "two")
    signature = pdf.make_indirect(Dictionary(
        Type=Name.Sig, Filter=Name("/Adobe.PPKLite"), SubFilter=Name("/adbe.pkcs7.detached"),
        Contents=String(b"\x30\x80" + bytes(30)), ByteRange=[0, 10, 20, 30], M=String("D:20240101000000Z"),
        Reference=Array([Dictionary(Type=Name.SigRef, TransformMethod=Name.DocMDP,
                                    TransformParams=Dictionary(Type=Name.TransformParams, P=2, V=Name("/1.2")))])))
    field = widget(pdf, 0, 300, "signed", FT=Name.Sig, T=String("Signature1"), V=signature)
    empty = widget(pdf, 1, 300, "", FT=Name.Sig, T=String("Signature2"))
    name = widget(pdf, 0, 200, "Ann", FT=Name.Tx, T=String("name"), V=String("Ann"))
    pdf.Root.AcroForm = Dictionary(Fields=Array([field, empty, name]), SigFlags=3, DA=String("/Helv 0 Tf 0 g"),
                                   DR=Dictionary(Font=Dictionary(Helv=helvetica(pdf))))
    pdf.Root.Perms = Dictionary(DocMDP=signature)
    pdf.Root.DSS = Dictionary(Certs=Array([pdf.make_stream(b"not a certificate")]))
    return saved(pdf)


# --- Threads, metadata ------------------------------------------------------------------------------------------------

def threaded(letter):
    pdf = new("one", "two", "three")
    threads = []
    for number, route in enumerate(((0, 1, 2), (2, 0))):
        thread = pdf.make_indirect(Dictionary(Type=Name.Thread, I=Dictionary(Title=String(f"{letter}{number}"))))
        beads = [pdf.make_indirect(Dictionary(Type=Name.Bead, P=pdf.pages[page].obj, R=[10, 10 + page, 100, 200]))
                 for page in route]
        for place, (bead, page) in enumerate(zip(beads, route)):
            bead.N, bead.V = beads[(place + 1) % len(beads)], beads[place - 1]
            bead.T = thread
            holder = pdf.pages[page].obj
            if "/B" not in holder:
                holder.B = Array()
            holder.B.append(bead)
        thread.F = beads[0]
        threads.append(thread)
    pdf.Root.Threads = Array(threads)
    return saved(pdf)


@makes
def threads_a():
    return threaded("A")


@makes
def threads_b():
    return threaded("B")


@makes
def metadata_full():
    pdf = new("metadata")
    with pdf.open_metadata() as xmp:
        xmp["dc:title"], xmp["dc:creator"] = "Ünïcode title", ["Ann", "Ben"]
    for key, value in (("/Title", "Ünïcode title"), ("/Author", "Ann; Ben"), ("/Subject", "tests"),
                       ("/Keywords", "one, two"), ("/CreationDate", "D:20200102030405+02'00'")):
        pdf.docinfo[key] = value
    pdf.Root.Lang = String("el-GR")
    return saved(pdf)


# --- Forms of the file itself -----------------------------------------------------------------------------------------

def sample():
    pdf = new("one", "two")
    add_names(pdf, "/Dests", [("chapter1", spot(pdf, 1))])
    link(pdf, 0, Dest=String("chapter1"))
    add_outline(pdf, [("first", {"Dest": spot(pdf, 0)}, False, []), ("second", {"Dest": spot(pdf, 1)}, False, [])])
    add_names(pdf, "/EmbeddedFiles", [("notes.txt", file_entry(pdf, "notes.txt", b"sample"))])
    return pdf


@makes
def object_streams():
    return saved(sample(), object_stream_mode=pikepdf.ObjectStreamMode.generate)


@makes
def linearized():
    return saved(sample(), linearize=True)


def encrypted(**how):
    return saved(sample(), encryption=pikepdf.Encryption(user="", owner="owner", **how))


@makes
def encrypted_rc4_40():
    return encrypted(R=2, metadata=False, aes=False)


@makes
def encrypted_rc4_128():
    return encrypted(R=3, metadata=False, aes=False)


@makes
def encrypted_aes_128():
    return encrypted(R=4, metadata=True, aes=True)


@makes
def encrypted_aes_256():
    return encrypted(R=6, metadata=True, aes=True)


@makes
def startxref_wrong():
    return re.sub(rb"startxref\n\d+", b"startxref\n77", saved(sample()))


@makes
def table_torn():
    """The cross-reference table is gone, and the end of the file with it."""
    data = saved(sample())
    return data[:data.rindex(b"\nxref\n") + 1] + data[data.rindex(b"trailer"):data.rindex(b"startxref")]


@makes
def junk_before():
    return b"From: somebody\r\n\r\n" * 5 + saved(sample())


@makes
def junk_after():
    return saved(sample()) + b"\r\n-- \r\nsent by mail\r\n" * 5


def section(data, objects, extra=b""):
    """Appends an incremental update with a classic table."""
    previous = int(re.findall(rb"startxref\s+(\d+)", data)[-1])
    root = re.findall(rb"/Root (\d+ \d+ R)", data)[-1]
    size = max(int(re.findall(rb"/Size (\d+)", data)[-1]), max(objects) + 1)
    data = data.rstrip(b"\n") + b"\n"
    table = b"xref\n"
    for number, body in sorted(objects.items()):
        if body is None:
            table += b"%d 1\n%010d %05d f \n" % (number, 0, 1)
            continue
        table += b"%d 1\n%010d %05d n \n" % (number, len(data), 0)
        data += b"%d 0 obj\n%s\nendobj\n" % (number, body)
    at = len(data)
    return data + table + b"trailer\n<</Size %d /Root %s /Prev %d%s>>\nstartxref\n%d\n%%%%EOF\n" % (
        size, root, previous, extra, at)


def raw(objects, trailer, stream_part=None):
    """A PDF from objects as bytes."""
    data, places = b"%PDF-1.5\n%\xe2\xe3\xcf\xd3\n", {}
    for number, body in sorted(objects.items()):
        places[number] = len(data)
        data += b"%d 0 obj\n%s\nendobj\n" % (number, body)
    extra = b""
    if stream_part:
        data, extra = stream_part(data, places)
    at = len(data)
    size = max(places) + 1
    rows = b"0000000000 65535 f \n" + b"".join(
        b"%010d 00000 n \n" % places[number] if number in places else b"0000000000 00000 f \n"
        for number in range(1, size))
    return data + b"xref\n0 %d\n%strailer\n<</Size %d %s%s>>\nstartxref\n%d\n%%%%EOF\n" % (
        size, rows, size, trailer, extra, at)


@makes
def incremental():
    """A page's content replaced and a page's note added by two updates."""
    data = raw({1: b"<</Type/Catalog/Pages 2 0 R>>", 2: b"<</Type/Pages/Kids[3 0 R 4 0 R]/Count 2>>",
                3: b"<</Type/Page/Parent 2 0 R/MediaBox[0 0 300 400]/Contents 5 0 R/Resources<<>>>>",
                4: b"<</Type/Page/Parent 2 0 R/MediaBox[0 0 300 400]/Resources<<>>/Annots[6 0 R]>>",
                5: b"<</Length 18>>\nstream\n10 10 100 100 re f\nendstream",
                6: b"<</Type/Annot/Subtype/Link/Rect[0 0 9 9]/Dest[3 0 R/Fit]>>"}, b"/Root 1 0 R")
    data = section(data, {5: b"<</Length 20>>\nstream\n50 50 200 200 re f  \nendstream"})
    return section(data, {4: b"<</Type/Page/Parent 2 0 R/MediaBox[0 0 200 400]/Resources<<>>/Annots[7 0 R]>>",
                          6: None, 7: b"<</Type/Annot/Subtype/Link/Rect[5 5 9 9]/Dest[4 0 R/Fit]/P 4 0 R>>"})


@makes
def inherited():
    """Attributes that pages have from several levels of the page tree."""
    def page(parent, number, facts=b""):
        return b"<</Type/Page/Parent %d 0 R/Contents %d 0 R%s>>" % (parent, number + 10, facts)

    objects = {
        1: b"<</Type/Catalog/Pages 2 0 R>>",
        2: b"<</Type/Pages/Kids[5 0 R 3 0 R]/Count 6/MediaBox[0 0 300 400]/Resources<</Font<</F1 30 0 R>>>>>>",
        3: b"<</Type/Pages/Parent 2 0 R/Kids[6 0 R 4 0 R 9 0 R 10 0 R]/Count 5/Rotate 270/CropBox[5 5 300 395]>>",
        4: b"<</Type/Pages/Parent 3 0 R/Kids[7 0 R 8 0 R]/Count 2/MediaBox 31 0 R/CropBox[10 10 240 390]/Rotate 90>>",
        5: page(2, 5), 6: page(3, 6), 7: page(4, 7), 8: page(4, 8, b"/Rotate 0"),
        9: page(3, 9, b"/MediaBox[0 0 500 400]/Resources<</Font<</F1 32 0 R>>>>"), 10: page(3, 10, b"/Rotate -90"),
        30: b"<</Type/Font/Subtype/Type1/BaseFont/Helvetica>>", 31: b"[0 0 250 400]",
        32: b"<</Type/Font/Subtype/Type1/BaseFont/Courier-Bold>>"}
    for number in range(5, 11):
        content = b"BT /F1 14 Tf 30 360 Td (page %02d) Tj ET" % number
        objects[number + 10] = b"<</Length %d>>\nstream\n%s\nendstream" % (len(content), content)
    return raw(objects, b"/Root 1 0 R")


@makes
def hybrid():
    """A classic table that calls two objects free and names a cross-reference stream that has them: the bookmarks."""
    def stream_part(data, places):
        outlines, item = b"<</First 6 0 R/Last 6 0 R/Count 1>>", b"<</Title(hidden)/Parent 4 0 R/Dest[3 0 R/Fit]>>"
        head = b"4 0 6 %d " % (len(outlines) + 1)
        body = head + outlines + b" " + item
        places[7] = len(data)
        data += b"7 0 obj\n<</Type/ObjStm/N 2/First %d/Length %d>>\nstream\n%s\nendstream\nendobj\n" % (
            len(head), len(body), body)
        rows = bytes([2, 0, 7, 0, 2, 0, 7, 1])
        places[8] = len(data)
        data += b"8 0 obj\n<</Type/XRef/Size 9/W[1 2 1]/Index[4 1 6 1]/Length 8>>\nstream\n"
        data += rows + b"\nendstream\nendobj\n"
        return data, b"/XRefStm %d" % places[8]

    return raw({1: b"<</Type/Catalog/Pages 2 0 R/Outlines 4 0 R>>", 2: b"<</Type/Pages/Kids[3 0 R]/Count 1>>",
                3: b"<</Type/Page/Parent 2 0 R/MediaBox[0 0 300 400]/Contents 5 0 R/Resources<<>>>>",
                5: b"<</Length 18>>\nstream\n10 10 100 100 re f\nendstream"}, b"/Root 1 0 R", stream_part)


@makes
def odd_syntax():
    """Legal writing that a plain reader trips over: comments, escaped names, nested strings, odd line ends."""
    return raw({1: b"<</Type/Cat#61log%comment 9 0 R\r/Pages 2 0 R/Dests<</a#20b[3 0 R/Fit]>>/Outlines 6 0 R>>",
                2: b"<</Type/Pages/Kids[3 0 R]/Count 1/MediaBox[0 0\r\n300. +400.0]>>",
                3: b"<</Type/Page/Parent 2 0 R/Contents[4 0 R]/Resources<</XObject<</X#28 null>>>>/Annots[5 0 R]>>",
                4: b"<</Length 8 0 R>>\nstream\r\n10 10 100 100 re f\nendstream", 8: b"18",
                5: b"<</Type/Annot/Subtype/Link/Rect[-0 0 -.5 10]/Contents(a(b\\)c)\\051 7 0 R\\\r\nd\\7)/Dest/a#20b>>",
                6: b"<</First 7 0 R/Last 7 0 R/Count 1>>",
                7: b"<</Title<FEFF00e9 0041 4>/Parent 6 0 R/Dest[3 0 R/XYZ null null 0]>>"},
               b"/Root 1 0 R/ID[<00><01>]")


@makes
def pictures():
    """One picture twice, once with and once without a mask; only a second copy of the file has it again."""
    pdf = new("one", "two")
    rows = bytes((x * y) % 256 for x in range(64) for y in range(64))
    facts = {"Type": Name.XObject, "Subtype": Name.Image, "Width": 64, "Height": 64, "ColorSpace": Name.DeviceGray,
             "BitsPerComponent": 8}
    mask = pdf.make_stream(rows[::-1], **facts)
    for number, page in enumerate(page.obj for page in pdf.pages):
        picture = pdf.make_stream(rows, **facts)
        if number:
            picture.SMask = mask
        page.Resources.XObject = Dictionary(Im=picture)
        page.Contents = Array([page.Contents, pdf.make_stream(b"q 100 0 0 100 50 100 cm /Im Do Q")])
    return saved(pdf)
