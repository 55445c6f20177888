#!/usr/bin/python3
"""Mutation testing of src/: which small changes of behaviour do the tests detect?

Draws N places at random and builds one copy of the tree that contains all of these mutants, each switched on by its number in the
environment variable KELUTILS_MUTANT. A first pass without a mutant runs each test case alone and records the mutants that it reaches.
Then each mutant runs the cases that reach it, the quickest first, until some fail, hang or crash twice. Prints the share of killed
mutants and the survivors; those in equivalent.txt cannot change behaviour, and have their reason there.
"""
import argparse
import collections
import concurrent.futures
import json
import os
import pathlib
import random
import re
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import time

from clang import cindex

ROOT = pathlib.Path(__file__).resolve().parents[2]
SWAPPED = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">", "&&": "||", "||": "&&", "+": "-", "-": "+"}
Mutant = collections.namedtuple("Mutant", "file line start end kind text mutated")
Case = collections.namedtuple("Case", "name program pattern")
QUICK = 2  # seconds: quicker cases of a program run in one process
EQUIVALENT = pathlib.Path(__file__).with_name("equivalent.txt")

HEADER = """#pragma once
bool MutantIs(int number) noexcept;
"""
SOURCE = """#include "mutants.h"
#include <cstdio>
#include <cstdlib>
#ifdef _WIN32
#include <windows.h>
#endif
namespace {
int Active() noexcept { const char* text = std::getenv("KELUTILS_MUTANT"); return text ? std::atoi(text) : -1; }
bool g_reached[100000];
void Note(int number) noexcept {
  static const char* const log = std::getenv("KELUTILS_MUTANT_REACHED");
  if (!log || g_reached[number]) return;
  g_reached[number] = true;
  if (std::FILE* file = std::fopen(log, "a")) { std::fprintf(file, "%d\\n", number); std::fclose(file); }
}
}
bool MutantIs(int number) noexcept {
  static bool known;
  static int active;
  if (known && active >= 0) return active == number;
#ifdef _WIN32
  const unsigned long error = GetLastError();
#endif
  if (!known) active = Active();
  known = true;
  if (active < 0) Note(number);
#ifdef _WIN32
  SetLastError(error);
#endif
  return active == number;
}
"""


def compiler_arguments():
    """Arguments for libclang, by source file: those of the build, with the headers of GCC."""
    folders = subprocess.run("i686-w64-mingw32-g++-win32 -E -x c++ -v - </dev/null 2>&1 | sed -n 's/^ \\(\\/.*\\/c++.*\\)$/\\1/p'",
                             shell=True, capture_output=True, text=True, check=True).stdout.split()
    resources = max(pathlib.Path("/usr/lib/llvm-14/lib/clang").glob("*"))
    common = ["--target=i686-w64-mingw32", "-Wno-everything", f"-resource-dir={resources}"] + ["-isystem" + folder for folder in folders]
    arguments = {}
    for entry in json.loads((ROOT / "build/release/compile_commands.json").read_text()):
        words = shlex.split(entry["command"])
        kept = [word for word in words if re.match(r"-[DI]|-std=", word)]
        arguments.setdefault(entry["file"], kept + common)
    return arguments


def places(path, arguments):
    """All mutants of one source file."""
    data = path.read_bytes()
    found = []
    kind = cindex.CursorKind

    def text(cursor):
        return data[cursor.extent.start.offset:cursor.extent.end.offset].decode()

    def add(cursor, what, mutated, start=None, end=None):
        start = cursor.extent.start.offset if start is None else start
        end = cursor.extent.end.offset if end is None else end
        if b"\n#" in data[start:end] or end <= start:
            return
        found.append(Mutant(path, cursor.location.line, start, end, what, data[start:end].decode(), mutated))

    def visit(cursor, parent, inside):
        location = cursor.location
        if location.file and location.file.name != str(path):
            return
        if cursor.kind in (kind.FUNCTION_DECL, kind.CXX_METHOD, kind.LAMBDA_EXPR, kind.CONSTRUCTOR, kind.FUNCTION_TEMPLATE):
            inside = inside or "constexpr" not in data[cursor.extent.start.offset:cursor.extent.start.offset + 40].decode(errors="replace")
        children = list(cursor.get_children())
        if inside:
            if cursor.kind == kind.BINARY_OPERATOR and len(children) == 2:
                between = data[children[0].extent.end.offset:children[1].extent.start.offset].decode().strip()
                if between in SWAPPED and (between not in "+-" or "*" not in cursor.type.spelling):
                    left, right = text(children[0]), text(children[1])
                    add(cursor, "comparison" if between not in "&&||+-" else "operator", f"({left}) {SWAPPED[between]} ({right})")
            elif cursor.kind == kind.IF_STMT and children and children[0].kind.is_expression():
                add(children[0], "condition", f"!({text(children[0])})")
            elif cursor.kind == kind.INTEGER_LITERAL and parent.kind != kind.CASE_STMT:
                add(cursor, "constant", f"({text(cursor)} + 1)")
            elif cursor.kind == kind.RETURN_STMT and children and children[0].type.get_canonical().spelling in (
                    "bool", "int", "unsigned int", "unsigned long"):
                value = text(children[0])
                if not value.startswith("{"):
                    changed = f"!({value})" if children[0].type.get_canonical().spelling == "bool" else f"({value}) + 1"
                    add(children[0], "result", changed)
            elif cursor.kind == kind.COMPOUND_STMT:
                for child in children:
                    if child.kind == kind.CALL_EXPR:
                        add(child, "dropped call", None)
        for child in children:
            visit(child, cursor, inside)

    unit = cindex.Index.create().parse(str(path), args=arguments)
    visit(unit.cursor, unit.cursor, False)
    unique = {}
    for mutant in found:
        unique.setdefault((mutant.start, mutant.end, mutant.kind), mutant)
    return list(unique.values())


def instrument(data, numbered):
    """The text of a file with its mutants built in."""
    for number, mutant in sorted(numbered, key=lambda pair: -pair[1].start):
        if mutant.mutated is None:
            new = f"if (!MutantIs({number})) {mutant.text}"
        else:
            new = f"(MutantIs({number}) ? ({mutant.mutated}) : ({mutant.text}))"
        data = data[:mutant.start] + new.encode() + data[mutant.end:]
    return b'#include "mutants.h"\n#line 1\n' + data if numbered else data


def overlaps(mutant, chosen):
    return any(mutant.file == other.file and mutant.start < other.end and other.start < mutant.end for other in chosen)


def draw(candidates, wanted, arguments, tree):
    """The first `wanted` mutants, in the order of the candidates, that compile; none within another one."""
    chosen, refused = {}, set()
    commands = {entry["file"]: entry["command"] for entry in json.loads((ROOT / "build/release/compile_commands.json").read_text())}
    position = 0
    while len(chosen) < wanted and position < len(candidates):
        fresh = []
        while len(chosen) + len(fresh) < wanted and position < len(candidates):
            mutant = candidates[position]
            if not overlaps(mutant, list(chosen.values()) + [pair[1] for pair in fresh]):
                fresh.append((position, mutant))
            position += 1
        chosen.update(fresh)
        for path in {mutant.file for _, mutant in fresh}:
            while True:
                mine = [(number, mutant) for number, mutant in chosen.items() if mutant.file == path]
                target = tree / path.relative_to(ROOT)
                target.write_bytes(instrument(path.read_bytes(), mine))
                command = commands[str(path)].replace(str(ROOT / "src"), str(tree / "src"))
                command = re.sub(r" -o \S+ -c", " -fsyntax-only -Wno-error -c", command)
                errors = subprocess.run(command, shell=True, capture_output=True, text=True).stderr
                lines = {int(line) for line in re.findall(re.escape(path.name) + r":(\d+):\d+: (?:fatal )?error", errors)}
                if " error" not in errors or not mine:
                    break
                bad = [number for number, mutant in mine
                       if lines & set(range(mutant.line - 1, mutant.line + 2 + mutant.text.count("\n")))] or [n for n, _ in mine]
                for number in bad:
                    refused.add(number)
                    del chosen[number]
    return chosen


def copy_tree(tree):
    """Copies the working tree, and adds the function that switches mutants on."""
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=ROOT, capture_output=True, text=True, check=True)
    shutil.rmtree(tree / "src", ignore_errors=True)
    for name in listed.stdout.splitlines():
        if (ROOT / name).is_file():
            (tree / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(ROOT / name, tree / name)
    (tree / "src/mutants.h").write_text(HEADER)
    (tree / "src/mutants.cpp").write_text(SOURCE)


def add_to_build(tree, files):
    """Adds the function that switches mutants on to both libraries of src; the changed files may have warnings."""
    lists = (tree / "src/CMakeLists.txt").read_text()
    for library in ("kelutils_pure", "kelutils_files"):
        lists = lists.replace(f"target_link_libraries({library} PUBLIC ", f"target_link_libraries({library} PUBLIC kelutils_mutants ")
    names = " ".join(sorted(str(path.relative_to(ROOT / "src")) for path in files))
    options = f"set_property(SOURCE {names} APPEND PROPERTY COMPILE_OPTIONS -Wno-error)\n"  # at both ends: the native build returns early
    (tree / "src/CMakeLists.txt").write_text(f"add_library(kelutils_mutants STATIC mutants.cpp)\n{options}{lists}\n{options}")


def cases_of(tree, skipped, wine):
    """The test cases of both builds, checks left out: (name, program, pattern of doctest or none)."""
    found = []
    for build in ("native", "release"):
        command = ["ctest", "--test-dir", f"{tree}/build/{build}", "--show-only=json-v1"] + (["-E", skipped] if skipped else [])
        listed = subprocess.run(command, capture_output=True, text=True, check=True, env=wine.variables | {"KELUTILS_WINE_STARTED": "1"})
        for test in json.loads(listed.stdout)["tests"]:
            words = [word for word in test["command"] if not word.endswith("run_wine.sh")]
            if words[-1].startswith("--test-case="):
                found.append(Case(test["name"], words[0], words[-1].removeprefix("--test-case=")))
            elif build == "native":
                found.append(Case(test["name"], words[0], tuple(words[1:])))
    return found


class Wine:
    """A Wine prefix of its own. After each program that crashed or hung, the registry is as at first, and files of tests are removed."""

    def __init__(self, prefix):
        self.variables = dict(os.environ, KELUTILS_WINEPREFIX=str(prefix), WINEPREFIX=str(prefix), WINEDEBUG="-all", LC_ALL="C.UTF-8",
                              WINEDLLOVERRIDES="mscoree,mshtml=")
        self.prefix = prefix
        self.start()
        self.stop()
        self.registry = {path: path.read_bytes() for path in prefix.glob("*.reg")}
        self.start()

    def start(self):
        subprocess.run(["bash", "-c", ". scripts/wine.sh; wine_start"], cwd=ROOT, check=True, env=self.variables, stdout=subprocess.DEVNULL)

    def stop(self):
        for option in ("-k", "-w"):
            subprocess.run(["/usr/lib/wine/wineserver64", option], env=self.variables, check=False)

    def restore(self):
        self.stop()
        for path, content in self.registry.items():
            path.write_bytes(content)
        for left in [*self.prefix.glob("drive_c/users/*/Temp/kelutils-*"), *self.prefix.glob("drive_c/windows/*/GroupPolicy")]:
            shutil.rmtree(left, ignore_errors=True)
        self.start()

    def run(self, cases, environment, limit):
        """Runs cases of one program: "" when they pass, else how they fail."""
        program, pattern = cases[0].program, cases[0].pattern
        command = ["/usr/lib/wine/wine64"] * program.endswith(".exe") + [program]
        command += pattern if isinstance(pattern, tuple) else ["--abort-after=1", "--test-case=" + ",".join(case.pattern for case in cases)]
        with tempfile.TemporaryFile() as output, subprocess.Popen(
                command, cwd=self.prefix, env=self.variables | environment, stdout=output, stderr=output,
                start_new_session=True) as process:
            try:
                if process.wait(limit) == 0:
                    return ""
                output.seek(0)
                how = "fails" if b"[doctest] Status: FAILURE" in output.read() else "crashes"
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)
                how = "hangs"
        if how != "fails" and program.endswith(".exe"):
            self.restore()
        return how


def record(case, wine, log):
    """The seconds that a case takes alone, and the mutants that it reaches; none when it fails."""
    log.unlink(missing_ok=True)
    path = f"Z:{log}".replace("/", "\\") if case.program.endswith(".exe") else str(log)
    start = time.time()
    how = wine.run([case], {"KELUTILS_MUTANT_REACHED": path}, 900) and wine.run([case], {"KELUTILS_MUTANT_REACHED": path}, 900)
    if how:
        print(f"{case.name}: {how} without a mutant, and is left out", flush=True)
        return None
    return time.time() - start, {int(line) for line in log.read_text().split()} if log.exists() else set()


def passes_together(quick, wine):
    """True when the quick cases of a program pass in one process."""
    how = wine.run(quick, {}, 900) and wine.run(quick, {}, 900)
    if how:
        print(f"{quick[0].program}: {how} without a mutant when its quick cases run in one process: each is run alone", flush=True)
    return not how


def judge(number, wine, passes, together, budget):
    """The cases that kill a mutant, and how; none for a survivor. Cases beyond `budget` seconds in all are not run."""
    reaching = sorted((seconds, case) for case, (seconds, reached) in passes.items() if number in reached)
    batches = collections.defaultdict(list)
    for seconds, case in reaching:
        batches[case.program if case in together else case].append((seconds, case))
    for batch in sorted(batches.values(), key=lambda batch: (batch[-1][0] >= QUICK, sum(seconds for seconds, _ in batch))):
        seconds, cases = sum(seconds for seconds, _ in batch), [case for _, case in batch]
        budget -= seconds
        if budget < 0:
            break
        environment, limit = {"KELUTILS_MUTANT": str(number)}, 4 * seconds + 30
        how = wine.run(cases, environment, limit)
        if how and wine.run(cases, environment, limit):
            return f"{how}: {cases[0].name[:50]}{f' or {len(cases) - 1} more' if len(cases) > 1 else ''}"
    return None


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("count", type=int)
    parser.add_argument("seed", type=int)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--budget", type=int, default=600, help="seconds of test cases for a mutant, at most")
    parser.add_argument("--minutes", type=float, default=1e9, help="start no mutant later; only those that were run count")
    parser.add_argument("--skip", help="regular expression for the names of test cases to leave out")
    parser.add_argument("--list", action="store_true", help="print the mutants and build nothing")
    options = parser.parse_args()
    begin = time.time()

    arguments = compiler_arguments()
    sources = [path for path in sorted((ROOT / "src").rglob("*.cpp")) if "runtime" not in path.parts and str(path) in arguments]
    candidates = [mutant for path in sources for mutant in places(path, arguments[str(path)])]
    random.Random(options.seed).shuffle(candidates)
    print(f"{len(candidates)} places in {len(sources)} files; {options.count} of seed {options.seed}", flush=True)

    work = ROOT / "build/mutants"
    tree = work / "tree"
    copy_tree(tree)
    mutants = draw(candidates, options.count, arguments, tree)
    add_to_build(tree, {mutant.file for mutant in mutants.values()})

    def describe(number):
        mutant = mutants[number]
        return f"{mutant.file.relative_to(ROOT)}:{mutant.line} {mutant.kind}: {' '.join(mutant.text.split())[:140]}"

    if options.list:
        for number in sorted(mutants):
            print(number, describe(number))
        return 0
    for preset in ("release", "native"):
        built = subprocess.run(f"cmake --preset {preset} >/dev/null && cmake --build --preset {preset}", cwd=tree, shell=True,
                               capture_output=True, text=True)
        if built.returncode:
            print(built.stdout[-3000:], built.stderr[-2000:])
            return 1

    free = [Wine(work / f"prefix{number}") for number in range(options.jobs)]
    print(f"{len(mutants)} mutants built after {(time.time() - begin) / 60:.0f} minutes", flush=True)

    def with_wine(function, *details):
        wine = free.pop()
        try:
            return function(*details[:1], wine, *details[1:])
        finally:
            free.append(wine)

    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        cases = cases_of(tree, options.skip, free[0])
        recorded = pool.map(lambda pair: with_wine(record, pair[1], work / f"reached{pair[0]}"), enumerate(cases))
        passes = {case: found for case, found in zip(cases, recorded) if found}
        print(f"{len(passes)} of {len(cases)} cases recorded after {(time.time() - begin) / 60:.0f} minutes", flush=True)

        quick = collections.defaultdict(list)
        for case, (seconds, _) in passes.items():
            if seconds < QUICK and isinstance(case.pattern, str):
                quick[case.program].append(case)
        groups = list(quick.values())
        together = {case for group, good in zip(groups, pool.map(lambda group: with_wine(passes_together, group), groups)) if good
                    for case in group}

        def work_on(number):
            if time.time() - begin > 60 * options.minutes:
                del mutants[number]
                return number, None
            killer = with_wine(judge, number, passes, together, options.budget)
            print(f"{number} {killer or 'SURVIVED'} | {describe(number)}", flush=True)
            return number, killer

        killed = dict(pool.map(work_on, sorted(mutants)))
    for wine in free:
        wine.stop()

    known = [line.split(" # ")[0].strip() for line in EQUIVALENT.read_text().splitlines() if " # " in line]
    survivors = [number for number in sorted(mutants) if not killed[number]]
    without_effect = 0
    for number in survivors:
        mutant = mutants[number]
        line = mutant.file.read_text().splitlines()[mutant.line - 1].strip()
        equivalent = f"{mutant.file.relative_to(ROOT)} {mutant.kind}: {' '.join(mutant.text.split())} in {line}" in known
        without_effect += equivalent
        reached = any(number in reached for _, reached in passes.values())
        print(f"survivor{' without effect' if equivalent else '' if reached else ' that nothing reaches'}: {describe(number)}")
    count = len(mutants) - len(survivors)
    print(f"seed {options.seed}: killed {count} of {len(mutants)} ({count / max(1, len(mutants)):.2f}), {without_effect} survivors without "
          f"effect, {(time.time() - begin) / 60:.0f} minutes")
    return 0


if __name__ == "__main__":
    sys.exit(main())
