"""Makes the ribbon's .ico files and the pictures of them from the drawings; called by scripts/make-icons."""
import base64
import pathlib
import struct
import subprocess
import sys
import zlib

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


# --- PNG: what rsvg-convert writes (8-bit RGBA, not interlaced) and what people look at (8-bit RGB) -------------------

def png_alpha(png):
    """The alpha channel, a list of rows."""
    width, height, depth, kind, _, _, interlaced = struct.unpack(">IIBBBBB", png[16:29])
    if (depth, kind, interlaced) != (8, 6, 0):
        raise ValueError(f"PNG of depth {depth}, colour type {kind}, interlace {interlaced}")
    packed, position = b"", 8
    while position < len(png):
        length, = struct.unpack_from(">I", png, position)
        if png[position + 4:position + 8] == b"IDAT":
            packed += png[position + 8:position + 8 + length]
        position += length + 12
    data = zlib.decompress(packed)
    # Each row starts with its filter; a filter predicts a byte from those to the left, above, and above left.
    rows, above = [], bytes(width)
    for y in range(height):
        filtered = data[y * (width * 4 + 1):(y + 1) * (width * 4 + 1)]
        row = bytearray()
        for x, value in enumerate(filtered[4::4]):
            left, corner = (row[-1], above[x - 1]) if x else (0, 0)
            row.append((value + predicted(filtered[0], left, above[x], corner)) % 256)
        rows.append(row)
        above = row
    return rows


def predicted(kind, left, above, corner):
    if kind == 4:
        guess = left + above - corner
        return min((left, above, corner), key=lambda value: abs(guess - value))
    return (0, left, above, (left + above) // 2)[kind]


def png(rows):
    """Rows of RGB tuples as a PNG."""
    def chunk(name, data):
        return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))

    pixels = b"".join(b"\0" + bytes(value for pixel in row for value in pixel) for row in rows)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", len(rows[0]), len(rows), 8, 2, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(pixels, 9)) + chunk(b"IEND", b""))


# --- Icons ------------------------------------------------------------------------------------------------------------

def render():
    """The alpha channel of every picture, by name and size."""
    pictures = {}
    for size, grid in SIZES:
        command = ["rsvg-convert", f"--zoom={size / grid}", DRAWINGS / f"grid-{grid}.svg"]
        strip = png_alpha(subprocess.run(command, capture_output=True, check=True).stdout)
        if (len(strip), len(strip[0])) != (size, size * len(ICONS)):
            raise ValueError(f"grid-{grid}.svg is not a row of {len(ICONS)} cells")
        for index, (name, _) in enumerate(ICONS):
            pictures[name, size] = [row[index * size:(index + 1) * size] for row in strip]
    return pictures


def dib(alpha, colour):
    """A 32-bit picture as .ico files hold it: header, BGRA from the lowest row up, mask with 1 where nothing shows."""
    size = len(alpha)
    pixels = b"".join(bytes((*reversed(colour), a)) if a else bytes(4) for row in reversed(alpha) for a in row)
    mask = b""
    for row in reversed(alpha):
        bits = "".join("0" if a else "1" for a in row).ljust((size + 31) // 32 * 32, "0")
        mask += int(bits, 2).to_bytes(len(bits) // 8, "big")
    header = struct.pack("<IiiHHIIiiII", 40, size, size * 2, 1, 32, 0, len(pixels) + len(mask), 0, 0, 0, 0)
    return header + pixels + mask


def ico(alphas, colour):
    images = [dib(alpha, colour) for alpha in alphas]
    position = 6 + 16 * len(images)
    directory = struct.pack("<HHH", 0, 1, len(images))
    for alpha, image in zip(alphas, images):
        directory += struct.pack("<BBBBHHII", len(alpha), len(alpha), 0, 0, 1, 32, len(image), position)
        position += len(image)
    return directory + b"".join(images)


# --- Pictures for people ----------------------------------------------------------------------------------------------

def laid_over(alpha, colour, background, factor=1):
    """Rows of RGB tuples, every pixel a square of factor x factor."""
    shades = [tuple((c * a + b * (255 - a) + 127) // 255 for c, b in zip(colour, background)) for a in range(256)]
    return [[shades[a] for a in row for _ in range(factor)] for row in alpha for _ in range(factor)]


def guide_picture(pictures, ribbon):
    """All icons at 32 pixels in a row, twice enlarged, with 8 pixels of background around each."""
    blank = [bytes(48)] * 8
    cells = [blank + [bytes(8) + row + bytes(8) for row in pictures[name, 32]] + blank for name, _ in ICONS]
    return png(laid_over([b"".join(rows) for rows in zip(*cells)], *RIBBONS[ribbon], 2))


def contact_sheet(pictures):
    """Every icon on both backgrounds, at every size enlarged, and at true size at the end of its row."""
    step, gap, head = 160, 8, 60
    panel = len(SIZES) * step + sum(size + gap for size, _ in SIZES) + 2 * gap
    width, height = 2 * panel, head + len(ICONS) * (step + 24)
    svg = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" font-family="sans-serif">']

    def place(name, size, ribbon, x, y, factor):
        data = base64.b64encode(png(laid_over(pictures[name, size], *RIBBONS[ribbon], factor))).decode()
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
