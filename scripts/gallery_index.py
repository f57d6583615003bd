"""Makes the gallery's page and its list of texts; called by scripts/gallery.

Usage: gallery_index.py FOLDER PICTURES TEXTS

FOLDER holds the pictures and gets index.html and texts.txt. PICTURES and TEXTS are lists with tabs between the columns:

  PICTURES  file, host, language's code and name, theme, scale, kind (empty where neither menu nor tip is open)
  TEXTS     host, language's name, scale, control, attribute, finding ("fits", or what is wrong), text

Prints the findings but "fits". Exit code 1 when a font lacks a glyph or a text is empty.
"""
import collections
import html
import os
import sys

from PIL import Image

Picture = collections.namedtuple("Picture", "file host code language theme scale kind")
Text = collections.namedtuple("Text", "host language scale control attribute finding text")

KINDS = {"": "window", "tip": "tip", "menu-open": "menu Open", "menu-create": "menu Create"}
# What the page can be switched to: a group of radio buttons, its choices, and how each is called.
SWITCHES = (("view", (("window", "Windows"), ("ribbon", "Ribbons"), ("popups", "Menus and tips"))),
            ("theme", (("light", "Light"), ("dark", "Dark"))),
            ("scale", (("100", "100 %"), ("150", "150 %"), ("200", "200 %"))))

STYLE = """
* { box-sizing: border-box }
body { margin: 0; font: 15px/1.4 "Segoe UI", "Open Sans", "Noto Sans", sans-serif; color: #222; background: #eef0f2 }
header { position: sticky; top: 0; z-index: 2; display: flex; flex-wrap: wrap; gap: 8px 28px; align-items: center;
  padding: 10px 20px; color: #fff; background: #22303c }
h1 { margin: 0 auto 0 0; font-size: 19px; font-weight: 600 }
h2 { margin: 28px 20px 8px; font-size: 17px; font-weight: 600 }
.switch { display: flex; border: 1px solid #6b7c8a; border-radius: 5px; overflow: hidden }
.switch label { padding: 3px 12px; cursor: pointer }
.switch label + label { border-left: 1px solid #6b7c8a }
body > input { position: absolute; opacity: 0 }
main { padding: 0 20px 30px; overflow-x: auto }
nav { padding: 10px 20px 0 }
a { color: #1f5fa8 }
nav a { margin-right: 12px }
table { border-spacing: 12px; margin: 0 -12px; width: 100% }
thead th { font-size: 16px; font-weight: 600; text-align: left }
tbody th { width: 9em; font-weight: 600; text-align: left; vertical-align: top; scroll-margin-top: 64px }
thead td { width: 9em }
th small { display: block; white-space: nowrap; font-weight: 400; color: #667 }
td { vertical-align: top }
td a { display: block; position: relative; margin-bottom: 8px; border: 1px solid #c3c9ce; border-radius: 4px;
  overflow: hidden; background: #fff }
td a:hover { border-color: #1f5fa8; box-shadow: 0 1px 6px #0004 }
td img { display: block; width: 100%; height: auto }
.badge { display: inline-block; padding: 1px 8px; border: 0; border-radius: 9px; color: #7a3500; background: #ffdfb8;
  font-size: 13px; text-decoration: none }
.badge.bad { color: #fff; background: #b3261e }
#findings table { border-collapse: collapse; margin: 0 20px; width: auto; background: #fff }
#findings td, #findings th { padding: 4px 10px; border: 1px solid #d5dadd; text-align: left; font-size: 14px }
#findings th { width: auto; background: #f6f7f8 }
.good { margin: 0 20px }
"""


def picture_size(path):
    with Image.open(path) as image:
        return image.size


def read(path, kind):
    with open(path, encoding="utf-8") as file:
        return [kind(*line.rstrip("\n").split("\t")) for line in file]


def is_bad(text):
    return "no glyph" in text.finding or "empty" in text.finding


def counted(number, one, many):
    return f"{number} {one if number == 1 else many}"


def summary(pictures, texts):
    def found(what):
        return sum(what in text.finding for text in texts)

    tight, glyphs, empty = found("too "), found("no glyph"), found("empty")
    return (f"{counted(len(pictures), 'picture', 'pictures')}, {counted(len(texts), 'text', 'texts')}: " +
            ", ".join((counted(tight, "does", "do") + " not fit" if tight else "all fit",
                       counted(glyphs, "lacks", "lack") + " glyphs" if glyphs else "no glyph is missing",
                       counted(empty, "is", "are") + " empty" if empty else "none is empty")))


def line(text):
    return f"{text.host}, {text.language}, {text.scale} %: {text.control} {text.attribute}: {text.finding}: {text.text}"


# --- The page ---------------------------------------------------------------------------------------------------------

def switch_style():
    """What the radio buttons, which stand before everything else, do to what comes after them."""
    rules = []
    for group, choices in SWITCHES:
        for choice, _ in choices:
            rules.append(f"#{group}-{choice}:checked ~ header label[for={group}-{choice}] "
                         "{ color: #22303c; background: #fff }")
            rules.append(f"#{group}-{choice}:focus-visible ~ header label[for={group}-{choice}] "
                         "{ outline: 2px solid #ffb84d; outline-offset: -2px }")
            if group != "view":
                rules.append(f"#{group}-{choice}:not(:checked) ~ main .{group}-{choice} {{ display: none }}")
    rules.append("#view-popups:not(:checked) ~ main .popup, #view-popups:checked ~ main .plain { display: none }")
    rules.append("#view-window:checked ~ main table { table-layout: fixed }")
    # At true size, below the title row: the left part of the ribbon, with menus and tips also what is below it.
    for scale in (100, 150, 200):
        width, top, ribbon, popup = (size * scale // 100 for size in (620, 32, 128, 240))
        rules.append(f"#view-window:not(:checked) ~ main .scale-{scale} img {{ width: {width}px; height: {ribbon}px; "
                     f"object-fit: none; object-position: 0 -{top}px }}")
        rules.append(f"#view-popups:checked ~ main .scale-{scale} img {{ height: {popup}px }}")
    return "\n".join(rules)


def picture_cell(folder, pictures, texts):
    parts = []
    for picture in pictures:
        width, height = picture_size(os.path.join(folder, picture.file))
        title = f"{picture.host}, {picture.language}, {picture.theme}, {picture.scale} %, {KINDS[picture.kind]}"
        parts.append(f'<a class="theme-{picture.theme} {"popup" if picture.kind else "plain"}" '
                     f'href="{html.escape(picture.file)}" title="{html.escape(title)}">'
                     f'<img loading="lazy" src="{html.escape(picture.file)}" width="{width}" height="{height}" '
                     f'alt="{html.escape(title)}"></a>')
    found = [text for text in texts if text.finding != "fits"]
    if found:
        parts.append(f'<a class="badge{" bad" if any(map(is_bad, found)) else ""}" href="#findings">'
                     f'{counted(len(found), "text", "texts")} to look at</a>')
    return "<td>" + "\n".join(parts) + "</td>"


def page(folder, pictures, texts):
    hosts = list(dict.fromkeys(picture.host for picture in pictures))
    languages = dict((picture.code, picture.language) for picture in pictures)
    scales = sorted({picture.scale for picture in pictures}, key=int)
    cells = collections.defaultdict(list)
    for picture in pictures:
        cells[picture.scale, picture.code, picture.host].append(picture)
    found = collections.defaultdict(list)
    for text in texts:
        found[text.scale, text.language, text.host].append(text)

    inputs, labels = [], []
    for group, choices in SWITCHES:
        shown = [choice for choice in choices if group != "scale" or choice[0] in scales]
        for number, (choice, _) in enumerate(shown):
            inputs.append(f'<input type="radio" name="{group}" id="{group}-{choice}"{"" if number else " checked"}>')
        labels.append('<div class="switch">' +
                      "".join(f'<label for="{group}-{choice}">{name}</label>' for choice, name in shown) + "</div>")
    rows = []
    for scale in scales:
        for code, language in languages.items():
            if not any((scale, code, host) in cells for host in hosts):
                continue
            anchor = f' id="{code}"' if scale == scales[0] else ""
            rows.append(f'<tr class="scale-{scale}"><th{anchor}>{html.escape(language)}<small>{code}, {scale} %</small>'
                        "</th>" + "\n".join(picture_cell(folder, cells[scale, code, host],
                                                         found[scale, language, host]) for host in hosts) + "</tr>")
    to_look_at = [text for text in texts if text.finding != "fits"]
    findings = "".join("<tr>" + "".join(f"<td>{html.escape(value)}</td>" for value in text) + "</tr>\n"
                       for text in sorted(to_look_at, key=is_bad, reverse=True))
    findings = ("<table><thead><tr><th>Host<th>Language<th>Scale<th>Control<th>Text of<th>Finding<th>Text</tr></thead>"
                f"<tbody>\n{findings}</tbody></table>") if findings else '<p class="good">Every text fits.</p>'
    return f"""<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><meta name="viewport" content="width=device-width">
<title>ZAVO Office Add-in: the ribbon in every host and language</title>
<style>{STYLE}{switch_style()}
</style></head><body>
{"".join(inputs)}
<header><h1>ZAVO Office Add-in</h1>{"".join(labels)}</header>
<nav>{"".join(f'<a href="#{code}">{html.escape(language)}</a>' for code, language in languages.items())}
<a href="#findings">Texts</a></nav>
<main><table><thead><tr><td></td>{"".join(f"<th>{html.escape(host)}</th>" for host in hosts)}</tr></thead><tbody>
{chr(10).join(rows)}
</tbody></table></main>
<section id="findings"><h2>{html.escape(summary(pictures, texts))}</h2>
{findings}
<p class="good">All texts are in <a href="texts.txt">texts.txt</a>.</p></section>
</body></html>
"""


def main(folder, picture_list, text_list):
    pictures, texts = read(picture_list, Picture), read(text_list, Text)
    with open(os.path.join(folder, "texts.txt"), "w", encoding="utf-8") as file:
        for text in [Text._fields, *texts]:
            file.write("\t".join(text) + "\n")
    with open(os.path.join(folder, "index.html"), "w", encoding="utf-8") as file:
        file.write(page(folder, pictures, texts))
    for text in texts:
        if text.finding != "fits":
            print(line(text))
    print(summary(pictures, texts))
    return int(any(map(is_bad, texts)))


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
