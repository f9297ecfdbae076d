"""Foreign parts of the packages: how they are recognised, and their licences."""
import dataclasses
import fnmatch
import re
import subprocess

OWN_LICENCE = "LicenseRef-none-stated"
OWN_LICENCE_TEXT = "All rights reserved. No licence has been stated for these programs."

QT_LICENCE = "LGPL-3.0-only OR GPL-2.0-only OR GPL-3.0-only"
GCC_LICENCE = "GPL-3.0-or-later WITH GCC-exception-3.1"


@dataclasses.dataclass(frozen=True)
class Component:
    name: str
    licence: str
    debian: str = ""  # Debian package that brings it, or its source
    notice: str = ""  # its text in the Windows packages, licenses/NOTICE.txt
    mark: bytes = b""  # in binaries that hold it; a group is the version
    in_elf: bool = True  # False: a library of the system there


QT = Component("Qt", QT_LICENCE, "qt6-base-dev", "Qt")
GCC = Component("GCC runtime", GCC_LICENCE, "gcc-mingw-w64-x86-64-posix-runtime", "GCC-runtime")
WINPTHREADS = Component("winpthreads", "MIT AND BSD-3-Clause", "mingw-w64-x86-64-dev", "MinGW-w64-runtime")
NSIS = Component("NSIS", "Zlib AND CPL-1.0 WITH LZMA-exception", "nsis", "NSIS")
TRANSLATIONS = Component("Qt translations", "GPL-3.0-only WITH Qt-GPL-exception-1.0", "qt6-translations-l10n",
                         "Qt-translations")

# Files of the Windows packages that are not the project's.
FOREIGN_FILES = [
    ("Qt6*.dll", QT),
    ("platforms/*.dll", QT),
    ("styles/*.dll", QT),
    ("imageformats/*.dll", QT),
    ("libgcc_s_seh-1.dll", GCC),
    ("libstdc++-6.dll", GCC),
    ("libwinpthread-1.dll", WINPTHREADS),
    ("translations/*.qm", TRANSLATIONS),
    ("$PLUGINSDIR/*", NSIS),
]

# Parts inside binaries, found by their marks.
INNER = [
    Component("CLI11", "BSD-3-Clause", "libcli11-dev", "CLI11", rb"N3CLI3AppE"),
    Component("serial", "MIT", "libcxx-serial-dev", "serial", rb"N6serial11IOExceptionE", in_elf=False),
    Component("MinGW-w64 runtime", "ZPL-2.1", "mingw-w64-x86-64-dev", "MinGW-w64-runtime",
              rb"Mingw-w64 runtime failure"),
    Component("zlib", "Zlib", "", "Qt", rb" inflate ([0-9.]+) Copyright"),
    Component("PCRE2", "BSD-3-Clause", "", "Qt", rb"(10\.[0-9]+) 20[0-9]{2}-[0-9]{2}-[0-9]{2}"),
    Component("libpng", "libpng-2.0", "", "Qt", rb"libpng version ([0-9.]+) "),
    Component("libjpeg-turbo", "IJG AND BSD-3-Clause AND Zlib", "", "Qt", rb"libjpeg-turbo version ([0-9.]+) "),
    Component("FreeType", "FTL OR GPL-2.0-only", "", "Qt", rb"FREETYPE_PROPERTIES"),
    Component("HarfBuzz", "MIT-Modern-Variant", "", "Qt", rb"HB_SHAPER_LIST"),
]

# Licences of what the Debian package depends on.
DEBIAN_LICENCES = {
    "libc6": "LGPL-2.1-or-later",
    "libcxx-serial1": "MIT",
    "libgcc-s1": GCC_LICENCE,
    "libstdc++6": GCC_LICENCE,
    "libqt6*": QT_LICENCE,
    "fonts-noto-cjk": "OFL-1.1",
    "qt6-translations-l10n": TRANSLATIONS.licence,
    "xdg-user-dirs": "GPL-2.0-or-later",
}


def component_of(name):
    """The component of a foreign file in a Windows package, or None."""
    return next((component for pattern, component in FOREIGN_FILES if fnmatch.fnmatchcase(name, pattern)), None)


def inner_components(data):
    """[(component, version)] of what a binary holds; the version is empty where it does not say."""
    found = []
    is_elf = data.startswith(b"\x7fELF")
    for component in INNER:
        if is_elf and not component.in_elf:
            continue
        if match := re.search(component.mark, data):
            found.append((component, match[1].decode() if match.re.groups else ""))
    return found


def debian_licence(package):
    for pattern, licence in DEBIAN_LICENCES.items():
        if fnmatch.fnmatchcase(package, pattern):
            return licence
    raise SystemExit(f"{package}: no licence is known; add it to {__file__}")


def debian_version(package):
    """Of the installed package, or of the one that would be; empty where dpkg and apt know none."""
    if not package:
        return ""
    for command in (["dpkg-query", "--show", "--showformat=${Version}\n", package],
                    ["apt-cache", "show", "--no-all-versions", package]):
        output = subprocess.run(command, capture_output=True, text=True, check=False).stdout
        if match := re.search(r"^(?:Version: )?(\d\S*)$", output, re.MULTILINE):
            return match[1]
    return ""


def file_version(data):
    """That of a Windows program's resources, without a last zero; empty without them."""
    at = data.find(b"\xbd\x04\xef\xfe")
    if at < 0:
        return ""
    words = [int.from_bytes(data[at + offset:at + offset + 2], "little") for offset in (10, 8, 14, 12)]
    return ".".join(map(str, words)).removesuffix(".0")
