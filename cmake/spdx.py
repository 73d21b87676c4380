#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT
"""Writes the SPDX 2.3 document of a package: its files with their checksums, and what it needs.

Links have no contents and are not listed. The document itself is left out of the verification code,
as the standard requires. The time is that of SOURCE_DATE_EPOCH, if it is set.
"""
import argparse
import datetime
import hashlib
import json
import os
import re
import time

OWN_LICENCE = "MIT"


def digest(path, algorithm):
    with open(path, "rb") as file:
        return hashlib.new(algorithm, file.read()).hexdigest()


def regular_files(folder):
    paths = (os.path.join(place, name) for place, _, names in os.walk(folder) for name in names)
    return sorted(os.path.relpath(path, folder) for path in paths if not os.path.islink(path))


def holds_other_code(name):
    return re.search(r"bin/|\.so|NOTICE", name) is not None


def describe_file(folder, name, licence):
    path = os.path.join(folder, name)
    return {"SPDXID": "SPDXRef-File-" + hashlib.sha1(name.encode()).hexdigest(), "fileName": "./" + name,
            "licenseConcluded": licence,
            "checksums": [{"algorithm": kind.upper(), "checksumValue": digest(path, kind)}
                          for kind in ("sha1", "sha256")]}


def describe_other(name, version, licence):
    return {"SPDXID": "SPDXRef-Package-" + name, "name": name, "versionInfo": version,
            "downloadLocation": "NOASSERTION", "filesAnalyzed": False,
            "licenseConcluded": licence, "licenseDeclared": licence, "copyrightText": "NOASSERTION"}


def describe(options):
    itself = "SPDXRef-Package-" + options.package
    contained = [need[3] for need in options.needs if need[0] == "STATIC_LINK"]
    licence = " AND ".join(dict.fromkeys([OWN_LICENCE, *contained]))
    files = [describe_file(options.folder, name, licence if holds_other_code(name) else OWN_LICENCE)
             for name in regular_files(options.folder) if name != options.document]
    all_sha1 = sorted(file["checksums"][0]["checksumValue"] for file in files)
    code = hashlib.sha1("".join(all_sha1).encode()).hexdigest()
    others = {name: describe_other(name, version, other) for _, name, version, other in options.needs}
    related = [("SPDXRef-DOCUMENT", "DESCRIBES", itself)]
    related += [(itself, "CONTAINS", file["SPDXID"]) for file in files]
    related += [(itself, kind, others[name]["SPDXID"]) for kind, name, _, _ in options.needs]
    name = f"{options.package}-{options.version}"
    created = int(os.environ.get("SOURCE_DATE_EPOCH") or time.time())
    return {
        "spdxVersion": "SPDX-2.3",
        "dataLicense": "CC0-1.0",
        "SPDXID": "SPDXRef-DOCUMENT",
        "name": name,
        "documentNamespace": f"https://kxutils.example/spdx/{name}-{code}",
        "creationInfo": {
            "created": datetime.datetime.fromtimestamp(created, datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ"),
            "creators": ["Organization: " + options.contact, "Tool: " + options.tool]},
        "packages": [{
            "SPDXID": itself, "name": options.package, "versionInfo": options.version,
            "supplier": "Organization: " + options.contact,
            "downloadLocation": "NOASSERTION", "filesAnalyzed": True,
            "packageVerificationCode": {"packageVerificationCodeValue": code,
                                        "packageVerificationCodeExcludedFiles": ["./" + options.document]},
            "licenseConcluded": licence, "licenseDeclared": OWN_LICENCE,
            "copyrightText": "2026 The kxUtils authors"}, *others.values()],
        "files": files,
        "relationships": [{"spdxElementId": one, "relationshipType": kind, "relatedSpdxElement": other}
                          for one, kind, other in related]}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument("folder", help="what is packed")
    parser.add_argument("document", help="where the document goes, below the folder")
    parser.add_argument("package", help="the package's name")
    parser.add_argument("--version", required=True)
    parser.add_argument("--contact", required=True)
    parser.add_argument("--tool", required=True)
    parser.add_argument("--needs", nargs=4, action="append", default=[],
                        metavar=("RELATIONSHIP", "NAME", "VERSION", "LICENCE"))
    options = parser.parse_args()
    document = json.dumps(describe(options), indent=1) + "\n"
    with open(os.path.join(options.folder, options.document), "w", encoding="utf-8") as file:
        file.write(document)


main()
