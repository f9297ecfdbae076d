"""Writes sources that include several of the project's, so that a checker reads their headers once, and the list of
commands for these. Sources of one unit are compiled with the same flags.

Usage: tidy_units.py COMMANDS-FOLDER UNITS-FOLDER <SOURCES     SOURCES: absolute paths, one a line
Prints the sources that have no command.
"""
import collections
import json
import os
import re
import shutil
import sys

LARGEST_UNIT = 9  # with more, local names of one folder meet


def read_commands(folder, wanted):
    """{flags: [source]}, and the folder in which the commands run."""
    with open(os.path.join(folder, "compile_commands.json"), encoding="utf-8") as file:
        entries = json.load(file)
    groups = collections.defaultdict(list)
    for entry in entries:
        source = entry["file"]
        if source in wanted:
            # A source of two targets is checked once.
            wanted.remove(source)
            groups[re.sub(r" -o \S+ -c \S+$", "", entry["command"])].append(source)
    return groups, entries[0]["directory"]


def has_main(source):
    with open(source, encoding="utf-8") as file:
        return re.search(r"^int main\(", file.read(), re.MULTILINE) is not None


def units_of(sources):
    """Units of about the same size, with one main function each at most."""
    mains = [source for source in sources if has_main(source)]
    others = [source for source in sources if source not in mains]
    count = max(-(-len(sources) // LARGEST_UNIT), len(mains))
    units = [[main] for main in mains] + [[] for _ in range(count - len(mains))]
    size = -(-len(sources) // count)
    for unit in units:
        room = size - len(unit)
        unit += others[:room]
        others = others[room:]
    return [unit for unit in units if unit]


def main():
    commands_folder, units_folder = sys.argv[1:3]
    wanted = set(sys.stdin.read().split("\n")) - {""}
    groups, directory = read_commands(commands_folder, wanted)
    shutil.rmtree(units_folder, ignore_errors=True)
    os.makedirs(units_folder)
    entries = []
    for flags, sources in groups.items():
        for unit in units_of(sorted(sources)):
            path = os.path.join(units_folder, f"unit{len(entries):03}.cpp")
            with open(path, "w", encoding="utf-8") as file:
                file.writelines(f'#include "{source}" // NOLINT(bugprone-suspicious-include)\n' for source in unit)
            entries.append({"directory": directory, "file": path, "command": f"{flags} -c {path}"})
    with open(os.path.join(units_folder, "compile_commands.json"), "w", encoding="utf-8") as file:
        json.dump(entries, file, indent=0)
    for source in sorted(wanted):
        print(source)


if __name__ == "__main__":
    main()
