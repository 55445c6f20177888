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

# True when no names were given, or NAME is one of them.
wanted() {
  local name=$1
  shift
  [ $# -eq 0 ] || [[ " $* " == *" $name "* ]]
}

echo "machine: $(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1), $(nproc) processors; $(uname -sr)"
echo "compilers: $(g++ --version | head -n 1); $(i686-w64-mingw32-g++-win32 --version | head -n 1)"
dpkg-query -W -f='${Package} ${Version}\n' libinih-dev libsimpleini-dev libssl-dev wine64
missed=0
for program in build/native-release/bench/*_bench; do
  name=$(basename "$program")
  wanted "$name" "$@" || continue
  echo "== $name"
  "$program" || missed=1
done
for program in build/release/bench/*_bench.exe; do
  name=$(basename "$program" .exe)
  wanted "$name" "$@" || continue
  echo "== $name, 32 bits, under Wine"
  run_wine "$program" | tr -d '\r' || missed=1
done
if wanted memory "$@"; then
  echo "== memory, 32 bits, under Wine"
  run_wine build/release/tests/endurance_tests.exe --no-skip --test-case='memory:*' | tr -d '\r' | grep -v '^\[doctest\] run' || missed=1
fi
remove_leftovers
exit $missed
