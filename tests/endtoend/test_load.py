"""What the add-in and its engine call while a host starts, from Wine's record of calls between libraries."""
import collections
import os
import re
import subprocess
import tempfile
import unittest

import pefile

from support import BIN, ROOT, windows_path

LOAD_COST = ROOT / "build" / "release" / "benchmarks" / "load_cost.exe"
LIBRARIES = ("zavoofficeaddin.dll", "ZavoKit.dll")
STEPS = ("LoadLibrary", "class factory", "object", "connection", "ribbon markup", "ribbon loaded", "disconnection")

# Memory, locks, texts, COM's start, the stack protector's guard, the user's language: nothing that reaches a file or
# the registry.
HARMLESS = re.compile(r"""
    msvcrt\.(\w*alloc|free|mem\w+|str(cmp|len|\w*cpy)|wcs(cmp|len|\w*cpy)|_lock|_unlock|_initterm
             |__iob_func|___lc_codepage_func|___mb_cur_max_func)
    |kernel(32|base)\.(Tls\w+|CreateEvent[AW]|CreateSemaphore[AW]|DuplicateHandle|CloseHandle|GetCurrent\w+|GetLastError
             |SetLastError|GetThreadPriority|Interlocked\w+|WideCharToMultiByte|MultiByteToWideChar
             |QueryPerformance\w+|GetTickCount|GetSystemTimeAsFileTime|Virtual(Protect|Query)|Sleep
             |DisableThreadLibraryCalls|GetUserDefaultUILanguage)
    |ntdll\.Rtl(InitializeCriticalSection\w*|EnterCriticalSection|LeaveCriticalSection|DeleteCriticalSection
             |AddVectoredExceptionHandler|AddFunctionTable)
    |(ole32|combase)\.CoInitialize\w*
    |oleaut32\.(Sys|Variant)\w+
    |advapi32\.SystemFunction036""", re.IGNORECASE | re.VERBOSE)


def size_in_memory(library):
    return pefile.PE(data=(BIN / library).read_bytes(), fast_load=True).OPTIONAL_HEADER.SizeOfImage


def calls_by_step():
    """The functions that code of our libraries calls in each step of a host's start."""
    with tempfile.TemporaryFile() as record:
        subprocess.run(["wine", LOAD_COST, "--steps", windows_path(BIN / "zavoofficeaddin.dll")], check=True,
                       stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=record, timeout=100,
                       env=dict(os.environ, WINEDEBUG="+relay,+loaddll"))
        record.seek(0)
        lines = record.read().decode("utf-8", "replace").splitlines()

    # Where the libraries lie is said when they have been mapped, which is before any of their code runs.
    places = {}
    for line in lines:
        loaded = re.search(r'Loaded L"(?:.*\\)?([^"\\]+)" at ([0-9A-F]+): native', line)
        if loaded and loaded.group(1) in LIBRARIES:
            start = int(loaded.group(2), 16)
            places[loaded.group(1)] = range(start, start + size_in_memory(loaded.group(1)))
    steps = collections.defaultdict(set)
    step = None
    for line in lines:
        if line.startswith("load_cost: "):
            step = line.removeprefix("load_cost: ")
        call = re.match(r"\w+:Call (\S+?)\(.* ret=([0-9a-f]+)$", line)
        if step and call and any(int(call.group(2), 16) in place for place in places.values()):
            steps[step].add(call.group(1))
    return places, steps


class StartOfAHost(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.places, cls.steps = calls_by_step()

    def assert_harmless(self, step):
        self.assertEqual([call for call in sorted(self.steps[step]) if not HARMLESS.fullmatch(call)], [], step)

    def test_ReachesNeitherFilesNorTheRegistryBeforeConnection(self):
        self.assertEqual(set(self.places), set(LIBRARIES))
        self.assertEqual(set(self.steps), set(STEPS))
        for step in STEPS[:STEPS.index("connection")]:
            self.assert_harmless(step)
        # The record does show what reaches them: the themes are watched from then on.
        self.assertIn("advapi32.RegOpenKeyExW", self.steps["ribbon loaded"])

    def test_MarkupNeedsNoMoreThanTheLanguage(self):
        self.assertIn("KERNEL32.GetUserDefaultUILanguage", self.steps["ribbon markup"])
        self.assert_harmless("ribbon markup")


if __name__ == "__main__":
    unittest.main()
