#!/usr/bin/env python3
"""How the time of the multi-pass qualities divides among their stages.

The benchmark runs one quality alone under perf. The samples that fall into the library are counted
by function, a function belongs to a stage, and the quality's time is divided accordingly.

    bench/stages.py build/dev/bench/ppl_bench [--markdown docs/performance.md]
"""

import argparse
import collections
import json
import os
import re
import subprocess
import sys
import tempfile

# In the order of the data. The first whose expression is found in a function's name takes it.
STAGES = {
    "front end": r"look_up|front_end",
    "repair": r"repair",
    "flat cells": r"flat_cells|stale|FlatCell",
    "green": r"green",
    "demosaic": r"demosaic|difference",
    "matrix": r"matrix|apply_rows|studio_line|full_line|rgb_line",
    "enhancement": r"gradient|laplacian|enhance|grey_pair|median",
    "emission": r"[Ee]mission|emit|chroma|box",
}
OTHER = "rest"
QUALITIES = (0, 1, 2, 10, 11, 12, 14)
REPAIRING = (0, 1, 2)


def stage_of(function):
    # Arguments, among them those of templates, name other stages' types.
    name = re.sub(r"[(<].*", "", function.replace("(anonymous namespace)::", ""))
    return next((stage for stage, names in STAGES.items() if re.search(names, name)), OTHER)


def run(*command, **options):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, **options).stdout


def profile(program, route, rounds, folder, functions):
    """Nanoseconds per pixel of each stage, and of all of them."""
    data, figures = os.path.join(folder, "perf.data"), os.path.join(folder, "figures.json")
    run("perf", "record", "-q", "-F", "5000", "-o", data, program, "--topic", "chains", "--filter",
        f"^chains/{route}$", "--alone", "--rounds", str(rounds), "--json", figures,
        stderr=subprocess.DEVNULL)
    with open(figures, encoding="utf-8") as file:
        minimum = next(b for b in json.load(file)["benchmarks"] if b["aggregate_name"] == "minimum")
    total = minimum["ns_per_pixel"]
    tier = f"ppl::{route.split('/')[2].lower()}::"
    samples = collections.Counter()
    report = run("perf", "report", "-i", data, "--stdio", "-t", "\t", "-F", "sample,sym",
                 stderr=subprocess.DEVNULL)
    for line in report.splitlines():
        count, _, function = line.strip().partition("\t")
        if count.strip().isdigit() and tier in function:
            function = function.removeprefix("[.]").strip()
            samples[stage_of(function)] += int(count)
            functions[stage_of(function)][function] += int(count)
    if not samples:
        sys.exit(f"perf has seen no function of {tier} in {route}")
    return {s: total * n / sum(samples.values()) for s, n in samples.items()}, total


def table(rows):
    stages = [s for s in (*STAGES, OTHER) if any(s in costs for _, costs, _ in rows)]
    lines = ["| ns/pixel | " + " | ".join(stages) + " | sum |",
             "|---" + "|---:" * (len(stages) + 1) + "|"]
    for name, costs, total in rows:
        cells = [f"{costs[s]:.2f}" if costs.get(s, 0) >= 0.005 else "" for s in stages]
        lines.append(f"| {name} | " + " | ".join(cells) + f" | {total:.2f} |")
    return "\n".join(lines) + "\n"


def put_under_heading(path, text):
    """Replaces the one table under the heading "Stages"."""
    with open(path, encoding="utf-8") as file:
        before = file.read()
    after, count = re.subn(r"(?s)(\n## Stages\n[^|]*)\|.*?\n(?=\n)", lambda m: m[1] + text, before)
    if count != 1:
        sys.exit(f'{path} has no table under a heading "Stages"')
    with open(path, "w", encoding="utf-8") as file:
        file.write(after)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n", maxsplit=1)[0])
    parser.add_argument("program")
    parser.add_argument("--size", default="1280x1024")
    parser.add_argument("--format", default="I420")
    parser.add_argument("--rounds", type=int, default=200)
    parser.add_argument("--markdown", help='put the table under the heading "Stages" of this file')
    parser.add_argument("--functions", action="store_true", help="tell what was counted as what")
    options = parser.parse_args()

    functions = collections.defaultdict(collections.Counter)
    rows = []
    with tempfile.TemporaryDirectory() as folder:
        for tier in ("P3", "SSE2"):
            for quality in [str(q) for q in QUALITIES] + [f"{q}-repair" for q in REPAIRING]:
                if quality == "14" and options.format.startswith("RGB"):
                    continue
                route = f"{options.size}/{options.format}/{tier}/quality{quality}"
                rows.append((f"quality {quality.replace('-', ', ')}, {tier}",
                             *profile(options.program, route, options.rounds, folder, functions)))
    print(table(rows), end="")
    if options.functions:
        for stage, counts in functions.items():
            for function, count in counts.most_common():
                print(f"{stage}: {count} {function}")
    if options.markdown:
        put_under_heading(options.markdown, table(rows))


if __name__ == "__main__":
    main()
