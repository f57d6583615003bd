"""scripts/sign, with certificates and a time-stamp service that the tests make."""
import hashlib
import http.server
import os
import pathlib
import shutil
import subprocess
import tempfile
import threading
import unittest
import unittest.mock

from support import BIN, is_signed, make_certificate, run_script, windows_path, wine

ADDIN, ENGINE = "zavoofficeaddin.dll", "ZavoKit.dll"
PACKAGE = """<?xml version="1.0"?>
<Wix xmlns="http://schemas.microsoft.com/wix/2006/wi"><Product Id="*" Name="Test" Version="1.0.0" Language="1033"
  Manufacturer="Test" UpgradeCode="0b7c3a52-5a0e-4d6f-9d3c-6f3f6a1b2c3d"><Package Compressed="yes"/></Product></Wix>
"""
# What the service says of itself: a policy of its own, and which hashes it takes.
TIMESTAMP_SETTINGS = """[tsa]
default_tsa = service
[service]
serial = {folder}/serial
signer_cert = {certificate}
signer_key = {key}
signer_digest = sha256
default_policy = 1.2.3.4
digests = sha256
"""


class TimestampService(http.server.BaseHTTPRequestHandler):
    """Answers each question with a time stamp (RFC 3161)."""

    def do_POST(self):
        question = self.rfile.read(int(self.headers["Content-Length"]))
        with tempfile.NamedTemporaryFile() as file:
            file.write(question)
            file.flush()
            answer = subprocess.run(["openssl", "ts", "-reply", "-config", self.server.settings, "-queryfile",
                                     file.name], check=True, capture_output=True).stdout
        self.send_response(200)
        self.send_header("Content-Type", "application/timestamp-reply")
        self.send_header("Content-Length", str(len(answer)))
        self.end_headers()
        self.wfile.write(answer)

    def log_message(self, *_):
        pass


class Signing(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.shared = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory(prefix="zavo-")))
        cls.certificate, cls.key = make_certificate(cls.shared)
        cls.pkcs12, cls.password = cls.shared / "both.p12", cls.shared / "password"
        cls.password.write_text("secret and long\n", encoding="ascii")
        subprocess.run(["openssl", "pkcs12", "-export", "-in", cls.certificate, "-inkey", cls.key, "-out", cls.pkcs12,
                        "-passout", f"file:{cls.password}"], check=True, capture_output=True)
        (cls.shared / "test.wxs").write_text(PACKAGE, encoding="ascii")
        subprocess.run(["wixl", "-a", "x64", "-o", cls.shared / "test.msi", cls.shared / "test.wxs"], check=True,
                       capture_output=True)

    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="zavo signed ")))
        for name in (ADDIN, ENGINE):
            shutil.copy(BIN / name, self.folder)
        shutil.copy(self.shared / "test.msi", self.folder)

    def sign(self, *names, options=None):
        """Signs files of the test's folder; gives the exit code and the error output."""
        options = options or ["--certificate", self.certificate, "--key", self.key]
        code, out, errors = run_script("sign", *map(str, options), *(str(self.folder / name) for name in names))
        self.assertEqual(out, "")
        return code, errors

    def verified(self, name):
        return is_signed(self.folder / name, self.certificate)

    def hashes(self):
        return {path.name: hashlib.sha256(path.read_bytes()).hexdigest() for path in self.folder.iterdir()}

    def test_SignedLibrariesVerifyAndStillRegister(self):
        mode = os.stat(self.folder / ADDIN).st_mode
        self.assertEqual(self.sign(ADDIN, ENGINE)[0], 0)
        self.assertTrue(self.verified(ADDIN) and self.verified(ENGINE))
        self.assertEqual(os.stat(self.folder / ADDIN).st_mode, mode)
        self.assertEqual(sorted(self.hashes()), sorted([ADDIN, ENGINE, "test.msi"]))  # nothing else is left
        code, out, _ = run_script("check-binaries", str(self.folder))
        self.assertEqual(code, 0, out)
        for arguments in (("/s",), ("/s", "/u")):
            code, _, errors = wine("regsvr32.exe", *arguments, windows_path(self.folder / ADDIN))
            self.assertEqual(code, 0, errors)

    def test_SignedPackageVerifies(self):
        self.assertFalse(self.verified("test.msi"))
        self.assertEqual(self.sign("test.msi")[0], 0)
        self.assertTrue(self.verified("test.msi"))

    def test_ChangeAfterSigningIsNoticed(self):
        self.sign(ADDIN, "test.msi")
        for name, place in ((ADDIN, 5000), ("test.msi", 1500)):
            data = bytearray((self.folder / name).read_bytes())
            data[place] ^= 1
            (self.folder / name).write_bytes(data)
            self.assertFalse(self.verified(name), name)

    def test_SigningAgainReplacesTheSignature(self):
        self.sign(ADDIN, "test.msi")
        size = (self.folder / ADDIN).stat().st_size
        self.assertEqual(self.sign(ADDIN, "test.msi")[0], 0)
        self.assertTrue(self.verified(ADDIN) and self.verified("test.msi"))
        self.assertEqual((self.folder / ADDIN).stat().st_size, size)

    def test_TakesAPkcs12FileWithAPassword(self):
        options = ["--pkcs12", self.pkcs12, "--password-file", self.password]
        self.assertEqual(self.sign(ADDIN, options=options)[0], 0)
        self.assertTrue(self.verified(ADDIN))

    def test_TimestampComesFromTheServiceThatIsNamed(self):
        certificate, key = make_certificate(self.shared, "Clock", "timeStamping")
        server = http.server.HTTPServer(("127.0.0.1", 0), TimestampService)
        server.settings = self.shared / "timestamp.cnf"
        server.settings.write_text(TIMESTAMP_SETTINGS.format(folder=self.shared, certificate=certificate, key=key),
                                   encoding="ascii")
        self.addCleanup(server.server_close)
        threading.Thread(target=server.serve_forever).start()
        self.addCleanup(server.shutdown)
        options = ["--certificate", self.certificate, "--key", self.key, "--timestamp",
                   f"http://127.0.0.1:{server.server_port}/"]
        before = self.hashes()
        code, errors = self.sign(ADDIN, options=options)
        self.assertEqual(code, 1, "the service's certificate is not known yet")
        self.assertIn("was not verified", errors)
        self.assertEqual(self.hashes(), before)
        self.assertEqual(self.sign(ADDIN, "test.msi", options=options + ["--ca", certificate]), (0, unittest.mock.ANY))
        for name in (ADDIN, "test.msi"):
            said = subprocess.run(["osslsigncode", "verify", "-CAfile", self.certificate, "-TSA-CAfile", certificate,
                                   "-in", self.folder / name], capture_output=True, text=True, check=True).stdout
            self.assertIn("Timestamp Server Signature verification: ok", said)

    def test_WithoutAnAnswerOfTheServiceNothingIsSigned(self):
        before = self.hashes()
        code, errors = self.sign(ADDIN, options=["--certificate", self.certificate, "--key", self.key, "--timestamp",
                                                 "http://127.0.0.1:9/"])
        self.assertEqual(code, 1, errors)
        self.assertIn("could not be signed", errors)
        self.assertEqual(self.hashes(), before)

    def test_PackageThatCannotBeSignedIsNotLeftBehind(self):
        # A tool that signs libraries only.
        tool = self.folder / "tools" / "osslsigncode"
        tool.parent.mkdir()
        tool.write_text(f"#!/bin/sh\ncase $* in *.msi*) exit 1 ;; esac\nexec {shutil.which(tool.name)} \"$@\"\n",
                        encoding="ascii")
        tool.chmod(0o755)
        out = self.folder / "out"
        with unittest.mock.patch.dict(os.environ, PATH=f"{tool.parent}:{os.environ['PATH']}"):
            code, _, errors = run_script("sign", "--certificate", str(self.certificate), "--key", str(self.key),
                                         "--out", str(out))
        self.assertEqual(code, 1, errors)
        self.assertIn("x64.msi could not be signed", errors)
        self.assertTrue(self.verified("out/" + ADDIN))
        self.assertEqual(list(out.glob("*.msi*")), [])

    def test_RenewsHashesBesideTheFile(self):
        sums = self.folder / "SHA256SUMS"
        subprocess.run(f"sha256sum {ADDIN} test.msi > SHA256SUMS", shell=True, cwd=self.folder, check=True)
        before = sums.read_text(encoding="ascii")
        self.sign(ADDIN)
        self.assertNotEqual(sums.read_text(encoding="ascii"), before)
        subprocess.run(["sha256sum", "--check", "--quiet", "--strict", "SHA256SUMS"], cwd=self.folder, check=True)

    def test_FailureLeavesEverythingAsItWas(self):
        wrong = self.shared / "wrong"
        wrong.write_text("another\n", encoding="ascii")
        # A key that is not the certificate's.
        other = self.shared / "other.pem"
        subprocess.run(["openssl", "genrsa", "-out", other, "2048"], check=True, capture_output=True)
        before = self.hashes()
        for options in (["--pkcs12", self.pkcs12, "--password-file", wrong], ["--pkcs12", self.pkcs12],
                        ["--certificate", self.certificate, "--key", other]):
            code, errors = self.sign(ADDIN, options=options)
            self.assertEqual(code, 1, errors)
            self.assertEqual(self.hashes(), before)

    def test_WrongArgumentsAreSaidInOneLine(self):
        both = ["--certificate", self.certificate, "--key", self.key]
        for options, names, said in (
                ([ADDIN], (), "a certificate is needed: --certificate and --key, or --pkcs12"),
                (["--certificate", self.certificate], (ADDIN,), "a certificate is needed"),
                (both + ["--pkcs12", self.pkcs12], (ADDIN,), "either --pkcs12, or --certificate and --key"),
                (["--pkcs12", "/no/such.p12"], (ADDIN,), "no such file: /no/such.p12"),
                (["--key"], (), "--key needs a value"),
                (["--what"], (), "unknown option --what"),
                (both, ("other.dll",), "no such file: "),
                (both + ["--out", "/tmp"], (ADDIN,), "files are signed where they are: --out goes without them"),
                (both, ("SHA256SUMS",), "neither a DLL nor an MSI: ")):
            code, errors = self.sign(*names, options=options)
            self.assertEqual((code, len(errors.splitlines())), (1, 1), errors)
            self.assertIn(said, errors)


if __name__ == "__main__":
    unittest.main()
