#!/usr/bin/python3
"""Compares lists with the rules of SPDX 2.3 and with the packages that they describe.

Usage: checksbom.py PACKAGE...     each beside its list, PACKAGE.spdx.json. Prints faults; 1 if there are any.
"""
import hashlib
import json
import pathlib
import re
import sys

import jsonschema

import components
import packages

SCHEMA = pathlib.Path(__file__).with_name("list.schema.json")
EXCEPTIONS = {"GCC-exception-3.1", "LZMA-exception", "Qt-GPL-exception-1.0"}
LICENCES = {"BSD-3-Clause", "CPL-1.0", "FTL", "GPL-2.0-only", "GPL-2.0-or-later", "GPL-3.0-only", "GPL-3.0-or-later",
            "IJG", "LGPL-2.1-or-later", "LGPL-3.0-only", "MIT", "MIT-Modern-Variant", "OFL-1.1", "ZPL-2.1", "Zlib",
            "libpng-2.0"}


def schema_faults(document):
    validator = jsonschema.Draft7Validator(json.loads(SCHEMA.read_text(encoding="utf-8")))
    return [f"{'/'.join(map(str, error.path))}: {error.message[:200]}" for error in validator.iter_errors(document)]


def expression_faults(expression, extracted):
    """Identifiers that SPDX does not have; AND, OR and WITH only between identifiers."""
    if expression == "NOASSERTION":
        return []
    words = expression.split(" ")
    faults = [f"{expression}: not an expression"] if len(words) % 2 == 0 else []
    for before, word in zip([""] + words, words):
        if before in ("", "AND", "OR"):
            known = word in LICENCES or word in extracted
        elif before == "WITH":
            known = word in EXCEPTIONS
        else:
            known = word in ("AND", "OR", "WITH")
        if not known:
            faults.append(f"{expression}: {word} is no identifier")
    return faults


def licence_faults(document):
    extracted = {info["licenseId"] for info in document["hasExtractedLicensingInfos"]}
    expressions = {entry["licenseConcluded"] for entry in document["packages"] + document["files"]}
    return [fault for expression in sorted(expressions) for fault in expression_faults(expression, extracted)]


def reference_faults(document):
    identities = [document["SPDXID"]] + [entry["SPDXID"] for entry in document["packages"] + document["files"]]
    faults = [f"{identity} twice" for identity in sorted(set(identities)) if identities.count(identity) > 1]
    used = set(document["documentDescribes"])
    for relationship in document["relationships"]:
        used |= {relationship["spdxElementId"], relationship["relatedSpdxElement"]}
    faults += [f"{identity} does not exist" for identity in sorted(used - set(identities))]
    return faults + [f"{identity} is related to nothing" for identity in sorted(set(identities) - used)]


def digest_of(entry, algorithm):
    return next(sum_["checksumValue"] for sum_ in entry["checksums"] if sum_["algorithm"] == algorithm)


def content_faults(document, package, files):
    """The list against every byte of the package."""
    root = next(entry for entry in document["packages"] if entry["SPDXID"] == document["documentDescribes"][0])
    faults = []
    if digest_of(root, "SHA256") != hashlib.sha256(package.read_bytes()).hexdigest():
        faults.append("the package is another one")
    listed = {entry["fileName"].removeprefix("./"): entry for entry in document["files"]}
    faults += [f"{name}: only in the list or the package" for name in sorted(set(listed) ^ set(files))]
    for name in set(listed) & set(files):
        if digest_of(listed[name], "SHA1") != hashlib.sha1(files[name]).hexdigest():
            faults.append(f"{name}: another content")
    sums = sorted(hashlib.sha1(data).hexdigest() for data in files.values())
    code = hashlib.sha1("".join(sums).encode()).hexdigest()
    if root.get("packageVerificationCode", {}).get("packageVerificationCodeValue") != code:
        faults.append("the verification code is wrong")
    return faults


def library_faults(document, files):
    """Each library has a version and a licence, and the licence's text is installed."""
    libraries = {entry["packageFileName"]: entry for entry in document["packages"] if "packageFileName" in entry}
    faults = []
    for name in (name for name in files if name.endswith(".dll")):
        entry = libraries.get(name)
        if entry is None or "NOASSERTION" in (entry["versionInfo"], entry["licenseDeclared"]):
            faults.append(f"{name}: no version or licence")
    names = {entry["name"] for entry in document["packages"]}
    used = {component for name in files if (component := components.component_of(name))}
    used |= {component for component in components.INNER if component.name in names}
    faults += [f"licenses/{component.notice}.txt of {component.name} is not installed"
               for component in used if f"licenses/{component.notice}.txt" not in files]
    return faults


def dependency_faults(document, package):
    entries = {entry["name"]: entry for entry in document["packages"]}
    needed = packages.debian_relations(package, "Depends")
    faults = [f"{name}: a dependency without entry or version" for name in needed
              if entries.get(name, {}).get("versionInfo", "NOASSERTION") == "NOASSERTION"]
    return faults + ([] if needed else ["the package has no dependencies"])


def faults_of(package):
    document = json.loads(pathlib.Path(f"{package}.spdx.json").read_text(encoding="utf-8"))
    if faults := schema_faults(document):
        return faults
    files = packages.files_of(package)
    faults = licence_faults(document) + reference_faults(document) + content_faults(document, package, files)
    if package.suffix == ".deb":
        return faults + dependency_faults(document, package)
    return faults + library_faults(document, files)


def main():
    failed = False
    for package in map(pathlib.Path, sys.argv[1:]):
        for fault in faults_of(package):
            print(f"{package.name}: {re.sub(chr(10), ' ', fault)}", file=sys.stderr)
            failed = True
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
