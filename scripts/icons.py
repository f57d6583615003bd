"""Makes the ribbon's .ico files and the pictures of them from the drawings; called by scripts/make-icons."""
import base64
import io
import pathlib
import struct
import subprocess
import sys

from PIL import Image

DRAWINGS = pathlib.Path(__file__).resolve().parents[1] / "src" / "resources" / "icons"
# The cells of a drawing from left to right, and what the user reads beside them on the contact sheet.
ICONS = (("create", "10 create a PDF"),
         ("send", "11 create and send"),
         ("open", "12 open PDFs"),
         ("open-mail", "13 open PDFs from the mail"),
         ("open-folder", "14 open PDFs from the folder"),
         ("create-mail", "15 create PDF from mail"),
         ("create-folder", "16 create PDFs from folder"),
         ("merge-folder", "17 merge folder into one PDF"),
         ("portfolio", "18 PDF portfolio"))
# Size of a picture and the grid of the drawing that gives it, in the order of the .ico files.
SIZES = ((64, 32), (48, 32), (32, 32), (24, 24), (20, 20), (16, 16))
# Ribbon: colour of the glyph, background on the pictures for people.
RIBBONS = {"light": ((0x3B, 0x3B, 0x3B), (0xF3, 0xF3, 0xF3)),
           "dark": ((0xFF, 0xFF, 0xFF), (0x29, 0x29, 0x29))}


# --- Icons ------------------------------------------------------------------------------------------------------------

def render():
    """What each picture covers, from nothing (0) to all (255) of a pixel, by name and size."""
    pictures = {}
    for size, grid in SIZES:
        command = ["rsvg-convert", f"--zoom={size / grid}", DRAWINGS / f"grid-{grid}.svg"]
        drawn = subprocess.run(command, capture_output=True, check=True).stdout
        strip = Image.open(io.BytesIO(drawn)).getchannel("A")
        if strip.size != (size * len(ICONS), size):
            raise ValueError(f"grid-{grid}.svg is not a row of {len(ICONS)} cells")
        for index, (name, _) in enumerate(ICONS):
            pictures[name, size] = strip.crop((index * size, 0, (index + 1) * size, size))
    return pictures


def dib(alpha, colour):
    """A 32-bit picture as .ico files hold it: header, BGRA from the lowest row up, mask with 1 where nothing shows."""
    size = alpha.width
    picture = Image.new("RGBA", alpha.size)
    picture.paste(colour, mask=alpha.point(lambda a: 255 if a else 0))
    picture.putalpha(alpha)
    pixels = picture.tobytes("raw", "BGRA", 0, -1)
    mask = alpha.point(lambda a: 0 if a else 255, "1").tobytes("raw", "1", (size + 31) // 32 * 4, -1)
    header = struct.pack("<IiiHHIIiiII", 40, size, size * 2, 1, 32, 0, len(pixels) + len(mask), 0, 0, 0, 0)
    return header + pixels + mask


def ico(alphas, colour):
    images = [dib(alpha, colour) for alpha in alphas]
    position = 6 + 16 * len(images)
    directory = struct.pack("<HHH", 0, 1, len(images))
    for alpha, image in zip(alphas, images):
        directory += struct.pack("<BBBBHHII", *alpha.size, 0, 0, 1, 32, len(image), position)
        position += len(image)
    return directory + b"".join(images)


# --- Pictures for people ----------------------------------------------------------------------------------------------

def png(alpha, colour, background, factor=1):
    """The picture laid over a background, every pixel a square of factor x factor."""
    flat = Image.composite(*(Image.new("RGB", alpha.size, colour) for colour in (colour, background)), alpha)
    file = io.BytesIO()
    flat.resize((flat.width * factor, flat.height * factor), Image.Resampling.NEAREST).save(file, "PNG")
    return file.getvalue()


def guide_picture(pictures, ribbon):
    """All icons at 32 pixels in a row, twice enlarged, with 8 pixels of background around each."""
    row = Image.new("L", (48 * len(ICONS), 48))
    for index, (name, _) in enumerate(ICONS):
        row.paste(pictures[name, 32], (48 * index + 8, 8))
    return png(row, *RIBBONS[ribbon], 2)


def contact_sheet(pictures):
    """Every icon on both backgrounds, at every size enlarged, and at true size at the end of its row."""
    step, gap, head = 160, 8, 60
    panel = len(SIZES) * step + sum(size + gap for size, _ in SIZES) + 2 * gap
    width, height = 2 * panel, head + len(ICONS) * (step + 24)
    svg = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" font-family="sans-serif">']

    def place(name, size, ribbon, x, y, factor):
        data = base64.b64encode(png(pictures[name, size], *RIBBONS[ribbon], factor)).decode()
        svg.append(f'<image x="{x}" y="{y}" width="{size * factor}" height="{size * factor}" '
                   f'href="data:image/png;base64,{data}"/>')

    for left, (ribbon, (colour, background)) in zip((0, panel), RIBBONS.items()):
        svg.append(f'<rect x="{left}" width="{panel}" height="{height}" fill="rgb{background}"/>'
                   f'<g fill="rgb{colour}">')
        for column, (size, _) in enumerate(SIZES):
            factor = 144 // size
            svg.append(f'<text x="{left + gap + column * step}" y="40" font-size="20">{size} x{factor}</text>')
        for index, (name, meaning) in enumerate(ICONS):
            y = head + index * (step + 24)
            svg.append(f'<text x="{left + gap}" y="{y + 14}" font-size="16">{meaning}: {name}-{ribbon}</text>')
            true_size = left + gap + len(SIZES) * step
            for column, (size, _) in enumerate(SIZES):
                place(name, size, ribbon, left + gap + column * step, y + 24, 144 // size)
                place(name, size, ribbon, true_size, y + 24 + 64 - size, 1)
                true_size += size + gap
        svg.append("</g>")
    svg.append("</svg>")
    return subprocess.run(["rsvg-convert"], input="\n".join(svg).encode(), capture_output=True, check=True).stdout


def main():
    """First argument: where the tree of files goes; second: where the contact sheet goes, if one is wanted."""
    pictures = render()
    target = pathlib.Path(sys.argv[1])
    for folder in ("src/resources/icons", "docs/user-guide"):
        (target / folder).mkdir(parents=True, exist_ok=True)
    for ribbon, (colour, _) in RIBBONS.items():
        for name, _ in ICONS:
            file = target / "src/resources/icons" / f"{name}-{ribbon}.ico"
            file.write_bytes(ico([pictures[name, size] for size, _ in SIZES], colour))
        (target / "docs/user-guide" / f"icons-{ribbon}.png").write_bytes(guide_picture(pictures, ribbon))
    if len(sys.argv) > 2:
        pathlib.Path(sys.argv[2]).write_bytes(contact_sheet(pictures))


main()
