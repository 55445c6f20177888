# Running 32-bit Windows programs under Wine, in a prefix of the project's own. To be sourced by the other scripts, from anywhere.

kelutils_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${KELUTILS_WINEPREFIX:-$kelutils_root/build/wine-prefix}
export WINEDEBUG=-all
export LC_ALL=C.UTF-8                       # the code page of the programs is then 1252 everywhere
export WINEDLLOVERRIDES="mscoree,mshtml="   # no offers to install .NET or a browser engine
wine_bin=/usr/lib/wine

# Makes the prefix when it is missing and keeps one server running, without which every program start costs two seconds. A prefix
# made before the 32-bit modules were installed has no 32-bit programs in it, and is made again.
wine_start() {
  if [ ! -e "$WINEPREFIX/drive_c/windows/syswow64/kernel32.dll" ]; then
    echo "making a Wine prefix in $WINEPREFIX"
    rm -rf "$WINEPREFIX"
    mkdir -p "$WINEPREFIX"
    timeout 180 "$wine_bin/wine64" wineboot -i >/dev/null 2>&1 || { echo "error: wineboot failed" >&2; return 1; }
    "$wine_bin/wineserver64" -w
  fi
  "$wine_bin/wineserver64" -p || true   # fails when a server runs already
}

wine_stop() { "$wine_bin/wineserver64" -k >/dev/null 2>&1 || true; }

run_wine() { "$wine_bin/wine64" "$@"; }
