#!/usr/bin/env bash
# Builds, and runs the measuring programs one after the other: those of the portable part on this machine, then those under Wine. With
# names such as "ini_bench" only these; "memory" is that of a process that has used every export. Exit 1 when one misses its limit.
# docs/reliability.md describes what they measure.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/wine.sh

scripts/install_dependencies.sh --bench
{ cmake --preset native-release && cmake --build --preset native-release; } >/dev/null
scripts/build.sh -DKELUTILS_BUILD_BENCH=ON >/dev/null
wine_start
trap wine_stop EXIT
export KELUTILS_WINE_STARTED=1

echo "machine: $(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1), $(nproc) processors; $(uname -sr)"
echo "compilers: $(g++ --version | head -n 1); $(i686-w64-mingw32-g++-win32 --version | head -n 1)"
dpkg-query -W -f='${Package} ${Version}\n' libinih-dev libsimpleini-dev libssl-dev wine64
missed=0
for tree in native-release release; do
  ctest --test-dir build/$tree -C bench -L bench -V -R "^($(IFS='|' && echo "${*:-.*}"))$" | sed -n 's/^[0-9]*: //p' || missed=1
done
remove_leftovers
exit $missed
