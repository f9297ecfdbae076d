#!/usr/bin/python3
"""Lists what a package holds and needs, as SPDX 2.3.

Usage: makesbom.py PACKAGE LIST     PACKAGE: .deb, .zip or -setup.exe; its date is SOURCE_DATE_EPOCH
"""
import datetime
import hashlib
import json
import os
import pathlib
import re
import sys

import components
import packages

UNKNOWN = "NOASSERTION"


def spdx_id(kind, name):
    readable = re.sub(r"[^A-Za-z0-9.-]+", "-", name)
    return f"SPDXRef-{kind}-{readable}-{hashlib.sha256(name.encode()).hexdigest()[:8]}"


def checksums(data):
    return [{"algorithm": name, "checksumValue": hashlib.new(name.lower(), data).hexdigest()}
            for name in ("SHA1", "SHA256")]


def is_binary(data):
    return data.startswith((b"MZ", b"\x7fELF"))


class Document:
    def __init__(self, package):
        self.path = pathlib.Path(package)
        self.files = packages.files_of(package)
        self.packages = {}
        self.relationships = []
        self.root = self.add_root()
        self.relate("SPDXRef-DOCUMENT", "DESCRIBES", self.root)

    def relate(self, one, kind, other):
        entry = {"spdxElementId": one, "relationshipType": kind, "relatedSpdxElement": other}
        if entry not in self.relationships:
            self.relationships.append(entry)

    def add_package(self, name, version, licence, **more):
        identity = spdx_id("Package", f"{name} {version}")
        self.packages.setdefault(identity, {
            "SPDXID": identity, "name": name, "versionInfo": version or UNKNOWN, "downloadLocation": UNKNOWN,
            "filesAnalyzed": False, "licenseConcluded": licence, "licenseDeclared": licence,
            "copyrightText": UNKNOWN, **more})
        return identity

    def add_root(self):
        sums = sorted(hashlib.sha1(data).hexdigest() for data in self.files.values())
        code = hashlib.sha1("".join(sums).encode()).hexdigest()
        return self.add_package(
            "shelf-camera-tool", packages.version_of(self.path), components.OWN_LICENCE,
            packageFileName=self.path.name, checksums=checksums(self.path.read_bytes()), filesAnalyzed=True,
            packageVerificationCode={"packageVerificationCodeValue": code},
            licenseInfoFromFiles=[components.OWN_LICENCE], supplier="Organization: shelf-camera-tool maintainers",
            primaryPackagePurpose="INSTALL" if self.path.suffix != ".zip" else "ARCHIVE")

    def add_debian_origin(self, component):
        version = components.debian_version(component.debian)
        if not version:
            return {}
        locator = f"pkg:deb/debian/{component.debian}@{version}".replace("+", "%2B")
        return {"externalRefs": [{"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl",
                                  "referenceLocator": locator}]}

    def add_component(self, component, version):
        version = version or components.debian_version(component.debian)
        return self.add_package(component.name, version, component.licence, **self.add_debian_origin(component))

    def add_foreign_file(self, name, data, component):
        """A library as a package of its own."""
        version = components.file_version(data) or components.debian_version(component.debian)
        identity = self.add_package(name, version, component.licence, packageFileName=name,
                                    checksums=checksums(data), **self.add_debian_origin(component))
        self.relate(self.root, "CONTAINS", identity)
        return identity

    def add_file(self, name, data):
        component = components.component_of(name) if self.path.suffix != ".deb" else None
        licence = component.licence if component else self.licence_of(name)
        file = {"SPDXID": spdx_id("File", name), "fileName": f"./{name}", "checksums": checksums(data),
                "licenseConcluded": licence, "licenseInfoInFiles": [UNKNOWN], "copyrightText": UNKNOWN}
        self.relate(self.root, "CONTAINS", file["SPDXID"])
        holder = self.add_foreign_file(name, data, component) if component else file["SPDXID"]
        if is_binary(data) and component is not components.NSIS:
            for inner, version in components.inner_components(data):
                self.relate(holder, "STATIC_LINK", self.add_component(inner, version))
        return file

    @staticmethod
    def licence_of(name):
        is_licence = name.startswith("licenses/") or name.endswith("/copyright")
        return UNKNOWN if is_licence else components.OWN_LICENCE

    def add_debian_needs(self):
        for field, kind in (("Depends", "DEPENDS_ON"), ("Recommends", "OPTIONAL_DEPENDENCY_OF")):
            for name, condition in packages.debian_relations(self.path, field).items():
                version = components.debian_version(name)
                component = components.Component(name, components.debian_licence(name), name)
                identity = self.add_package(name, version, component.licence,
                                            comment=f"{field}: {name}" + (f" ({condition})" if condition else ""),
                                            **self.add_debian_origin(component))
                ends = (self.root, identity) if kind == "DEPENDS_ON" else (identity, self.root)
                self.relate(ends[0], kind, ends[1])

    def written(self):
        files = [self.add_file(name, data) for name, data in self.files.items()]
        if self.path.suffix == ".deb":
            self.add_debian_needs()
        if self.path.suffix == ".exe":
            self.relate(self.root, "CONTAINS", self.add_component(components.NSIS, ""))
        seconds = int(os.environ.get("SOURCE_DATE_EPOCH") or self.path.stat().st_mtime)
        created = datetime.datetime.fromtimestamp(seconds, datetime.timezone.utc)
        digest = hashlib.sha256(self.path.read_bytes()).hexdigest()
        return {
            "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT",
            "name": self.path.name, "documentNamespace": f"https://shelf-camera-tool.invalid/spdx/{digest}",
            "creationInfo": {"created": created.strftime("%Y-%m-%dT%H:%M:%SZ"),
                             "creators": ["Organization: shelf-camera-tool maintainers", "Tool: makesbom"]},
            "documentDescribes": [self.root],
            "hasExtractedLicensingInfos": [{"licenseId": components.OWN_LICENCE,
                                            "extractedText": components.OWN_LICENCE_TEXT}],
            "packages": list(self.packages.values()), "files": files, "relationships": self.relationships}


def main():
    package, target = sys.argv[1:3]
    text = json.dumps(Document(package).written(), indent=1, ensure_ascii=False)
    pathlib.Path(target).write_text(text + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
