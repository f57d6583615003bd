#!/usr/bin/python3
"""The way from the stand-ins, which run under Wine, to LibreOffice and PDF tools, which run beside it.

Usage: bridge.py PORT_FILE PROFILE_FOLDER

Starts one LibreOffice and listens on a free port of 127.0.0.1. It writes "PORT TOKEN" to PORT_FILE, which only its own
user can read: a request without the token is refused. One request a connection: lines "name<TAB>value" in UTF-8, then
an empty line. The answer is one line, "ok<TAB>value" or "error<TAB>text".

  command render   source, target; pdfa, bookmarks, properties, tags, comments, screen, hidden (1 or 0);
                   first, last (pages)
  command pages    path: the number of pages of a PDF
  command convert  source, target, filter: a document in another format; reader, if LibreOffice is to take the source
                   for something else than it would by itself
  command picture  source, target, dpi (24 to 600); reader, as above: the first page as a PNG of that resolution

Paths are Linux paths. A target is replaced only once the new file is whole; a write-protected one is refused.
"""
import collections
import os
import re
import secrets
import signal
import socketserver
import stat
import subprocess
import sys
import tempfile
import time

import uno
from com.sun.star.beans import PropertyValue

PDF_FILTERS = {
    "com.sun.star.text.GenericTextDocument": "writer_pdf_Export",
    "com.sun.star.sheet.SpreadsheetDocument": "calc_pdf_Export",
    "com.sun.star.presentation.PresentationDocument": "impress_pdf_Export",
}
PICTURES_KEPT = 32


def properties(**values):
    result = []
    for name, value in values.items():
        item = PropertyValue()
        item.Name, item.Value = name, value
        result.append(item)
    return tuple(result)


class Replacing:
    """A fresh file beside the target, for writing; it takes the target's place once it is whole, or goes again.

    This is no contextlib.contextmanager: LibreOffice's errors do not survive being thrown into a generator.
    """

    def __init__(self, target):
        self.target = os.path.realpath(target)
        if os.path.isdir(self.target):
            raise RuntimeError(f"{self.target} is a folder")
        # Root may write everywhere; the owner's bit is what a Windows program sees as the read-only attribute.
        if os.path.exists(self.target) and not (os.access(self.target, os.W_OK) and
                                                os.stat(self.target).st_mode & stat.S_IWUSR):
            raise RuntimeError(f"{self.target} is write-protected")

    def __enter__(self):
        handle, self.fresh = tempfile.mkstemp(prefix=".export-", dir=os.path.dirname(self.target))
        os.close(handle)
        return self.fresh

    def __exit__(self, kind, _error, _traceback):
        try:
            if kind is None:
                mask = os.umask(0)
                os.umask(mask)
                os.chmod(self.fresh, 0o666 & ~mask)
                os.replace(self.fresh, self.target)
        finally:
            if os.path.exists(self.fresh):
                os.unlink(self.fresh)


class Office:
    """One running LibreOffice with a profile of its own."""

    def __init__(self, profile):
        pipe = f"zavo{os.getpid()}"
        self.process = subprocess.Popen(
            ["soffice", "-env:UserInstallation=" + uno.systemPathToFileUrl(profile), "--headless", "--norestore",
             "--nologo", "--nodefault", f"--accept=pipe,name={pipe};urp;"],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
        try:
            self.desktop = self.connect(pipe)
        except BaseException:
            self.kill()
            raise

    def connect(self, pipe):
        local = uno.getComponentContext()
        resolver = local.ServiceManager.createInstanceWithContext("com.sun.star.bridge.UnoUrlResolver", local)
        deadline = time.monotonic() + 60
        while True:
            try:
                context = resolver.resolve(f"uno:pipe,name={pipe};urp;StarOffice.ComponentContext")
                break
            except Exception:
                if time.monotonic() > deadline or self.process.poll() is not None:
                    raise
                time.sleep(0.05)
        return context.ServiceManager.createInstanceWithContext("com.sun.star.frame.Desktop", context)

    def close(self):
        try:
            self.desktop.terminate()
        except Exception:
            pass
        try:
            self.process.wait(10)
        except subprocess.TimeoutExpired:
            self.kill()

    def kill(self):
        """Ends LibreOffice's starter and what it started."""
        try:
            os.killpg(self.process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass

    def load(self, source, **options):
        url = uno.systemPathToFileUrl(source)
        arguments = properties(Hidden=True, ReadOnly=True, **options)
        document = self.desktop.loadComponentFromURL(url, "_blank", 0, arguments)
        if document is None:
            raise RuntimeError(f"{source} cannot be opened as a document")
        return document

    def store(self, document, target, filter_name, filter_data=None):
        with Replacing(target) as fresh:
            arguments = {"FilterName": filter_name, "Overwrite": True}
            if filter_data is not None:
                arguments["FilterData"] = uno.Any("[]com.sun.star.beans.PropertyValue", filter_data)
            document.storeToURL(uno.systemPathToFileUrl(fresh), properties(**arguments))
            if os.path.getsize(fresh) == 0:
                raise RuntimeError("LibreOffice wrote nothing")


def pdf_filter_of(document):
    for service, name in PDF_FILTERS.items():
        if document.supportsService(service):
            return name
    raise RuntimeError("this kind of document cannot be exported")


def drop_properties(document):
    held = document.DocumentProperties
    held.Title = held.Author = held.Subject = held.Description = ""
    held.Keywords = ()


def render(office, request):
    def is_set(name):
        return request.get(name, "0") == "1"

    document = office.load(request["source"])
    try:
        if not is_set("properties"):
            drop_properties(document)
        options = {
            "SelectPdfVersion": 1 if is_set("pdfa") else 0,
            "ExportBookmarks": is_set("bookmarks"),
            "UseTaggedPDF": is_set("tags"),
            "ExportNotes": is_set("comments"),
            "ExportHiddenSlides": is_set("hidden"),
            "ReduceImageResolution": is_set("screen"),
            "MaxImageResolution": 150 if is_set("screen") else 300,
        }
        if "first" in request:
            options["PageRange"] = f"{request['first']}-{request['last']}"
        office.store(document, request["target"], pdf_filter_of(document), properties(**options))
    finally:
        document.close(True)
    return ""


def load_with_reader(office, request):
    return office.load(request["source"], **({"FilterName": request["reader"]} if "reader" in request else {}))


def convert(office, request):
    document = load_with_reader(office, request)
    try:
        office.store(document, request["target"], request["filter"])
    finally:
        document.close(True)
    return ""


def pages(_office, request):
    found = subprocess.run(["pdfinfo", request["path"]], capture_output=True, text=True, check=False)
    for line in found.stdout.splitlines():
        name, _, value = line.partition(":")
        if name == "Pages":
            return value.strip()
    raise RuntimeError(f"{request['path']} is not a PDF")


class Pictures:
    """Draws first pages, and keeps the latest ones: windows ask for the same page again and again."""

    def __init__(self):
        self.kept = collections.OrderedDict()

    def __call__(self, office, request):
        dpi = request["dpi"]
        if not (re.fullmatch(r"[0-9]{2,3}(\.[0-9]+)?", dpi) and 24 <= float(dpi) <= 600):
            raise RuntimeError(f"the resolution is a number from 24 to 600, not {dpi}")
        with Replacing(request["target"]) as fresh:
            state = os.stat(request["source"])
            key = (os.path.realpath(request["source"]), state.st_mtime_ns, state.st_size, request.get("reader"), dpi)
            if key not in self.kept:
                self.kept[key] = self.draw(office, request)
            self.kept.move_to_end(key)
            while len(self.kept) > PICTURES_KEPT:
                self.kept.popitem(last=False)
            with open(fresh, "wb") as file:
                file.write(self.kept[key])
        return ""

    @staticmethod
    def draw(office, request):
        with tempfile.TemporaryDirectory() as folder:
            pdf, page = os.path.join(folder, "page.pdf"), os.path.join(folder, "page")
            document = load_with_reader(office, request)
            try:
                office.store(document, pdf, pdf_filter_of(document), properties(PageRange="1"))
            finally:
                document.close(True)
            done = subprocess.run(["pdftoppm", "-png", "-r", request["dpi"], "-f", "1", "-l", "1", "-singlefile", pdf,
                                   page], capture_output=True, text=True, check=False)
            if done.returncode:
                raise RuntimeError(f"{request['source']} cannot be drawn: {done.stderr.strip()}")
            with open(page + ".png", "rb") as file:
                return file.read()


COMMANDS = {"render": render, "convert": convert, "pages": pages, "picture": Pictures()}


def read_request(stream):
    request = {}
    while True:
        line = stream.readline().decode("utf-8").rstrip("\r\n")
        if not line:
            return request
        name, _, value = line.partition("\t")
        request[name] = value


def serve(port_file, profile):
    token = secrets.token_hex(16)
    office = Office(os.path.abspath(profile))

    class Handler(socketserver.StreamRequestHandler):
        def handle(self):
            try:
                request = read_request(self.rfile)
                if not secrets.compare_digest(request.get("token", ""), token):
                    raise PermissionError("wrong token")
                answer = "ok\t" + COMMANDS[request["command"]](office, request)
            except Exception as error:
                answer = f"error\t{type(error).__name__}: {error}"
            self.wfile.write((answer.replace("\r", " ").replace("\n", " ") + "\n").encode("utf-8", "replace"))

    try:
        with socketserver.TCPServer(("127.0.0.1", 0), Handler) as server:
            fresh = os.open(port_file + ".new", os.O_WRONLY | os.O_CREAT | os.O_EXCL, 0o600)
            with open(fresh, "w", encoding="ascii") as file:
                file.write(f"{server.server_address[1]} {token}")
            os.rename(port_file + ".new", port_file)
            server.serve_forever()
    finally:
        office.close()


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    for end in (signal.SIGTERM, signal.SIGHUP, signal.SIGINT):
        signal.signal(end, lambda *_: sys.exit(0))
    serve(sys.argv[1], sys.argv[2])
