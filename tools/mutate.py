#!/usr/bin/env python3
"""Changes one operator, constant or condition of the acclaim and math layers at a time and tells which changes no test notices.

usage: mutate.py COUNT [SEED]

Works on a copy of the sources in build/mutate, so that the work tree is never touched. A mutant is killed when it does not build or
when a test program fails or does not end in time; one that survives is printed with its place.
"""
import pathlib
import random
import re
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutate"
LAYERS = ("kbaselib/kmath", "qexioplugins/acclaim")
PROGRAMS = ("tests_kbase", "tests_acclaim")
SECONDS = 300

# What stands for what. A word boundary or a blank on both sides keeps templates, includes and comments apart from operators.
SWAPS = [
    (r" \+ ", " - "), (r" - ", " + "), (r" \* ", " / "), (r" / ", " * "),
    (r" == ", " != "), (r" != ", " == "), (r" < ", " <= "), (r" <= ", " < "), (r" > ", " >= "), (r" >= ", " > "),
    (r" && ", " || "), (r" \|\| ", " && "),
    (r"\btrue\b", "false"), (r"\bfalse\b", "true"),
    (r"\b0\b(?!\.)", "1"), (r"\b1\b(?!\.)", "2"), (r"\b2\b(?!\.)", "1"), (r"\b0\.0\b", "1.0"), (r"\b1\.0\b", "0.5"),
    (r"\+\+(?=l?[A-Za-z])", "--"), (r"if \((?!!)", "if (!"), (r"(?<=[(,= ])-(?=[a-zA-Zk])", ""),
]


def code_part(line):
    """The part of a line that is code: no comment, no preprocessor, no text that only people read."""
    if line.lstrip().startswith(("//", "#", "*", "/*", "///")):
        return ""
    return line.split("//")[0]


def find_mutants():
    mutants = []
    for layer in LAYERS:
        for path in sorted((ROOT / layer).glob("*")):
            if path.suffix not in (".h", ".cxx"):
                continue
            for number, line in enumerate(path.read_text().splitlines()):
                code = code_part(line)
                if re.match(r"\s*(class|struct|template|namespace|using|static_assert|enum)\b", code):
                    continue
                for pattern, replacement in SWAPS:
                    for match in re.finditer(pattern, code):
                        mutants.append((path.relative_to(ROOT), number, match.start(), match.end(), replacement))
    return mutants


def run(command, seconds=None, cwd=WORK):
    try:
        return subprocess.run(command, cwd=cwd, timeout=seconds, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False).returncode == 0
    except subprocess.TimeoutExpired:
        return False


def passes():
    return run(["ninja", "-C", "build", *PROGRAMS], 1200) and all(
        run([str(WORK / "build" / program), "--gtest_brief=1"], SECONDS) for program in PROGRAMS)


def prepare():
    files = subprocess.run(["git", "ls-files"], cwd=ROOT, capture_output=True, text=True, check=True).stdout.split("\n")
    for name in filter(None, files):
        source, target = ROOT / name, WORK / name
        if source.is_file() and (not target.exists() or source.read_bytes() != target.read_bytes()):
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(source, target)
    if not run(["cmake", "-G", "Ninja", "-S", ".", "-B", "build", "-DCMAKE_BUILD_TYPE=Debug", "-DQEX_BUILD_APP=OFF", "-DQEX_BUILD_GLTF=OFF"]):
        sys.exit("mutate: configuring failed in build/mutate")
    if not passes():
        sys.exit("mutate: the tests fail without any change")


def main():
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 120
    chooser = random.Random(int(sys.argv[2]) if len(sys.argv) > 2 else 20240)
    prepare()
    mutants = find_mutants()
    chosen = chooser.sample(mutants, min(count, len(mutants)))
    killed = 0
    for index, (name, number, start, end, replacement) in enumerate(chosen):
        target = WORK / name
        original = target.read_text()
        lines = original.splitlines(keepends=True)
        old = lines[number]
        lines[number] = old[:start] + replacement + old[end:]
        target.write_text("".join(lines))
        survived = passes()
        target.write_text(original)
        killed += not survived
        state = "SURVIVED" if survived else "killed"
        print(f"{index + 1}/{len(chosen)} {state} {name}:{number + 1}: {old.strip()}  =>  {lines[number].strip()}", flush=True)
    print(f"{killed} of {len(chosen)} killed ({100 * killed / max(1, len(chosen)):.1f} %), of {len(mutants)} places")
    return 0 if 10 * killed >= 9 * len(chosen) else 1


if __name__ == "__main__":
    sys.exit(main())
