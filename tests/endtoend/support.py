"""What the end-to-end tests share: the stand-ins as programs, documents, and PDFs as other tools read them."""
import io
import json
import os
import pathlib
import shutil
import socket
import struct
import subprocess
import tempfile
import time
import unittest
import unittest.mock

import pefile
from PIL import Image

ROOT = pathlib.Path(__file__).resolve().parents[2]
BIN = ROOT / "build" / "bin"
WINE_REMARK = "wine: Read access denied for device "  # where the root folder's device may not be read


def windows_path(path):
    return "Z:" + os.path.abspath(path).replace("/", "\\")


def wine(*command, environment=None):
    """Runs a Windows program; gives its exit code (its low 8 bits), its output and its error output.

    On a busy machine a program was seen, once in thousands, to end with 1 as Wine started it, without a word from
    either. One that ends so is run once more; what fails by itself fails again.
    """
    result = run_in_wine(command, environment)
    return run_in_wine(command, environment) if result == (1, "", "") else result


def run_in_wine(command, environment):
    """What `wine` gives.

    Output goes through files: a pipe would stay open as long as any program of the Wine session lives.
    """
    variables = dict(os.environ, **(environment or {}))
    with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
        done = subprocess.run(["wine", *map(str, command)], stdin=subprocess.DEVNULL, stdout=out, stderr=err,
                              env=variables, timeout=100, check=False)
        out.seek(0)
        err.seek(0)
        errors = [line for line in err.read().decode("utf-8", "replace").splitlines()
                  if not line.startswith(WINE_REMARK)]
        return done.returncode, out.read().decode("utf-8", "replace"), "\n".join(errors)


def plain_environment():
    """The environment without the caller's Wine sessions, which are not a script's."""
    return {name: value for name, value in os.environ.items()
            if not name.startswith(("WINE", "ZAVO_BRIDGE", "ZAVO_SCREEN", "ZAVO_INSTALLER", "LC_", "LANG", "DISPLAY"))}


def run_script(script, *arguments, cwd="/"):
    """Runs one of scripts/ as a user does; gives its exit code, its output and its error output."""
    done = subprocess.run([ROOT / "scripts" / script, *arguments], cwd=cwd, env=plain_environment(),
                          stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=300, check=False)
    return done.returncode, done.stdout, done.stderr


def make_certificate(folder, name="Throwaway", usage="codeSigning"):
    """A certificate that signs itself, and its key, in files of that folder; gives both paths."""
    certificate, key = folder / f"{name}.pem", folder / f"{name}.key"
    subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", f"/CN={name}",
                    "-addext", f"extendedKeyUsage=critical,{usage}", "-keyout", key, "-out", certificate],
                   check=True, capture_output=True)
    return certificate, key


def is_signed(path, certificate):
    """Whether the file has a signature that is right and goes back to the certificate."""
    return subprocess.run(["osslsigncode", "verify", "-CAfile", certificate, "-in", path],
                          capture_output=True, check=False).returncode == 0


def ask_bridge(**request):
    """One request to the bridge; gives the answer's value."""
    with socket.create_connection(("127.0.0.1", int(os.environ["ZAVO_BRIDGE_PORT"])), timeout=100) as connection:
        request["token"] = os.environ["ZAVO_BRIDGE_TOKEN"]
        lines = "".join(f"{name}\t{value}\n" for name, value in request.items())
        connection.sendall((lines + "\n").encode())
        answer = connection.makefile("r", encoding="utf-8").readline().rstrip("\n")
    kind, _, value = answer.partition("\t")
    if kind != "ok":
        raise RuntimeError(value)
    return value


def pdf_text(pdf):
    return subprocess.run(["pdftotext", pdf, "-"], capture_output=True, text=True, check=True).stdout


def pdf_info(pdf):
    lines = subprocess.run(["pdfinfo", pdf], capture_output=True, text=True, check=True).stdout.splitlines()
    return {name: value.strip() for name, _, value in (line.partition(":") for line in lines)}


def pdf_outline_titles(pdf):
    done = subprocess.run(["qpdf", "--json", "--json-key=outlines", pdf], capture_output=True, text=True, check=True)

    def titles(items):
        for item in items:
            yield item["title"]
            yield from titles(item["kids"])

    return list(titles(json.loads(done.stdout)["outlines"]))


def pdf_is_pdfa(pdf):
    plain = subprocess.run(["qpdf", "--qdf", "--object-streams=disable", pdf, "-"], capture_output=True, check=True)
    return b"pdfaid:part" in plain.stdout


def pdf_attachments(pdf):
    """The embedded files of a PDF as pairs of name and bytes."""
    names = pdf_attachment_names(pdf)
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "file")
        result = []
        for number, name in enumerate(names, 1):
            subprocess.run(["pdfdetach", "-save", str(number), "-o", path, pdf], capture_output=True, check=True)
            with open(path, "rb") as file:
                result.append((name, file.read()))
        return result


def pdf_attachment_names(pdf):
    done = subprocess.run(["pdfdetach", "-enc", "UTF-8", "-list", pdf], capture_output=True, check=True)
    lines = done.stdout.decode("utf-8", "replace").splitlines()
    return [line.partition(": ")[2] for line in lines if line.split(":")[0].isdigit()]


def qpdf_check(pdf):
    """Fails with qpdf's own words unless it finds nothing to say."""
    done = subprocess.run(["qpdf", "--check", pdf], capture_output=True, text=True, check=False)
    if done.returncode:
        raise AssertionError(done.stdout + done.stderr)


def read_library(path):
    """A linked library with what it exports and imports, and its version."""
    library = pefile.PE(data=path.read_bytes(), fast_load=True)
    library.parse_data_directories([pefile.DIRECTORY_ENTRY[f"IMAGE_DIRECTORY_ENTRY_{directory}"]
                                    for directory in ("EXPORT", "IMPORT", "RESOURCE")])
    return library


def version_text(library):
    (texts,) = (part for part in library.FileInfo[0] if part.Key == b"StringFileInfo")
    return texts.StringTable[0].entries[b"FileVersion"].decode()


def png_image(png):
    """The picture, which is read when it is looked at; fails unless the file is whole."""
    if not png.endswith(b"\0\0\0\0IEND\xAEB`\x82"):
        raise ValueError("the PNG has no end")
    Image.open(io.BytesIO(png)).verify()
    return Image.open(io.BytesIO(png))


def png_pixels(png, rows_wanted=None):
    """The rows of a picture as RGB tuples, all or the first ones."""
    image = png_image(png).convert("RGB")
    return pixel_rows(image.crop((0, 0, image.width, min(image.height, rows_wanted or image.height))))


def pixel_rows(image):
    """The rows of a picture, as tuples of what each pixel has in each channel."""
    pixels = list(zip(*(channel.tobytes() for channel in image.split())))
    return [pixels[start:start + image.width] for start in range(0, len(pixels), image.width)]


def screen_pixels(area=None):
    """What the screen of the session with one shows now: rows of RGB tuples, of an area (left, top, width, height)."""
    with open(os.environ["ZAVO_SCREEN_FRAMEBUFFER"], "rb") as file:
        dump = file.read()
    # X's window dump, which Pillow cannot open, but its pixels it can.
    header = struct.unpack_from(">20I", dump)
    start, depth, width, height, byte_order, bits, stride, colours = (header[i] for i in (0, 3, 4, 5, 7, 11, 12, 19))
    masks = header[14:17]
    if (depth, byte_order, bits, masks) != (24, 0, 32, (0xFF0000, 0xFF00, 0xFF)):
        raise ValueError(f"a screen of depth {depth}, byte order {byte_order}, {bits} bits a pixel, masks {masks}")
    image = Image.frombytes("RGB", (width, height), dump[start + 12 * colours:], "raw", "BGRX", stride)
    left, top, wide, high = area or (0, 0, width, height)
    return pixel_rows(image.crop((left, top, min(left + wide, width), min(top + high, height))))


def wait_until(condition, seconds=10):
    """Waits until the condition holds; gives its last answer."""
    deadline = time.monotonic() + seconds
    while not (answer := condition()) and time.monotonic() < deadline:
        time.sleep(0.05)
    return answer


def reg(*arguments):
    code, out, errors = wine("reg.exe", *arguments)
    if code:
        raise RuntimeError(f"reg {arguments}: {code} {out}{errors}")


class AddinTest(unittest.TestCase):
    """The add-in registered, the companion installed, and a folder for a test's files."""

    @classmethod
    def setUpClass(cls):
        code, _, errors = wine("regsvr32.exe", "/s", windows_path(BIN / "zavoofficeaddin.dll"))
        if code:
            raise RuntimeError(f"regsvr32: {code} {errors}")
        reg("add", r"HKLM\SOFTWARE\ZAVO", "/v", "InstallPath", "/d", windows_path(BIN), "/f")

    @classmethod
    def tearDownClass(cls):
        wine("regsvr32.exe", "/s", "/u", windows_path(BIN / "zavoofficeaddin.dll"))
        reg("delete", r"HKLM\SOFTWARE\ZAVO", "/f")

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="zavo-")
        self.addCleanup(shutil.rmtree, self.folder)
        self.companion_log = os.path.join(self.folder, "companion.log")

    def companion_report(self):
        """What the companion wrote, or an empty text when it was not started. A host ends after it."""
        if not os.path.exists(self.companion_log):
            return ""
        with open(self.companion_log, encoding="utf-8") as file:
            return file.read()

    def files(self):
        return sorted(os.listdir(self.folder))


class ScreenTest:
    """Has the programs of a test run in the Wine session with a screen; stands before the class that it goes with."""

    @classmethod
    def setUpClass(cls):
        session = {"WINEPREFIX": os.environ["ZAVO_SCREEN_PREFIX"], "DISPLAY": os.environ["ZAVO_SCREEN_DISPLAY"]}
        cls.enterClassContext(unittest.mock.patch.dict(os.environ, session))
        super().setUpClass()

    def start(self, *command, environment=None):
        """Starts a Windows program, which is ended with the test at the latest."""
        program = subprocess.Popen(["wine", *map(str, command)], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL, env=dict(os.environ, **(environment or {})))

        def end():
            program.terminate()
            program.wait(10)
        self.addCleanup(end)
        return program


class HostTest(AddinTest):
    """A host's stand-in on a sample document."""

    SAMPLE = "project-report.fodt"
    FILTER = "MS Word 2007 XML"
    EXTENSION = ".docx"

    def setUp(self):
        super().setUp()
        self.mail_log = os.path.join(self.folder, "mail.log")
        self.document = self.make_document("report" + self.EXTENSION)
        self.pdf = os.path.join(self.folder, "report.pdf")

    def make_document(self, name):
        path = os.path.join(self.folder, name)
        ask_bridge(command="convert", source=str(ROOT / "samples" / self.SAMPLE), target=path, filter=self.FILTER)
        return path

    def host(self, *arguments, document=None, expect=0, **environment):
        """The stand-in with the document; fails the test unless it ends with `expect`. Gives its output."""
        environment.setdefault("ZAVO_COMPANION_LOG", windows_path(self.companion_log))
        environment.setdefault("ZAVO_MAIL_LOG", windows_path(self.mail_log))
        code, out, errors = wine(BIN / "office-standin.exe", "--document", windows_path(document or self.document),
                                 *arguments, environment=environment)
        self.assertEqual((code, errors), (expect, ""), out)
        return out

    def create_pdf(self, *arguments, **options):
        return self.host(*arguments, "--click", "BUTTON_ID_CREATE", **options)

    def mails(self):
        """The messages that the mail program got."""
        if not os.path.exists(self.mail_log):
            return []
        with open(self.mail_log, encoding="utf-8") as file:
            return file.read().splitlines()


class ExcelDocument:
    """What makes a HostTest one of Excel."""

    SAMPLE = "budget.fods"
    FILTER = "Calc MS Excel 2007 XML"
    EXTENSION = ".xlsx"


class PowerPointDocument:
    """What makes a HostTest one of PowerPoint."""

    SAMPLE = "talk.fodp"
    FILTER = "Impress MS PowerPoint 2007 XML"
    EXTENSION = ".pptx"
