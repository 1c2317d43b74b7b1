#!/usr/bin/env python3
"""Usage: coverage.py COUNTS.json LINES BRANCHES

Prints the shares of lines and branches that gcovr has counted, and every line with a branch that was
not taken, without branches that only an exception of a called function takes. Fails when a share
is below the given percentage."""

import json
import sys
from pathlib import Path

counts, least_lines, least_branches = sys.argv[1], float(sys.argv[2]), float(sys.argv[3])
lines = lines_run = branches = branches_taken = 0
for file in json.loads(Path(counts).read_text(encoding="utf-8"))["files"]:
    text = Path(file["file"]).read_text(encoding="utf-8").split("\n")
    for line in file["lines"]:
        if line.get("gcovr/noncode"):
            continue
        own = [branch["count"] > 0 for branch in line["branches"] if not branch["throw"]]
        lines += 1
        lines_run += line["count"] > 0
        branches += len(own)
        branches_taken += sum(own)
        if line["count"] == 0 or not all(own):
            print(f"{file['file']}:{line['line_number']}: {len(own) - sum(own)} of {len(own)} "
                  f"branches, run {line['count']} times: {text[line['line_number'] - 1].strip()}")
share_of_lines, share_of_branches = 100 * lines_run / lines, 100 * branches_taken / branches
print(f"lines: {share_of_lines:.1f} % of {lines}, branches: {share_of_branches:.1f} % of {branches}")
sys.exit(share_of_lines < least_lines or share_of_branches < least_branches)
