#!/usr/bin/env bash
# Builds and runs the measuring programs: those of the portable part on this machine, then those under Wine. With names such as "ini_bench"
# only these; "memory" is that of a process that has used every export. Exit 1 when one misses its limit. With --plot it measures all and
# draws the chart in docs/reliability.md, which explains the figures.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/wine.sh

# The highest ratio of each comparison in percent of its limit, from the output on standard input.
plot() {
  chart=$(awk '
    /, [0-9]+ [a-z]+ a round.*:$/ { title = $0; sub(/, [0-9]+ [a-z]+ a round/, "", title); sub(/:$/, "", title) }
    / median / && percent { sub(/ +median.*/, ""); sub(/^ +/, ""); add(title != "" ? title : $0); title = "" }
    / ?ratio [0-9.]+ \(at most / {
      name = limit = $0; sub(/:? *ratio .*/, "", name); sub(/.*at most /, "", limit); sub(/.*ratio /, ""); percent = 100 * $1 / limit
      if (name != "" && name !~ /bytes$/) add(name)
    }
    function add(name) { if (!(name in most)) names[++n] = name; if (percent > most[name]) most[name] = percent; percent = 0 }
    END {
      print "xychart-beta horizontal\n    title \"Highest ratio in percent of its limit\""
      for (i = 1; i <= n; ++i) { x = x (i > 1 ? ", " : "") "\"" names[i] "\""; y = y (i > 1 ? ", " : "") sprintf("%d", most[names[i]] + 0.5) }
      print "    x-axis [" x "]\n    y-axis \"%\" 0 --> 300\n    bar [" y "]"
    }') perl -0pi -e 's/^xychart-beta.*?(?=^```)/$ENV{chart}\n/ms' docs/reliability.md
}

draw=${1:-}; [ "$draw" != --plot ] || shift
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
: >build/bench-output.txt
for tree in native-release release; do
  ctest --test-dir build/$tree -C bench -L bench -V -R "^($(IFS='|' && echo "${*:-.*}"))$" | sed -n 's/^[0-9]*: //p' |
    tee -a build/bench-output.txt || missed=1
done
remove_leftovers
[ "$draw" != --plot ] || plot <build/bench-output.txt
exit $missed
