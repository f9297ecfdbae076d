"""What is in a package: its files with their content, and what a Debian package says of itself."""
import pathlib
import re
import subprocess
import tarfile
import tempfile
import zipfile


def _debian_files(package):
    process = subprocess.run(["dpkg-deb", "--fsys-tarfile", package], capture_output=True, check=True)
    with tempfile.TemporaryFile() as file:
        file.write(process.stdout)
        file.seek(0)
        with tarfile.open(fileobj=file) as archive:
            return {member.name.removeprefix("./"): archive.extractfile(member).read()
                    for member in archive if member.isfile()}


def _zip_files(package):
    with zipfile.ZipFile(package) as archive:
        return {name.partition("/")[2]: archive.read(name) for name in archive.namelist() if not name.endswith("/")}


def _installer_files(package):
    """Those that it installs, and under $PLUGINSDIR what it works with."""
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(["7zz", "x", "-y", f"-o{folder}", package], stdout=subprocess.DEVNULL, check=True)
        paths = sorted(path for path in pathlib.Path(folder).rglob("*") if path.is_file())
        return {str(path.relative_to(folder)): path.read_bytes() for path in paths}


def files_of(package):
    """{name: content}"""
    kinds = {".deb": _debian_files, ".zip": _zip_files, ".exe": _installer_files}
    return dict(sorted(kinds[pathlib.Path(package).suffix](package).items()))


def debian_relations(package, field):
    """{package: condition} of Depends or Recommends."""
    text = subprocess.run(["dpkg-deb", "--field", package, field], capture_output=True, text=True, check=True).stdout
    return {name: condition for name, condition in re.findall(r"([a-z0-9.+-]+)(?: \(([^)]*)\))?(?:, |\n|$)", text)}


def version_of(package):
    """In its name."""
    return re.search(r"shelf-camera-tool[-_](\d+(?:\.\d+)*)", pathlib.Path(package).name)[1]
