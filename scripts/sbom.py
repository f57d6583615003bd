"""Prints what the libraries that we ship are made of, as an SPDX 2.3 document; scripts/package calls it.

The same input gives the same document: identifiers are names and checksums, the time is given.
"""
import datetime
import hashlib
import json
import pathlib
import re
import subprocess
import sys
import uuid

ROOT = pathlib.Path(__file__).resolve().parents[1]
NOTICES = ROOT / "THIRD-PARTY-NOTICES"
UNKNOWN = "NOASSERTION"
SHIPPED = ("zavoofficeaddin.dll", "ZavoKit.dll", "THIRD-PARTY-NOTICES")
ENGINE = ("ZavoKit.dll",)
BOTH = ("zavoofficeaddin.dll", "ZavoKit.dll")
# Name, licence, home page, and which of our libraries contain it.
FROM_SOURCE = (
    ("qpdf", "Apache-2.0 AND MIT AND RSA-MD", "https://qpdf.sourceforge.io/", ENGINE),
    ("libdeflate", "MIT", "https://github.com/ebiggers/libdeflate", ENGINE),
    ("libjpeg-turbo", "IJG AND BSD-3-Clause", "https://libjpeg-turbo.org/", ENGINE),
)
# The same, after the distribution's package that it comes from. Of the two last it is the runtime libraries.
FROM_PACKAGES = (
    ("libz-mingw-w64-dev", "zlib", "Zlib", "https://zlib.net/", ENGINE),
    ("gcc-mingw-w64-x86-64-posix-runtime", "gcc",
     "GPL-3.0-or-later WITH GCC-exception-3.1 AND LicenseRef-libstdcxx-parts", "https://gcc.gnu.org/", BOTH),
    ("mingw-w64-x86-64-dev", "mingw-w64", "LicenseRef-mingw-w64-runtime", "https://www.mingw-w64.org/", BOTH),
)
# Licences that SPDX has no identifier for, and the section of our notices that quotes them.
QUOTED = (("LicenseRef-libstdcxx-parts", "GCC's runtime libraries"),
          ("LicenseRef-mingw-w64-runtime", "mingw-w64's runtime"))


def spdx_id(name):
    return "SPDXRef-" + re.sub(r"[^A-Za-z0-9.-]", "-", name)


def checksums(path, *algorithms):
    data = path.read_bytes()
    return [{"algorithm": name, "checksumValue": hashlib.new(name.lower(), data).hexdigest()} for name in algorithms]


def package(name, version, licence, page, **more):
    return {"SPDXID": spdx_id("Package-" + name), "name": name, "versionInfo": version, "downloadLocation": UNKNOWN,
            "filesAnalyzed": False, "homepage": page, "licenseConcluded": licence, "licenseDeclared": UNKNOWN,
            "copyrightText": UNKNOWN, **more}


def generic_url(name, version):
    """What tools look known weaknesses up by."""
    return {"externalRefs": [{"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
                              "referenceLocator": f"pkg:generic/{name}@{version}"}]}


def from_source(name, licence, page):
    """A library that cmake/dependencies builds from an archive."""
    for line in (ROOT / "cmake" / "dependencies" / "SHA256SUMS").read_text(encoding="ascii").splitlines():
        checksum, archive = line.split()
        match = re.fullmatch(re.escape(name) + r"_(.+)\.orig\.tar\.gz", archive)
        if match:
            return package(name, match[1], licence, page, packageFileName=archive,
                           sourceInfo="built from this archive, with what cmake/dependencies changes in it",
                           checksums=[{"algorithm": "SHA256", "checksumValue": checksum}],
                           **generic_url(name, match[1]))
    raise SystemExit(f"cmake/dependencies/SHA256SUMS does not name {name}")


def from_package(distributed, name, licence, page):
    """A library that the distribution has in one of its packages."""
    command = ["dpkg-query", "-W", "-f=${Version}", distributed]
    version = subprocess.run(command, capture_output=True, text=True, check=True).stdout
    upstream = re.match(r"(?:\d+:)?([0-9.]+)", version)[1]
    return package(name, upstream, licence, page, sourceInfo=f"from the distribution's package {distributed} {version}",
                   **generic_url(name, upstream))


def notice(title):
    """A section of our notices."""
    match = re.search(rf"^{re.escape(title)}\n-+\n\n(.*?)(?=\n[^\n]+\n---+\n)", NOTICES.read_text(encoding="utf-8"),
                      re.MULTILINE | re.DOTALL)
    return match[1].strip()


def relation(subject, kind, other):
    return {"spdxElementId": subject, "relationshipType": kind, "relatedSpdxElement": other}


def document(folder, version, msi, created):
    files = [{"SPDXID": spdx_id("File-" + name), "fileName": "./" + name,
              "fileTypes": ["TEXT" if name == NOTICES.name else "BINARY"],
              "checksums": checksums(folder / name, "SHA1", "SHA256"),
              "licenseConcluded": UNKNOWN, "licenseInfoInFiles": [UNKNOWN], "copyrightText": UNKNOWN}
             for name in SHIPPED]
    sums = sorted(file["checksums"][0]["checksumValue"] for file in files)
    product = package("ZAVO Office Add-in", version, UNKNOWN, UNKNOWN, supplier="Organization: ZAVO",
                      packageFileName=msi, primaryPackagePurpose="LIBRARY", filesAnalyzed=True,
                      licenseInfoFromFiles=[UNKNOWN],
                      packageVerificationCode={
                          "packageVerificationCodeValue": hashlib.sha1("".join(sums).encode()).hexdigest()})
    del product["homepage"]
    parts = [(from_source(*facts), users) for *facts, users in FROM_SOURCE]
    parts += [(from_package(*facts), users) for *facts, users in FROM_PACKAGES]
    relations = [relation("SPDXRef-DOCUMENT", "DESCRIBES", product["SPDXID"])]
    relations += [relation(product["SPDXID"], "CONTAINS", file["SPDXID"]) for file in files]
    relations += [relation(spdx_id("File-" + user), "STATIC_LINK", part["SPDXID"])
                  for part, users in parts for user in users]
    relations += [relation(spdx_id("File-zavoofficeaddin.dll"), "DYNAMIC_LINK", spdx_id("File-ZavoKit.dll"))]
    result = {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": "SPDXRef-DOCUMENT",
        "name": f"zavoofficeaddin-{version}",
        "creationInfo": {"created": created.strftime("%Y-%m-%dT%H:%M:%SZ"),
                         "creators": ["Organization: ZAVO", "Tool: scripts/sbom.py"]},
        "packages": [product] + [part for part, _ in parts],
        "files": files,
        "hasExtractedLicensingInfos": [
            {"licenseId": name, "name": title, "extractedText": notice(title)} for name, title in QUOTED],
        "relationships": relations,
    }
    # A document of other contents has another name; the name is made from the contents.
    contents = json.dumps(result, sort_keys=True)
    result["documentNamespace"] = f"urn:uuid:{uuid.uuid5(uuid.NAMESPACE_OID, contents)}"
    return result


def main():
    folder, version, msi, created = sys.argv[1:]
    time = datetime.datetime.fromtimestamp(int(created), datetime.timezone.utc)
    print(json.dumps(document(pathlib.Path(folder), version, msi, time), indent=2, ensure_ascii=False))


if __name__ == "__main__":
    main()
