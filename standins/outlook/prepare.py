#!/usr/bin/python3
"""Makes a folder of mails (.eml files) into something plain that the Outlook stand-in can show.

Usage: prepare.py FOLDER_OF_EML TARGET_FOLDER

The mails are taken in the order of their file names. The target, which must not exist, gets for the N-th one

  000N.html     the mail as a page: From, Sent, To, Subject and the body, with the pictures of the body inside
  000N-M.bin    the content of its M-th attachment

and for all of them folder.txt, UTF-16 in little-endian order, so that texts that are no valid Unicode come through. Its
lines are "name<TAB>value" with "\\\\" for a backslash and "\\n" for a line end in a value:

  folder, folder-id   the folder's display name and entry id, once and first
  item                starts an item: the name of its .eml file; what follows belongs to it
  class, subject, id  message class, subject and entry id
  sender              the name in From, or the address where there is no name; missing for a mail without From
  received            local time in days since 30 December 1899; missing for a mail that was never received
  page                the name of its page
  attachment, name    the name of the file with an attachment's content, and the name that the mail gives it, if any

What a mail gives as a name is never used as one on disk.
"""
import base64
import datetime
import email
import email.errors
import email.header
import email.utils
import hashlib
import html
import html.parser
import os
import re
import sys

EPOCH = datetime.datetime(1899, 12, 30)


class UsageError(Exception):
    pass


# --- Headers ----------------------------------------------------------------------------------------------------------

def unfolded(raw):
    return re.sub(r"\r?\n(?=[ \t])", "", raw)


def decoded(raw):
    """A header's value as text: continuation lines joined, encoded words decoded.

    Raw bytes beyond ASCII are taken for UTF-8, or else for what Western mail programs wrote.
    """
    raw = unfolded(raw)
    try:
        raw = raw.encode("utf-8", "surrogateescape").decode("utf-8")
    except UnicodeEncodeError:
        return raw  # the library has decoded it already
    except UnicodeDecodeError as error:
        raw = error.object.decode("cp1252", "replace")
    try:
        parts = email.header.decode_header(raw)
    except email.errors.HeaderParseError:
        return raw
    text = ""
    for part, charset in parts:
        if isinstance(part, bytes):
            try:
                part = part.decode(charset or "raw-unicode-escape", "replace")
            except LookupError:
                part = part.decode("ascii", "replace")
        text += part
    return text


def raw_header(message, name):
    """The first header of that name as it stands; None where there is none."""
    return next((str(value) for key, value in message.raw_items() if key.lower() == name), None)


def header(message, name):
    """The decoded value of the first header of that name; None where there is none."""
    raw = raw_header(message, name)
    return None if raw is None else decoded(raw).strip(" \t\r\n")


def sender(message):
    """The name in From, or the address where there is no name; what stands there where it is no address at all."""
    raw = raw_header(message, "from") or ""
    # Names are told from addresses before they are decoded: a decoded name may hold all that a header is made of.
    first, *_ = email.utils.getaddresses([unfolded(raw)]) or [()]
    parts = (*first, raw)
    return next((text for text in (decoded(part).strip(" \t\r\n") for part in parts) if text), None)


def local_time(text):
    try:
        return email.utils.parsedate_to_datetime(text).astimezone().replace(tzinfo=None)
    except (ValueError, TypeError, OverflowError, IndexError):
        return None


def received_time(message):
    """When the mail came here: the time of its topmost "Received", or else of its "Date"."""
    for name in ("received", "date"):
        value = header(message, name)
        time = value and local_time(value.rpartition(";")[2])
        if time:
            return time
    return None


def message_class(message):
    kind = message.get_content_type()
    if kind == "multipart/report":
        return "REPORT.IPM.Note.NDR"
    if kind in ("text/vcard", "text/x-vcard", "text/directory"):
        return "IPM.Contact"
    parts = message.get_payload() if kind == "multipart/alternative" else [message]
    if any(part.get_content_type() == "text/calendar" for part in parts):
        return "IPM.Appointment"
    if kind == "multipart/signed":
        return "IPM.Note.SMIME.MultipartSigned"
    if kind in ("application/pkcs7-mime", "application/x-pkcs7-mime"):
        return "IPM.Note.SMIME"
    return "IPM.Note"


# --- Body and attachments ---------------------------------------------------------------------------------------------

def text_of(part):
    data = part.get_payload(decode=True) or b""
    try:
        return data.decode(part.get_content_charset() or "utf-8")
    except (LookupError, UnicodeDecodeError):
        return data.decode("cp1252", "replace")


def content_of(part):
    """The bytes of an attachment, which may be a mail itself."""
    if part.get_content_maintype() == "message" and part.is_multipart():
        return b"\n".join(one.as_bytes() for one in part.get_payload())
    return part.get_payload(decode=True) or b""


def name_of(part):
    name = part.get_filename()
    if name is None and part.get_content_type() == "message/rfc822" and part.is_multipart():
        subject = header(part.get_payload(0), "subject")
        return subject + ".eml" if subject else None  # as mail programs name it
    return None if name is None else decoded(name)


class Content:
    """What is in a mail, sorted into body, pictures and attachments.

    Outlook itself also lists the pictures of the body as attachments. Here they belong to the body only, so that what
    a user sees as attached is what there is.
    """

    def __init__(self, message):
        self.bodies = []  # parts of type text/plain and text/html
        self.pictures = {}  # by content id
        self.attachments = []
        self.sort(message)

    def sort(self, part):
        kind = part.get_content_type()
        if kind == "multipart/alternative" and part.get_payload():
            self.sort(self.best(part.get_payload()))
        elif kind.startswith("multipart/") and part.is_multipart():
            for one in part.get_payload():
                self.sort(one)
        elif kind in ("text/plain", "text/html") and not part.get_filename() and not self.is_attached(part):
            self.bodies.append(part)
        elif kind.startswith("image/") and part["content-id"] and not self.is_attached(part):
            self.pictures[part["content-id"].strip(" <>")] = part
        elif not kind.startswith("multipart/"):
            self.attachments.append(part)

    @staticmethod
    def is_attached(part):
        return part.get_content_disposition() == "attachment"

    @staticmethod
    def best(alternatives):
        def rank(part):
            kinds = [one.get_content_type() for one in part.walk()]
            return 2 if "text/html" in kinds else 1 if "text/plain" in kinds else 0
        return max(reversed(alternatives), key=rank)


class Page(html.parser.HTMLParser):
    """Copies the HTML of a body without what is active or would be fetched from elsewhere."""

    DROPPED = {"applet", "base", "body", "embed", "frame", "frameset", "head", "html", "iframe", "link", "meta",
               "object"}
    SILENT = {"script", "style", "title"}  # dropped with their text
    FETCHING = {"background", "data", "dynsrc", "lowsrc", "poster", "src", "srcset"}

    def __init__(self, pictures):
        super().__init__(convert_charrefs=False)
        self.pictures = pictures
        self.text = []
        self.styles = []
        self.silent = None

    def handle_starttag(self, tag, attrs):
        if tag in self.SILENT:
            self.silent = tag
        if tag in self.SILENT or tag in self.DROPPED:
            return
        kept = [(name, value) for name, value in attrs if name not in self.FETCHING and not name.startswith("on")]
        if tag == "img":
            source = self.picture(dict(attrs).get("src") or "")
            if not source:
                return
            kept.append(("src", source))
        values = "".join(f' {name}="{html.escape(without_addresses(value or name))}"' if name != "src"
                         else f' src="{value}"' for name, value in kept if re.fullmatch(r"[a-z][a-z0-9:_-]*", name))
        self.text.append(f"<{tag}{values}>")

    handle_startendtag = handle_starttag

    def handle_endtag(self, tag):
        if tag == self.silent:
            self.silent = None
        elif tag not in self.SILENT and tag not in self.DROPPED:
            self.text.append(f"</{tag}>")

    def handle_data(self, data):
        if self.silent == "style":
            self.styles.append(without_addresses(data))
        elif not self.silent:
            self.text.append(data)

    def handle_entityref(self, name):
        self.handle_data(f"&{name};")

    def handle_charref(self, name):
        self.handle_data(f"&#{name};")

    def picture(self, source):
        part = self.pictures.get(source[4:]) if source.lower().startswith("cid:") else None
        if part is None:
            return None
        return f"data:{part.get_content_type()};base64,{base64.b64encode(content_of(part)).decode()}"


def without_addresses(style):
    """A style, or another attribute's value, without what it would fetch; nor escapes, which could hide that."""
    return re.sub(r"(?i)url\s*\([^)]*\)?|@import[^;]*;?", "none", style.replace("\\", ""))


def html_of_text(text):
    lines = []
    for line in text.rstrip().splitlines():
        lines.append(re.sub("^ |  ", lambda blanks: "&nbsp;" * len(blanks[0]), html.escape(line.expandtabs())))
    return "<p>" + "<br>\n".join(lines) + "</p>"


def page_of(message, content):
    """The mail as a page: its head as a table, a line, and the body."""
    styles, body = [], []
    for part in content.bodies:
        if part.get_content_type() == "text/html":
            page = Page(content.pictures)
            page.feed(text_of(part))
            page.close()
            styles += page.styles
            body += page.text
        else:
            body.append(html_of_text(text_of(part)))
    subject = header(message, "subject") or ""
    sent = header(message, "date")
    time = sent and local_time(sent)
    head = {"From": header(message, "from"), "Sent": f"{time:%A, %-d %B %Y %H:%M}" if time else sent,
            "To": header(message, "to"), "Cc": header(message, "cc"), "Subject": subject}
    rows = "".join(f'<tr valign="top"><td width="80"><b>{name}:</b></td><td>{html.escape(value)}</td></tr>\n'
                   for name, value in head.items() if value is not None and (value or name != "Cc"))
    return f"""<!DOCTYPE html>
<html><head><meta charset="utf-8"><title>{html.escape(subject)}</title>
<style>
@page {{ size: 21cm 29.7cm; margin: 2cm }}
body, p, td, th, li, div {{ font-family: "Liberation Sans", sans-serif; font-size: 10.5pt }}
h1, h2, h3, h4 {{ font-family: "Liberation Sans", sans-serif }}
p {{ margin-top: 0; margin-bottom: 0.25cm }}
{"".join(styles).replace("</", "")}
</style></head><body>
<table width="100%" cellpadding="1" cellspacing="0">
{rows}</table>
<hr>
{"".join(body)}
</body></html>
"""


# --- The folder -------------------------------------------------------------------------------------------------------

def entry_id(*parts):
    return hashlib.sha256(b"\0".join(parts)).hexdigest().upper()


def item_lines(number, name, data, target):
    message = email.message_from_bytes(data)
    content = Content(message)
    page = f"{number:04}.html"
    with open(os.path.join(target, page), "w", encoding="utf-8", errors="replace") as file:
        file.write(page_of(message, content))
    yield "item", name
    yield "class", message_class(message)
    yield "subject", header(message, "subject") or ""
    yield "id", entry_id(os.fsencode(name), data)
    given = sender(message)
    if given:
        yield "sender", given
    time = received_time(message)
    if time:
        yield "received", repr((time - EPOCH) / datetime.timedelta(days=1))
    yield "page", page
    for place, part in enumerate(content.attachments, 1):
        path = f"{number:04}-{place}.bin"
        with open(os.path.join(target, path), "wb") as file:
            file.write(content_of(part))
        yield "attachment", path
        given = name_of(part)
        if given is not None:
            yield "name", given


def prepare(folder, target):
    if not os.path.isdir(folder):
        raise UsageError(f"no such folder: {folder}")
    names = sorted(name for name in os.listdir(folder) if name.lower().endswith(".eml"))
    if not names:
        raise UsageError(f"no .eml files in {folder}")
    os.mkdir(target)
    real = os.path.realpath(folder)
    lines = [("folder", os.path.basename(real)), ("folder-id", entry_id(os.fsencode(real)))]
    for number, name in enumerate(names, 1):
        with open(os.path.join(folder, name), "rb") as file:
            lines += item_lines(number, name, file.read(), target)
    with open(os.path.join(target, "folder.txt"), "wb") as file:
        for name, value in lines:
            value = value.replace("\\", "\\\\").replace("\n", "\\n")
            file.write(f"{name}\t{value}\n".encode("utf-16-le", "surrogatepass"))


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    try:
        prepare(*sys.argv[1:])
    except (UsageError, OSError) as error:
        sys.exit(f"{os.path.basename(sys.argv[0])}: {error}")
