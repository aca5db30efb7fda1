#!/usr/bin/env python3
"""Mutation tests: changes one operator, constant or condition of the acclaim and math layers at a time and reports the changes that no
test detects.

usage: mutate.py [COUNT] [--seed N] [--skip N] [-j JOBS] [--at FILE[:LINE]]

Works on a copy of the sources in build/mutate; the work tree is never changed. A mutant is killed when a test fails or crashes, or when
the tests need over about four times their usual CPU time or over 4 GiB. Mutants that do not build, and equivalent mutants, which
tools/equivalent-mutants.json lists with a reason, are counted separately and replaced by others. ASF_CORPUS_DIR, ASF_ORACLE_DIR and
ASF_VECTORS_DIR are passed to the tests.
"""
import argparse
import json
import os
import pathlib
import random
import re
import resource
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutate"
BUILD = WORK / "build"

# Test programs of each layer, the fastest to build first: each is built only when the previous ones pass.
PROGRAMS = {
    "kbaselib/kmath": ("tests_kmath", "tests_acclaim"),
    "qexioplugins/acclaim": ("tests_acclaim",),
}
SLOW_SECONDS = 0.25  # Tests that take longer run last: most mutants are killed before.
MEMORY = 4 << 30

# Patterns and replacements. Word boundaries and the blanks around operators exclude templates, includes and pointers.
SWAPS = [
    (r" \+ ", " - "), (r" - ", " + "), (r" \* ", " / "), (r" / ", " * "),
    (r" == ", " != "), (r" != ", " == "), (r" < ", " <= "), (r" <= ", " < "), (r" > ", " >= "), (r" >= ", " > "),
    (r" && ", " || "), (r" \|\| ", " && "),
    (r"\btrue\b", "false"), (r"\bfalse\b", "true"),
    (r"(?<!\.)\b0\b(?!\.)", "1"), (r"(?<!\.)\b1\b(?!\.)", "2"), (r"(?<!\.)\b2\b(?!\.)", "1"), (r"\b0\.0\b", "1.0"), (r"\b1\.0\b", "0.5"),
    (r"\+\+(?=l?[A-Za-z])", "--"), (r"if \((?!!)", "if (!"), (r"(?<=[(,= ])-(?=[a-zA-Zk])", ""),
]


def code_part(line):
    """The code of a line, columns unchanged, without comments, preprocessor directives and the contents of string literals."""
    if line.lstrip().startswith(("//", "#", "*", "/*", "///")):
        return ""
    without_texts = re.sub(r'"(\\.|[^"\\])*"', lambda text: '"' + "_" * (len(text[0]) - 2) + '"', line)
    return without_texts.split("//")[0]


class Mutant:
    """A replacement of some columns of one line."""

    def __init__(self, layer, name, number, start, end, replacement):
        self.layer, self.name, self.number = layer, name, number
        self.start, self.end, self.replacement = start, end, replacement

    def apply(self):
        """Changes the copy. Returns the previous line, and the line before and after the change."""
        path = WORK / self.name
        lines = path.read_text().splitlines(keepends=True)
        before = lines[self.number]
        lines[self.number] = before[:self.start] + self.replacement + before[self.end:]
        path.write_text("".join(lines))
        return lines[self.number - 1].strip(), before.strip(), lines[self.number].strip()


def find_mutants(where):
    """All mutants of the copy, or those at FILE or FILE:LINE."""
    name_wanted, _, line_wanted = (where or "").partition(":")
    mutants = []
    for layer in PROGRAMS:
        for path in sorted((WORK / layer).rglob("*")):
            name = str(path.relative_to(WORK))
            if path.suffix not in (".h", ".cxx") or not name.endswith(name_wanted):
                continue
            for number, line in enumerate(path.read_text().splitlines()):
                if line_wanted and number + 1 != int(line_wanted):
                    continue
                mutants += line_mutants(layer, name, number, code_part(line))
    return mutants


def line_mutants(layer, name, number, code):
    # Changes of declarations do not build or have no effect.
    if re.match(r"\s*(class|struct|template|namespace|using|static_assert|enum)\b", code):
        return []
    return [Mutant(layer, name, number, match.start(), match.end(), replacement)
            for pattern, replacement in SWAPS for match in re.finditer(pattern, code)]


class EquivalentMutants:
    """Mutants known to be equivalent, by file and line before and after the change, and by the previous line where that is ambiguous.
    Initial counts in keyword tables are always equivalent: they are cleared first or never read."""

    def __init__(self):
        entries = json.loads((ROOT / "tools" / "equivalent-mutants.json").read_text())
        self.known = {(entry["file"], entry["before"], entry["after"]): entry.get("above") for entry in entries}

    def contains(self, mutant, above, before, after):
        return self.known.get((mutant.name, before, after), False) in (None, above) or re.search(r'\{"[^"]*", [01]\}', before) is not None


class Program:
    """A test program, its slow tests and the CPU time of its tests without a mutant."""

    def __init__(self, name):
        self.name, self.slow = name, []
        self.quick_seconds = self.slow_seconds = 60.0

    def measure(self):
        report = BUILD / f"{self.name}.json"
        report.unlink(missing_ok=True)
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        if not self.run([f"--gtest_output=json:{report}"], 1800):
            sys.exit(f"mutate: {self.name} fails without any change: {', '.join(failed_tests(report)) or 'it crashed or took too long'}")
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        seconds = after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime
        suites = json.loads(report.read_text())["testsuites"]
        tests = [(f"{suite['name']}.{test['name']}", float(test["time"].rstrip("s"))) for suite in suites for test in suite["testsuite"]]
        self.slow = [name for name, clock in tests if clock > SLOW_SECONDS]
        quick_part = sum(clock for _, clock in tests if clock <= SLOW_SECONDS) / max(sum(clock for _, clock in tests), 1e-3)
        self.quick_seconds, self.slow_seconds = quick_part * seconds, (1 - quick_part) * seconds

    def passes(self):
        slow = ":".join(self.slow)
        return self.run([f"--gtest_filter=-{slow}"], 5 + 4 * self.quick_seconds) and (
            not slow or self.run([f"--gtest_filter={slow}"], 5 + 4 * self.slow_seconds))

    def run(self, arguments, seconds):
        """Whether the tests pass within that CPU time. The wall-clock timeout only catches programs that sleep."""
        scratch = WORK / "tmp"
        shutil.rmtree(scratch, ignore_errors=True)
        scratch.mkdir(parents=True)

        def limits():
            resource.setrlimit(resource.RLIMIT_CPU, (int(seconds) + 1, int(seconds) + 1))
            resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

        command = [str(BUILD / self.name), "--gtest_brief=1", "--gtest_fail_fast", *arguments]
        return succeeds(command, 60 + 10 * seconds, preexec_fn=limits, env={**os.environ, "TMPDIR": str(scratch)})


def succeeds(command, seconds=None, **options):
    try:
        return subprocess.run(command, cwd=WORK, timeout=seconds, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, check=False, **options).returncode == 0
    except subprocess.TimeoutExpired:
        return False


def failed_tests(report):
    suites = json.loads(report.read_text())["testsuites"] if report.exists() else []
    return [f"{suite['name']}.{test['name']}" for suite in suites for test in suite["testsuite"] if test.get("failures")]


def build(program, jobs):
    return succeeds(["ninja", "-C", str(BUILD), "-j", str(jobs), program])


def copy_sources():
    listed = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard"], cwd=ROOT, capture_output=True, text=True, check=True)
    names = [name for name in listed.stdout.split("\n") if name and (ROOT / name).is_file()]
    for name in names:
        source, target = ROOT / name, WORK / name
        if not target.exists() or source.read_bytes() != target.read_bytes():
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(source, target)
    for layer in (*PROGRAMS, "kbaselib", "qexscene", "qexioplugins", "qexfigure", "tests"):
        for path in (WORK / layer).rglob("*"):
            if path.is_file() and not (ROOT / path.relative_to(WORK)).exists():
                path.unlink()


def prepare(programs, jobs):
    copy_sources()
    linker = ["-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld"] if shutil.which("ld.lld") else []
    if not succeeds(["cmake", "-G", "Ninja", "-S", str(WORK), "-B", str(BUILD), "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0",
                     "-DQEX_BUILD_APP=OFF", "-DQEX_BUILD_GLTF=OFF", *linker]):
        sys.exit("mutate: configuring failed in build/mutate")
    for program in programs.values():
        if not build(program.name, jobs):
            sys.exit(f"mutate: {program.name} does not build")
        program.measure()
        print(f"{program.name}: {program.quick_seconds:.0f} s of CPU time and {program.slow_seconds:.0f} s for "
              f"{len(program.slow)} slow tests", flush=True)


class Restored:
    """Restores a file of the copy and its object file afterwards, so that undoing a change needs no compilation."""

    def __init__(self, mutant, programs):
        objects = sorted(BUILD.glob(f"CMakeFiles/*.dir/{mutant.name}.o"))
        self.kept = [WORK / mutant.name, *objects]
        # A header has no object file: its new time makes ninja rebuild the sources that include it.
        self.touch = not objects
        self.linked = [BUILD / "libqexacclaim.a", *(BUILD / name for name in programs)]

    def __enter__(self):
        for path in self.kept:
            shutil.copy2(path, f"{path}.kept")

    def __exit__(self, *_):
        for path in self.kept:
            os.replace(f"{path}.kept", path)
        if self.touch:
            os.utime(self.kept[0])
        for path in self.linked:
            path.unlink(missing_ok=True)


def judge(mutant, programs, jobs):
    """The fate of an applied mutant."""
    for name in PROGRAMS[mutant.layer]:
        if not build(name, jobs):
            return "did not build"
        if not programs[name].passes():
            return "killed"
    return "SURVIVED"


def main():
    parser = argparse.ArgumentParser(description="Reports which changes to the acclaim and math layers no test detects.")
    parser.add_argument("count", nargs="?", type=int, default=120)
    parser.add_argument("--seed", type=int, default=20240)
    parser.add_argument("--skip", type=int, default=0, help="number of mutants to skip, so that two machines can share a run")
    parser.add_argument("-j", "--jobs", type=int, default=int(os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL", os.cpu_count() or 1)))
    parser.add_argument("--at", help="FILE or FILE:LINE: only these mutants")
    options = parser.parse_args()

    programs = {name: Program(name) for names in PROGRAMS.values() for name in names}
    prepare(programs, options.jobs)
    mutants = find_mutants(options.at)
    random.Random(options.seed).shuffle(mutants)
    counts = {"killed": 0, "SURVIVED": 0, "did not build": 0, "equivalent": 0}
    equivalents = EquivalentMutants()
    for mutant in mutants[options.skip:]:
        judged = counts["killed"] + counts["SURVIVED"]
        if judged == options.count:
            break
        with Restored(mutant, programs):
            above, before, after = mutant.apply()
            state = "equivalent" if equivalents.contains(mutant, above, before, after) else judge(mutant, programs, options.jobs)
        counts[state] += 1
        print(f"{judged + 1}/{options.count} {state} {mutant.name}:{mutant.number + 1}: {before}  =>  {after}", flush=True)
    judged = counts["killed"] + counts["SURVIVED"]
    print(f"{counts['killed']} of {judged} killed ({100 * counts['killed'] / max(1, judged):.1f} %), of {len(mutants)} possible mutants; "
          f"{counts['did not build']} more did not build, {counts['equivalent']} are known to be equivalent")
    return 0 if 10 * counts["killed"] >= 9 * judged else 1


if __name__ == "__main__":
    sys.exit(main())
