#!/usr/bin/python3
"""The PDFs that merging is tested with, made once and kept in the cache.

Usage: corpus.py [KIND...]
Makes what is missing and prints the folder of each kind: mails (by LibreOffice), constructed, manuals (of Debian).
"""
import concurrent.futures
import contextlib
import fcntl
import functools
import hashlib
import os
import pathlib
import pickle
import shutil
import subprocess
import sys
import tempfile
import time

import pikepdf

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
sys.path.append(str(ROOT / "tests" / "endtoend"))

import constructed  # noqa: E402
import inventory  # noqa: E402
import mails  # noqa: E402
import readers  # noqa: E402
from support import ask_bridge  # noqa: E402

MAILS = 200
SAMPLES = ("project-report.fodt", "budget.fods", "talk.fodp")
HUGE = ("refman.pdf", "fullrefman.pdf")  # as long as all other manuals together; the benchmark has it


def cache():
    given = os.environ.get("ZAVO_CACHE")
    home = os.environ.get("XDG_CACHE_HOME") or os.path.join(os.environ["HOME"], ".cache")
    return pathlib.Path(given or os.path.join(home, "zavo-office-addin")) / "pdf-corpus"


@contextlib.contextmanager
def locked(name):
    """Tests run side by side; only one of them makes a thing."""
    cache().mkdir(parents=True, exist_ok=True)
    with open(cache() / f"{name}.lock", "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        yield


def key_of(*parts):
    """A name made from texts and from the contents of files."""
    found = hashlib.sha256()
    for part in parts:
        found.update(part.read_bytes() if isinstance(part, pathlib.Path) else str(part).encode())
        found.update(b"\0")
    return found.hexdigest()[:16]


@functools.cache
def version_of(package):
    return subprocess.run(["dpkg-query", "-W", "-f=${Version}", package], capture_output=True, text=True,
                          check=False).stdout


def folder_made_once(kind, key, make):
    """The folder of that kind and key; `make` fills it when it is not there. Old ones of the kind go."""
    folder = cache() / f"{kind}-{key}"
    if not folder.is_dir():
        with locked(kind):
            if not folder.is_dir():
                fresh = pathlib.Path(tempfile.mkdtemp(prefix=f"{kind}-new.", dir=cache()))
                try:
                    make(fresh)
                    fresh.rename(folder)
                except BaseException:
                    shutil.rmtree(fresh, ignore_errors=True)
                    raise
            for other in cache().glob(f"{kind}-*"):
                if other.is_dir() and other != folder and time.time() - other.stat().st_mtime > 7 * 86400:
                    shutil.rmtree(other, ignore_errors=True)
    os.utime(folder)
    return folder


@contextlib.contextmanager
def bridge():
    """LibreOffice: the one of the test run, else one of its own."""
    if "ZAVO_BRIDGE_PORT" in os.environ:
        yield
        return
    with tempfile.TemporaryDirectory(prefix="zavo-bridge-") as folder:
        port_file = os.path.join(folder, "port")
        process = subprocess.Popen(["/usr/bin/python3", ROOT / "standins" / "bridge" / "bridge.py", port_file,
                                    os.path.join(folder, "libreoffice")], stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            deadline = time.monotonic() + 60
            while not os.path.exists(port_file):
                if process.poll() is not None or time.monotonic() > deadline:
                    raise RuntimeError("LibreOffice did not start")
                time.sleep(0.05)
            with open(port_file, encoding="ascii") as file:
                os.environ["ZAVO_BRIDGE_PORT"], os.environ["ZAVO_BRIDGE_TOKEN"] = file.read().split()
            yield
        finally:
            os.environ.pop("ZAVO_BRIDGE_PORT", None)
            process.terminate()
            process.wait()


def make_mails(folder):
    with bridge():
        for number in range(MAILS):
            document, options = mails.mail(number)
            source = folder / f"mail {number:03}.fodt"
            source.write_text(document, encoding="utf-8")
            ask_bridge(command="render", source=str(source), target=str(source.with_suffix(".pdf")), **options)
            source.unlink()
        for name in SAMPLES:
            for kind, options in (("tagged", {"tags": "1", "bookmarks": "1", "properties": "1"}),
                                  ("archive", {"pdfa": "1", "bookmarks": "1"}), ("plain", {"comments": "1"})):
                target = folder / f"zz {pathlib.Path(name).stem} {kind}.pdf"
                ask_bridge(command="render", source=str(ROOT / "samples" / name), target=str(target), **options)


def make_constructed(folder):
    for name, make in constructed.MAKERS.items():
        (folder / name).write_bytes(make())


def unpacked(group):
    """The folder of a group of Debian packages that scripts/lib.sh names, downloaded and unpacked."""
    done = subprocess.run(["bash", "-c", '. "$1/scripts/lib.sh"; unpack_packages "$2"', "corpus", ROOT, group],
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True, check=False)
    if done.returncode:
        raise RuntimeError(f"the packages of the group {group} are not to be had")
    return pathlib.Path(done.stdout.strip())


def mail_pdfs():
    key = key_of(HERE / "mails.py", HERE / "corpus.py", ROOT / "standins" / "bridge" / "bridge.py",
                 *(ROOT / "samples" / name for name in SAMPLES), version_of("libreoffice-core-nogui"))
    return sorted(folder_made_once("mails", key, make_mails).glob("*.pdf"))


def constructed_pdfs():
    key = key_of(HERE / "constructed.py", HERE / "corpus.py", pikepdf.__version__)
    return sorted(folder_made_once("constructed", key, make_constructed).glob("*.pdf"))


def manual_pdfs():
    with locked("manuals"):
        folder = unpacked("manuals")
    found = (path for path in folder.rglob("*.pdf") if path.is_file() and not path.is_symlink())
    return sorted((path for path in found if path.name not in HUGE), key=lambda path: path.name)


KINDS = {"mails": mail_pdfs, "constructed": constructed_pdfs, "manuals": manual_pdfs}


def fonts_of_the_machine():
    """The files that pages are drawn with where a PDF has no font of its own."""
    return " ".join(sorted(str(path) for folder in ("/usr/share/fonts", "/usr/local/share/fonts", "/usr/share/poppler")
                           for path in pathlib.Path(folder).rglob("*") if path.is_file()))


@functools.cache
def facts_folder():
    tools = f"{pikepdf.__version__} {version_of('poppler-utils')} {version_of('qpdf')} {fonts_of_the_machine()}"
    folder = cache() / f"facts-{key_of(HERE / 'inventory.py', HERE / 'readers.py', tools)}"
    folder.mkdir(parents=True, exist_ok=True)
    return folder


def facts(path, with_pictures=True):
    """The inventory of an input and what other programs see in it, kept in the cache."""
    kept = facts_folder() / f"{key_of(pathlib.Path(path))}-{int(with_pictures)}"
    if kept.exists():
        with open(kept, "rb") as file:
            return pickle.load(file)
    found = inventory.read(path), readers.second_view(path, with_pictures)
    with tempfile.NamedTemporaryFile(dir=kept.parent, delete=False) as file:
        pickle.dump(found, file)
    os.replace(file.name, kept)
    return found


def all_facts(paths, with_pictures=True):
    """The facts of many inputs, read side by side."""
    facts_folder()  # known to the processes that follow
    with concurrent.futures.ProcessPoolExecutor() as pool:
        return list(pool.map(facts, paths, [with_pictures] * len(paths), chunksize=4))


if __name__ == "__main__":
    wanted = sys.argv[1:] or list(KINDS)
    if set(wanted) - set(KINDS):
        sys.exit(__doc__)
    for wish in wanted:
        made = KINDS[wish]()
        print(f"{wish}: {len(made)} files, {sum(path.stat().st_size for path in made) / 1e6:.1f} MB, {made[0].parent}")
