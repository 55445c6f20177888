# Running 32-bit Windows programs under Wine, in a prefix of the project's own. To be sourced by the other scripts, from anywhere.

kelutils_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${KELUTILS_WINEPREFIX:-$kelutils_root/build/wine-prefix}
export WINEDEBUG=-all
export LC_ALL=C.UTF-8                       # the code page of the programs is then 1252 everywhere
export WINEDLLOVERRIDES="mscoree,mshtml="   # no offers to install .NET or a browser engine
wine_bin=/usr/lib/wine

# Gives the programs a display to make windows on, unless there is one: a server without a screen, on a number that it chooses itself.
# It ends with wine_stop, and by itself after four hours, should the shell be killed. Without it only what makes windows fails.
start_display() {
  if [ -n "${kelutils_display_pid:-}" ] && ! kill -0 "$kelutils_display_pid" 2>/dev/null; then stop_display; fi
  [ -z "${DISPLAY:-}" ] || return 0
  local chosen tries number=
  chosen=$(mktemp)
  timeout --kill-after=10 4h Xvfb -displayfd 3 -screen 0 800x600x24 3>"$chosen" >/dev/null 2>&1 &
  kelutils_display_pid=$!
  for ((tries = 0; tries < 100; tries++)); do
    ! read -r number <"$chosen" || break   # succeeds once the whole line is there
    kill -0 "$kelutils_display_pid" 2>/dev/null || break
    sleep 0.1
  done
  if [ -n "$number" ]; then
    export DISPLAY=:$number
  else
    echo "warning: no display: is Xvfb installed?" >&2
    stop_display
  fi
  rm -f "$chosen"
}

# Ends the display that this shell has started, and no other.
stop_display() {
  [ -n "${kelutils_display_pid:-}" ] || return 0
  kill "$kelutils_display_pid" 2>/dev/null || true
  wait "$kelutils_display_pid" 2>/dev/null || true
  unset kelutils_display_pid DISPLAY
}

# Makes the prefix when it is missing and keeps one server running, without which every program start costs two seconds. A prefix
# made before the 32-bit modules were installed has no 32-bit programs in it, and is made again.
wine_start() {
  start_display
  if [ ! -e "$WINEPREFIX/drive_c/windows/syswow64/kernel32.dll" ]; then
    echo "making a Wine prefix in $WINEPREFIX"
    rm -rf "$WINEPREFIX"
    mkdir -p "$WINEPREFIX"
    timeout 180 "$wine_bin/wine64" wineboot -i >/dev/null 2>&1 || { echo "error: wineboot failed" >&2; return 1; }
    "$wine_bin/wineserver64" -w
  fi
  "$wine_bin/wineserver64" -p || true   # fails when a server runs already
}

wine_stop() {
  "$wine_bin/wineserver64" -k >/dev/null 2>&1 || true
  stop_display
}

# Removes the folders that the programs made and could not remove, because a DLL in them was still in use.
remove_leftovers() { rm -rf "$WINEPREFIX"/drive_c/users/*/Temp/kelutils-*; }

run_wine() { "$wine_bin/wine64" "$@"; }
