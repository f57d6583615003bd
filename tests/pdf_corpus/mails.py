"""Mails as flat OpenDocument texts, varied by a seeded generator, for LibreOffice to turn into PDFs."""
import base64
import random
import struct
import zlib
from xml.sax.saxutils import escape

LANGUAGES = {
    "en-GB": ("Report From To Subject Summary Progress Costs Plan Questions next page back to the summary",
              "the bridge was finished two weeks ahead of plan and every joint is tight while steel "
              "for main span waits "
              "in yard until weather allows welding again cost remains below what council agreed last spring"),
    "de-DE": ("Bericht Von An Betreff Übersicht Fortschritt Kosten Plan Fragen nächste Seite zurück zur Übersicht",
              "die Brücke wurde früher fertig als geplant und jede Fuge ist dicht während der Stahl "
              "für das Hauptfeld auf "
              "besseres Wetter wartet die Kosten bleiben unter dem was der Rat im Frühjahr beschloss größer süß"),
    "fr-FR": ("Rapport De À Objet Résumé Avancement Coûts Plan Questions page suivante retour au résumé",
              "le pont fut achevé deux semaines avant la date prévue et chaque joint reste étanche tandis que l’acier "
              "attend au chantier le coût demeure inférieur à ce que le conseil avait accordé où ça œuvre"),
    "ru-RU": ("Отчёт От Кому Тема Обзор Работы Расходы План Вопросы следующая страница назад к обзору",
              "мост построен на две недели раньше срока и каждый шов проверен сталь для пролёта ждёт на складе пока "
              "погода не позволит снова варить расходы остаются ниже того что совет утвердил весной"),
    "el-GR": ("Αναφορά Από Προς Θέμα Περίληψη Πρόοδος Κόστος Σχέδιο Ερωτήσεις επόμενη σελίδα πίσω στην περίληψη",
              "η γέφυρα τελείωσε δύο εβδομάδες νωρίτερα και κάθε αρμός είναι στεγανός ενώ ο χάλυβας περιμένει στην "
              "αυλή μέχρι να επιτρέψει ο καιρός το κόστος μένει κάτω από όσα ενέκρινε το συμβούλιο"),
    "pl-PL": ("Raport Od Do Temat Streszczenie Postęp Koszty Plan Pytania następna strona wstecz do streszczenia",
              "most został ukończony dwa tygodnie przed terminem i każda spoina jest szczelna "
              "podczas gdy stal czeka na "
              "placu aż pogoda pozwoli znów spawać koszty są niższe niż rada uchwaliła wiosną żółć gęślą jaźń"),
}

NAMESPACES = "".join(f' xmlns:{prefix}="urn:oasis:names:tc:opendocument:xmlns:{name}:1.0"' for prefix, name in (
    ("office", "office"), ("style", "style"), ("text", "text"), ("table", "table"), ("draw", "drawing"),
    ("fo", "xsl-fo-compatible"), ("svg", "svg-compatible"), ("form", "form"), ("meta", "meta"))) + (
        ' xmlns:dc="http://purl.org/dc/elements/1.1/" xmlns:xlink="http://www.w3.org/1999/xlink"'
        ' xmlns:ooo="http://openoffice.org/2004/office"')


def png(width, height, colour_at):
    """A PNG of 8-bit RGB; colour_at(x, y) gives three numbers."""
    rows = b"".join(b"\0" + bytes(value for x in range(width) for value in colour_at(x, y)) for y in range(height))

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


# The letterhead that all mails share, as those of one firm do, and a photograph that a third of them share.
LOGO = base64.b64encode(png(360, 140, lambda x, y: (
    30 + x // 2 + (x * y) % 23, 80 + y + (x * x + y * 7) % 29, 200 - x // 2 + (x ^ y) % 31))).decode()
PHOTO = base64.b64encode(png(160, 120, lambda x, y: ((x * y) % 256, (x * 7 + y) % 256, (x ^ y) % 256))).decode()

STYLES = """
<office:styles>
 <style:default-style style:family="graphic"/>
 <style:default-style style:family="paragraph"><style:paragraph-properties fo:margin-bottom="0.2cm"/>
  <style:text-properties fo:font-family="{font}" fo:font-size="11pt" fo:language="{language}" fo:country="{country}"/>
 </style:default-style>
 <style:style style:name="Standard" style:family="paragraph"/>
 <style:style style:name="Heading_20_1" style:display-name="Heading 1" style:family="paragraph"
  style:default-outline-level="1"><style:text-properties fo:font-family="Liberation Sans" fo:font-size="15pt"
  fo:font-weight="bold"/></style:style>
 <style:style style:name="Heading_20_2" style:display-name="Heading 2" style:family="paragraph"
  style:default-outline-level="2"><style:text-properties fo:font-family="Liberation Sans" fo:font-size="12pt"
  fo:font-weight="bold"/></style:style>
 <text:outline-style style:name="Outline">
  <text:outline-level-style text:level="1" style:num-format=""/>
  <text:outline-level-style text:level="2" style:num-format=""/>
 </text:outline-style>
</office:styles>
<office:automatic-styles>
 <style:style style:name="NewPage" style:family="paragraph" style:parent-style-name="Heading_20_1">
  <style:paragraph-properties fo:break-before="page"/></style:style>
 <style:page-layout style:name="Page"><style:page-layout-properties fo:page-width="{width}cm"
  fo:page-height="{height}cm" fo:margin="2cm"/></style:page-layout>
</office:automatic-styles>
<office:master-styles><style:master-page style:name="Standard" style:page-layout-name="Page"/></office:master-styles>
"""


def picture(name, data, width, height):
    return (f'<text:p><draw:frame draw:name="{name}" text:anchor-type="as-char" svg:width="{width}cm" '
            f'svg:height="{height}cm"><draw:image><office:binary-data>{data}</office:binary-data></draw:image>'
            f'<svg:title>{name}</svg:title></draw:frame></text:p>')


def form(words):
    """Fields whose names are the same in every mail that has a form."""
    controls = "".join(
        f'<form:text form:name="{name}" xml:id="c{number}" form:id="c{number}" form:current-value="{words[number]}" '
        f'form:control-implementation="ooo:com.sun.star.form.component.TextField"/>'
        for number, name in enumerate(("Name", "Telephone")))
    controls += ('<form:checkbox form:name="Agreed" xml:id="c2" form:id="c2" form:label="ok" form:value="yes" '
                 'form:control-implementation="ooo:com.sun.star.form.component.CheckBox"/>')
    shown = "".join(f'<text:p><draw:control draw:control="c{number}" text:anchor-type="as-char" svg:width="5cm" '
                    f'svg:height="0.7cm"/></text:p>' for number in range(3))
    return (f'<office:forms><form:form form:name="Form" form:apply-filter="true" '
            f'form:control-implementation="ooo:com.sun.star.form.component.Form">{controls}</form:form></office:forms>'
            ), shown


def mail(number):
    """The mail as a flat OpenDocument text, and how to export it."""
    chance = random.Random(number)
    language = list(LANGUAGES)[number % len(LANGUAGES)]
    titles, words = (text.split() for text in LANGUAGES[language])
    report, sender, receiver, subject, *headings = titles[:9]

    def sentence(length):
        return escape(" ".join(chance.choice(words) for _ in range(length)).capitalize() + ".")

    has_form = number % 20 == 3
    forms, shown = form(words) if has_form else ("", "")
    body = [forms, picture("Logo", LOGO, 5.4, 2.1)]
    rows = ((sender, f"Ann {number}"), (receiver, "Δήμος, Łódź, München"), (subject, sentence(5)))
    body.append('<table:table table:name="Head"><table:table-column table:number-columns-repeated="2"/>' + "".join(
        "<table:table-row>" + "".join(f"<table:table-cell><text:p>{escape(cell)}</text:p></table:table-cell>"
                                      for cell in row) + "</table:table-row>" for row in rows) + "</table:table>")
    chosen = headings[:chance.randint(1, 5)] if number % 10 else []
    for place, heading in enumerate(chosen):
        style = "NewPage" if place and place % 2 == 0 else "Heading_20_1"
        body.append(f'<text:h text:style-name="{style}" text:outline-level="1"><text:bookmark '
                    f'text:name="part{place}"/>{heading}</text:h>')
        body += (f"<text:p>{sentence(chance.randint(8, 60))}</text:p>" for _ in range(chance.randint(1, 3)))
        if chance.random() < 0.4:
            body.append(f'<text:h text:style-name="Heading_20_2" text:outline-level="2">{sentence(3)}</text:h>')
            body.append(f"<text:p>{sentence(30)}</text:p>")
        body.append(f'<text:p><text:a xlink:type="simple" xlink:href="#part{(place + 1) % len(chosen)}">'
                    f'{escape(" ".join(titles[9:]))}</text:a></text:p>')
    if not chosen:
        body.append(f"<text:p>{sentence(40)}</text:p>")
    body.append(f'<text:p><text:a xlink:type="simple" xlink:href="https://example.org/{number}">example.org'
                f"</text:a></text:p>{shown}")
    if number % 3 == 0:
        body.append(picture("Photo", PHOTO, 6, 4.5))
    width, height = (29.7, 21.0) if number % 7 == 0 else (21.0, 29.7)
    styles = STYLES.format(font=("Liberation Serif", "Liberation Sans")[number % 2], language=language[:2],
                           country=language[3:], width=width, height=height)
    document = (f'<?xml version="1.0" encoding="UTF-8"?><office:document{NAMESPACES} office:version="1.3" '
                'office:mimetype="application/vnd.oasis.opendocument.text">'
                f"<office:meta><dc:title>{report} {number}</dc:title><meta:initial-creator>Ann</meta:initial-creator>"
                f"</office:meta>{styles}<office:body><office:text>{''.join(body)}</office:text></office:body>"
                "</office:document>")
    return document, {"bookmarks": "1", "tags": "1" if number % 4 else "0", "properties": "1",
                      "pdfa": "1" if number % 25 == 24 else "0"}
