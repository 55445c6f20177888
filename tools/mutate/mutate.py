#!/usr/bin/python3
"""Mutation testing of src/: which small changes of behaviour do the tests notice?

Draws N places at random, builds one copy of the tree that contains all of these mutants, each switched on by its number in the
environment variable KELUTILS_MUTANT, and runs the test programs once per mutant until one fails. A first run without a mutant
records which program reaches which mutant; a program that does not reach it is not run. Prints the share of killed mutants
and the survivors.
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
import subprocess
import sys
import time

from clang import cindex

ROOT = pathlib.Path(__file__).resolve().parents[2]
SWAPPED = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">", "&&": "||", "||": "&&", "+": "-", "-": "+"}
Mutant = collections.namedtuple("Mutant", "file line start end kind text mutated")

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
  const char* log = std::getenv("KELUTILS_MUTANT_LOG");
  if (!log || g_reached[number]) return;
  g_reached[number] = true;
#ifdef _WIN32
  const unsigned long error = GetLastError();
#endif
  if (std::FILE* file = std::fopen(log, "a")) { std::fprintf(file, "%d\\n", number); std::fclose(file); }
#ifdef _WIN32
  SetLastError(error);
#endif
}
}
bool MutantIs(int number) noexcept {
  static const int active = Active();
  if (active < 0) Note(number);
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
    return data


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
                command = re.sub(r" -o \S+ -c", " -fsyntax-only -Wno-error -include mutants.h -c", command)
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


def run(program, tree, prefix, environment, limit):
    """True when the program's tests pass."""
    variables = dict(os.environ, WINEDEBUG="-all", LC_ALL="C.UTF-8", WINEDLLOVERRIDES="mscoree,mshtml=", WINEPREFIX=str(prefix), **environment)
    command = [str(program), "--abort-after=1", "--minimal"]
    if program.suffix == ".exe":
        command = ["/usr/lib/wine/wine64"] + command
    try:
        with subprocess.Popen(command, cwd=tree, env=variables, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                              start_new_session=True) as process:
            return process.wait(limit) == 0
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, 9)
        subprocess.run(["/usr/lib/wine/wineserver64", "-k"], env=variables, check=False)
        return False


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("count", type=int)
    parser.add_argument("seed", type=int)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--list", action="store_true", help="print the mutants and build nothing")
    options = parser.parse_args()

    arguments = compiler_arguments()
    sources = [path for path in sorted((ROOT / "src").rglob("*.cpp")) if "runtime" not in path.parts and str(path) in arguments]
    candidates = [mutant for path in sources for mutant in places(path, arguments[str(path)])]
    random.Random(options.seed).shuffle(candidates)
    print(f"{len(candidates)} places in {len(sources)} files; {options.count} of seed {options.seed}")

    work = ROOT / "build/mutants"
    tree = work / "tree"
    files = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=ROOT, capture_output=True, text=True, check=True).stdout.split("\n")
    shutil.rmtree(tree / "src", ignore_errors=True)
    for name in filter(None, files):
        if (ROOT / name).is_file():
            (tree / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(ROOT / name, tree / name)
    (tree / "src/mutants.h").write_text(HEADER)
    (tree / "src/mutants.cpp").write_text(SOURCE)
    lists = (tree / "src/CMakeLists.txt").read_text()
    (tree / "src/CMakeLists.txt").write_text(lists.replace(
        "target_include_directories(kelutils_pure",
        "target_sources(kelutils_pure PRIVATE mutants.cpp)\n"
        "target_compile_options(kelutils_pure PUBLIC \"SHELL:-include mutants.h\" -Wno-error)\n"
        "target_include_directories(kelutils_pure", 1))

    mutants = draw(candidates, options.count, arguments, tree)
    if options.list:
        for number, mutant in sorted(mutants.items()):
            print(f"{number} {mutant.file.relative_to(ROOT)}:{mutant.line} {mutant.kind}: {mutant.text!r} -> {mutant.mutated!r}")
        return 0
    print(f"{len(mutants)} mutants compile; building")
    for preset in ("release", "native"):
        built = subprocess.run(f"cmake --preset {preset} >/dev/null && cmake --build --preset {preset}", cwd=tree, shell=True,
                               capture_output=True, text=True)
        if built.returncode:
            print(built.stdout[-3000:], built.stderr[-2000:])
            return 1

    names = ["unit_tests", "agent_tests", "export_tests", "kelctl_tests", "torture_tests", "endurance_tests"]
    programs = sorted((tree / "build/native/tests").glob("*_tests")) + [tree / f"build/release/tests/{name}.exe" for name in names]
    programs = [program for program in programs if program.exists()]
    prefixes = [work / f"prefix{number}" for number in range(options.jobs)]
    for prefix in prefixes:
        if not prefix.exists():
            subprocess.run(["bash", "-c", ". scripts/wine.sh; wine_start"], cwd=ROOT, check=True,
                           env=dict(os.environ, KELUTILS_WINEPREFIX=str(prefix)))
    reached, limits = {}, {}
    for program in programs:
        log = work / f"reached-{program.stem}.txt"
        log.unlink(missing_ok=True)
        start = time.time()
        path = f"Z:{log}".replace("/", "\\") if program.suffix == ".exe" else str(log)
        if not run(program, tree, prefixes[0], {"KELUTILS_MUTANT_LOG": path}, 900):
            print(f"{program.stem} fails without a mutant")
            return 1
        limits[program] = 3 * (time.time() - start) + 30
        reached[program] = {int(line) for line in log.read_text().split()} if log.exists() else set()
        print(f"{program.stem}: {len(reached[program])} mutants reached, {time.time() - start:.0f} s", flush=True)

    def judge(number, prefix):
        order = sorted((program for program in programs if number in reached[program]), key=lambda program: limits[program])
        for program in order:
            if not run(program, tree, prefix, {"KELUTILS_MUTANT": str(number)}, limits[program]):
                return program.stem
        return None

    free, killed = list(prefixes), {}

    def work_on(number):
        prefix = free.pop()
        killed[number] = judge(number, prefix)
        free.append(prefix)
        mutant = mutants[number]
        print(f"{number} {'killed by ' + killed[number] if killed[number] else 'SURVIVED'}: {mutant.file.relative_to(ROOT)}:{mutant.line} "
              f"{mutant.kind}: {' '.join(mutant.text.split())[:100]}", flush=True)

    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        list(pool.map(work_on, sorted(mutants)))
    survivors = [number for number in sorted(mutants) if not killed[number]]
    print(f"killed {len(mutants) - len(survivors)} of {len(mutants)}: {1 - len(survivors) / max(1, len(mutants)):.2f}")
    for number in survivors:
        mutant = mutants[number]
        unreached = "" if any(number in reached[program] for program in programs) else " (never reached)"
        print(f"survivor {number}{unreached}: {mutant.file.relative_to(ROOT)}:{mutant.line} {mutant.kind}: "
              f"{' '.join(mutant.text.split())[:120]}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
