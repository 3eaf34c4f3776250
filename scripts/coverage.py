"""Prints what the tests reached, from the counts of a build for coverage.

    coverage.py BUILD
"""
import json
import subprocess
import sys
from collections import defaultdict
from pathlib import Path

BUILD = Path(sys.argv[1])
FOLDERS = ("plugin", "image", "record", "geometry", "binding", "schema", "platform/lmx", "platform/gridkit",
           "platform/handlepool", "platform/debug", "platform/rmdllib")
GOAL = {folder: (95, 90) for folder in ("plugin", "image", "geometry", "binding")}


def counts():
    """By file: lines reached and all, branches reached and all, and the lines to look at."""
    command = ["gcovr", "--root", ".", "--json", "-", "--exclude-throw-branches",
               "--exclude-unreachable-branches", str(BUILD)]
    for folder in FOLDERS:
        command += ["--filter", folder + "/"]
    told = json.loads(subprocess.run(command, check=True, capture_output=True, text=True).stdout)
    for file in told["files"]:
        lines = [line for line in file["lines"] if not line.get("gcovr/noncode", False)]
        branches = [(line["line_number"], branch) for line in lines for branch in line["branches"]
                    if not branch.get("throw", False)]
        missed = sorted({line["line_number"] for line in lines if line["count"] == 0})
        halves = sorted({number for number, branch in branches if branch["count"] == 0} - set(missed))
        yield (file["file"],
               [sum(line["count"] > 0 for line in lines), len(lines),
                sum(branch["count"] > 0 for _, branch in branches), len(branches)], missed, halves)


def percent(part, whole):
    return 100.0 * part / whole if whole else 100.0


def main():
    folders = defaultdict(lambda: [0, 0, 0, 0])
    with open(BUILD / "report.txt", "w") as report:
        for name, figures, missed, halves in sorted(counts()):
            folder = max((f for f in FOLDERS if name.startswith(f + "/")), key=len)
            folders[folder] = [a + b for a, b in zip(folders[folder], figures)]
            report.write(f"{name}: lines {figures[0]}/{figures[1]}, branches {figures[2]}/{figures[3]}\n")
            if missed:
                report.write(f"  lines never reached: {', '.join(map(str, missed))}\n")
            if halves:
                report.write(f"  lines with a branch never taken: {', '.join(map(str, halves))}\n")
    print(f"{'folder':<22}{'lines':>17}{'branches':>19}")
    for folder in FOLDERS:
        lines, all_lines, branches, all_branches = folders[folder]
        reached = percent(lines, all_lines), percent(branches, all_branches)
        goal = GOAL.get(folder, (0, 0))
        short = "  below the goal of 95 % and 90 %" if any(r < g for r, g in zip(reached, goal)) else ""
        print(f"{folder:<22}{lines:>5}/{all_lines:<5}{reached[0]:>5.1f}%"
              f"{branches:>6}/{all_branches:<5}{reached[1]:>6.1f}%{short}")


if __name__ == "__main__":
    main()
