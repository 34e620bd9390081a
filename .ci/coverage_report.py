#!/usr/bin/python3
"""Line and branch coverage of the library's sources, per folder, from a gcovr JSON summary.

Usage: coverage_report.py SUMMARY.json MINIMUM_LINE_PERCENT
Prints one row per folder and the total; exits 1 when total line coverage is below the minimum.
"""
import json
import sys
from collections import defaultdict


def percent(covered, total):
    return 100.0 * covered / total if total else 100.0


def main():
    summary_path, minimum = sys.argv[1], float(sys.argv[2])
    with open(summary_path, encoding="utf-8") as handle:
        summary = json.load(handle)
    folders = defaultdict(lambda: [0, 0, 0, 0])
    for entry in summary["files"]:
        folder = entry["filename"].split("/")[0]
        counts = folders[folder]
        counts[0] += entry["line_covered"]
        counts[1] += entry["line_total"]
        counts[2] += entry["branch_covered"]
        counts[3] += entry["branch_total"]
    print(f"{'folder':<12} {'lines':>16} {'branches':>16}")
    totals = [0, 0, 0, 0]
    for folder in sorted(folders):
        lc, lt, bc, bt = folders[folder]
        totals = [a + b for a, b in zip(totals, folders[folder])]
        print(f"{folder:<12} {percent(lc, lt):6.1f}% ({lc:>5}/{lt:<5}) {percent(bc, bt):6.1f}% ({bc:>5}/{bt:<5})")
    line_percent = percent(totals[0], totals[1])
    print(f"{'total':<12} {line_percent:6.1f}% ({totals[0]:>5}/{totals[1]:<5}) "
          f"{percent(totals[2], totals[3]):6.1f}% ({totals[2]:>5}/{totals[3]:<5})")
    if line_percent < minimum:
        print(f"line coverage {line_percent:.1f}% is below the gate of {minimum:.0f}%")
        return 1
    print(f"line coverage {line_percent:.1f}% meets the gate of {minimum:.0f}%")
    return 0


if __name__ == "__main__":
    sys.exit(main())
