#!/usr/bin/env python3
"""Checks that the sources of each target compile as one source, in several orders, so that any grouping of a unity build works.

usage: unity.py BUILD-FOLDER [TARGET...]

BUILD-FOLDER must be configured with compile commands; nothing is built.
"""
import collections
import json
import pathlib
import random
import re
import subprocess
import sys
import tempfile


def targets(commands):
    found = collections.defaultdict(list)
    for command in commands:
        name = re.search(r"CMakeFiles/([^/]+)\.dir/", command["command"])
        if name and not re.search(r"/(Unity|cmake_pch)", command["file"]):
            found[name.group(1)].append(command)
    return {name: sorted(group, key=lambda command: command["file"]) for name, group in found.items() if len(group) > 1}


def orders(files):
    yield "sorted", files
    yield "reversed", files[::-1]
    yield "shuffled", random.Random(1).sample(files, len(files))


def errors(command, files, folder):
    """The compiler's first errors for the files as one source."""
    source = pathlib.Path(folder) / "unity.cxx"
    source.write_text("".join(f'#include "{file}"\n' for file in files))
    line = re.sub(r" -o \S+", "", command["command"]).replace(command["file"], str(source)).replace(" -c ", " -fsyntax-only ")
    result = subprocess.run(line, shell=True, cwd=command["directory"], capture_output=True, text=True, check=False)
    return [] if result.returncode == 0 else [line for line in result.stderr.split("\n") if "error:" in line][:10]


def main():
    commands = json.loads((pathlib.Path(sys.argv[1]) / "compile_commands.json").read_text())
    failed = 0
    with tempfile.TemporaryDirectory() as folder:
        for name, group in sorted(targets(commands).items()):
            if sys.argv[2:] and name not in sys.argv[2:]:
                continue
            for order, files in orders([command["file"] for command in group]):
                found = errors(group[0], files, folder)
                failed += bool(found)
                print(f"{name}, {order}: {len(files)} sources{', fails' if found else ''}")
                print("".join(f"  {line}\n" for line in found), end="")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
