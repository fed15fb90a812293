#!/usr/bin/env python3
"""Writes the README's comparison with peers from the figures in docs/performance.md: peer_table.py [--check]

With --check nothing is written; the exit status is 1 when the README says something else than the figures.
"""
import os
import re
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
README = os.path.join(ROOT, "README.md")
PEERS = ("FFMS2", "OpenCV")
JUMPS_IN_A_JOB = 200
WRONG = "Wrong frames: ours / FFMS2 / OpenCV"
BEGIN = "<!-- written by benchmarks/peer_table.py from docs/performance.md -->\n"
END = "<!-- end -->\n"


def cells_of(line):
    return [cell.strip() for cell in line.strip().strip("|").split("|")]


def tables(text):
    """Every table of the page as a list of rows, each a dictionary by column."""
    for block in re.findall(r"(?:^\|.*\n)+", text, re.MULTILINE):
        head, _, *rows = block.splitlines()
        names = cells_of(head)
        yield [dict(zip(names, cells_of(row))) for row in rows]


def span(values):
    values = [float(value.strip("*")) for value in values if value]
    if not values:
        return "-"
    low, high = "%.2f" % min(values), "%.2f" % max(values)
    return low if low == high else low + " to " + high


def ratios(label, rows):
    columns = ["Ours / limit"] + [peer + " / limit" for peer in PEERS]
    return [label] + [span(row[column] for row in rows) for column in columns]


def wrong_frames(label, rows):
    cells = [label]
    for i in range(1 + len(PEERS)):
        counts = [row[WRONG].split(" / ")[i] for row in rows]
        counts = [int(count) for count in counts if count != "-"]
        cells.append("%d of %d" % (sum(counts), len(counts) * JUMPS_IN_A_JOB) if counts else "-")
    return cells


def make_table(page):
    found = list(tables(page))
    jobs = next(rows for rows in found if "Job" in rows[0] and "Ours / limit" in rows[0])
    memory = {row["Reader"]: row["Of that after start, MiB"] for row in next(rows for rows in found if "Reader" in rows[0])}
    reading = [row for row in jobs if row["Job"].startswith("Reading in order")]
    opening = [row for row in jobs if row["Job"].startswith("Opening, index made anew")]
    jumps = [row for row in jobs if row["Job"].startswith("200 pseudo-random jumps")]
    steps = [row for row in jobs if row["Job"].startswith("200 short steps") and row[WRONG]]
    versions = [re.search(peer + r" [\d.]+\d", page).group(0) for peer in PEERS]
    rows = [
        ["", "libzo_video"] + versions,
        ["---"] * (2 + len(PEERS)),
        ratios("Reading in order (1 = bare FFmpeg loop)", reading),
        ratios("Jumping to frames in any order (1 = bare seek and decode)", jumps),
        wrong_frames("Wrong frames after jumps", jumps + steps),
        ratios("Opening with a new index (1 = bare pass over the packets)", opening),
        ["Most memory while reading 1080p H.264, after start", *("%.0f MiB" % float(memory[name]) for name in ("ours", *PEERS))],
    ]
    return "".join("| " + " | ".join(cells) + " |\n" for cells in rows)


def main():
    with open(os.path.join(ROOT, "docs", "performance.md"), encoding="utf-8") as file:
        table = make_table(file.read())
    with open(README, encoding="utf-8") as file:
        old = file.read()
    head, rest = old.split(BEGIN)
    new = head + BEGIN + table + END + rest.split(END, 1)[1]
    if new == old:
        return 0
    if "--check" in sys.argv[1:]:
        print("README.md does not say what docs/performance.md says; run benchmarks/peer_table.py. It would be:\n" + table)
        return 1
    with open(README, "w", encoding="utf-8") as file:
        file.write(new)
    return 0


if __name__ == "__main__":
    sys.exit(main())
