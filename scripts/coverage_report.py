"""Reads gcovr's JSON report and prints the tables of coverage.md: a table for each folder, and what of link/ no
test reaches, with its reason. Ends with 1 if something has no reason.

Usage: coverage_report.py REPORT REASONS     from the root of the project
"""
import json
import os
import sys

FOLDERS = ["link", "link/protocol", "trace", "linkaccess", "pictures", "updates", "dialogs", "app", "emulator", "demo"]


class Source:
    """One file: which of its lines run, and which of its decisions went both ways."""

    def __init__(self, report):
        self.name = report["file"]
        with open(self.name, encoding="utf-8") as file:
            text = [line.strip() for line in file]
        runs = {}
        self.decisions = {}  # (line, outcome): count
        for line in report["lines"]:
            if line.get("gcovr/noncode"):
                continue
            number = line["line_number"]
            # Templates stand in the report once for each instance.
            runs[number] = runs.get(number, 0) + line["count"]
            # A log text with a word like "for" in it is no decision.
            if not text[number - 1].startswith(("diagnostics::line(", "qDebug")):
                self.count_decision(number, line.get("gcovr/decision") or {})
        self.lines = len(runs)
        self.unrun = [(number, text[number - 1]) for number in sorted(runs) if runs[number] == 0]
        self.untaken = sorted(
            (number, f"{outcome}: {text[number - 1]}")
            for (number, outcome), count in self.decisions.items()
            if count == 0 and runs[number] > 0
        )

    def count_decision(self, number, decision):
        counts = {"conditional": {"never true": "count_true", "never false": "count_false"},
                  "switch": {"never": "count"}}
        for outcome, key in counts.get(decision.get("type"), {}).items():
            place = (number, outcome)
            self.decisions[place] = self.decisions.get(place, 0) + decision[key]


def share(part, whole):
    return f"{100 * part / whole:.1f} %" if whole else "-"


def row(name, sources):
    lines = sum(source.lines for source in sources)
    unrun = sum(len(source.unrun) for source in sources)
    decisions = [count for source in sources for count in source.decisions.values()]
    taken = sum(count > 0 for count in decisions)
    print(f"| {name} | {len(sources)} | {lines} | {unrun} | {share(lines - unrun, lines)} | "
          f"{len(decisions)} | {share(taken, len(decisions))} |")


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        sources = [Source(report) for report in json.load(file)["files"]]
    with open(sys.argv[2], encoding="utf-8") as file:
        reasons = dict(line.rstrip("\n").split("\t") for line in file if "\t" in line)
    print("| Folder | Files | Lines | Not run | Lines run | Outcomes of decisions | Taken |")
    print("|---|---:|---:|---:|---:|---:|---:|")
    for folder in FOLDERS:
        chosen = [source for source in sources if os.path.dirname(source.name) == folder]
        if chosen:
            row(f"`{folder}/`", chosen)
    row("all", sources)

    print("\n## What of link/ no test reaches\n")
    missing = 0
    found = [(source.name, place) for source in sources if source.name.startswith("link/")
             for place in source.unrun + source.untaken]
    for name, (number, text) in found:
        reason = reasons.get(f"{name}:{text}")
        missing += reason is None
        print(f"- `{name}:{number}`, `{text}`: {reason or '**a test is missing**'}")
    if not found:
        print("Nothing.")
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main())
