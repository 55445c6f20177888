#!/usr/bin/env bash
# Builds, and runs the measuring programs one after the other: those of the portable part on this machine, then those under Wine. With
# names such as "ini_bench" only these; "memory" is that of a process that has used every export. Exit 1 when one misses its limit.
# docs/performance.md says what they measure.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/wine.sh

scripts/install_dependencies.sh --bench
{ cmake --preset native-release && cmake --build --preset native-release; } >/dev/null
scripts/build.sh -DKELUTILS_BUILD_BENCH=ON >/dev/null
wine_start
trap wine_stop EXIT
export KELUTILS_WINE_STARTED=1

names=" $* "
missed=0
# measure NAME WHERE COMMAND...
measure() {
  [ "$names" = "  " ] || [[ $names == *" $1 "* ]] || return 0
  echo "== $1$2"
  "${@:3}" || missed=1
}

echo "machine: $(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1), $(nproc) processors; $(uname -sr)"
echo "compilers: $(g++ --version | head -n 1); $(i686-w64-mingw32-g++-win32 --version | head -n 1)"
dpkg-query -W -f='${Package} ${Version}\n' libinih-dev libsimpleini-dev libssl-dev wine64
for program in build/native-release/bench/*_bench; do measure "$(basename "$program")" "" "$program"; done
for program in build/release/bench/*_bench.exe; do
  measure "$(basename "$program" .exe)" ", 32 bits, under Wine" scripts/run_wine.sh "$program"
done
measure memory ", 32 bits, under Wine" scripts/run_wine.sh build/release/tests/endurance_tests.exe --no-skip --test-case='memory:*'
remove_leftovers
exit $missed
