#!/usr/bin/env python3
"""Prints lines per folder, long files and functions, or which folder includes which.

usage: shape.py [--files N] [--functions N] [--includes]

  --files N      report sources longer than N lines (default 400)
  --functions N  report functions longer than N lines (default 60)
  --includes     for each folder, print the folders that it includes, with the number of includes
"""
import argparse
import collections
import pathlib
import re
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent
LAYERS = ("kbaselib/", "qexscene/", "qexclip/", "qexioplugins/", "qexfigure/", "apps/")


def sources():
    names = subprocess.run(["git", "ls-files", "*.h", "*.cxx"], cwd=ROOT, capture_output=True, text=True, check=True).stdout.split()
    return [(name, (ROOT / name).read_text().split("\n")) for name in names]


def folder_of(name):
    return str(pathlib.PurePosixPath(name).parent)


def functions(lines):
    """First line and length of each function, from the line of its opening brace to that of its closing one."""
    for start, line in enumerate(lines):
        if not re.fullmatch(r"(    )?\{", line):
            continue
        indent = line[:-1]
        head = start - 1
        while head > 0 and not re.match(rf"{indent}\S", lines[head]) or re.match(r"\s*[:,]", lines[head]):
            head -= 1
        # Skip classes, namespaces and the like, and initialisers, which have no parameters.
        if re.match(r"\s*(class|struct|enum|union|namespace|extern)\b", lines[head]) or "(" not in lines[head]:
            continue
        end = next((i for i in range(start, len(lines)) if re.match(rf"{indent}\}}", lines[i])), start)
        yield lines[head].strip(), end - start + 1


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--files", type=int, default=400)
    parser.add_argument("--functions", type=int, default=60)
    parser.add_argument("--includes", action="store_true")
    arguments = parser.parse_args()

    all_sources = sources()
    if arguments.includes:
        edges = collections.defaultdict(collections.Counter)
        for name, lines in all_sources:
            for line in lines:
                found = re.match(r"#include <([^>]+/[^>]+)>", line)
                if name.startswith(LAYERS) and found and found.group(1).startswith(LAYERS):
                    edges[folder_of(name)][folder_of(found.group(1))] += 1
        for folder in sorted(edges):
            print(folder + ": " + ", ".join(f"{to} {count}" for to, count in sorted(edges[folder].items()) if to != folder))
        return

    totals = collections.Counter()
    for name, lines in all_sources:
        totals[folder_of(name)] += len(lines) - 1
    for folder in sorted(totals):
        print(f"{totals[folder]:6} {folder}")
    library = sum(count for folder, count in totals.items() if (folder + "/").startswith(LAYERS))
    tests = sum(count for folder, count in totals.items() if folder.startswith("tests"))
    print(f"{library:6} library and program\n{tests:6} tests")
    for name, lines in all_sources:
        if name.startswith(LAYERS) and len(lines) - 1 > arguments.files:
            print(f"long file: {name} {len(lines) - 1}")
        if name.startswith(LAYERS):
            for text, length in functions(lines):
                if length > arguments.functions:
                    print(f"long function: {name}: {text[:80]} {length}")


if __name__ == "__main__":
    main()
