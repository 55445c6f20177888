# Running 32-bit Windows programs under Wine, in a prefix of the project's own. To be sourced by the other scripts, from anywhere.

kelutils_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${KELUTILS_WINEPREFIX:-$kelutils_root/build/wine-prefix}
export WINEDEBUG=-all
export LC_ALL=C.UTF-8                       # the code page of the programs is then 1252 everywhere
export WINEDLLOVERRIDES="mscoree,mshtml="   # no offers to install .NET or a browser engine
wine_bin=/usr/lib/wine

# Starts a virtual display on a free number, unless there is a display. It ends with wine_stop, or after four hours.
start_display() {
  [ -z "${DISPLAY:-}" ] || return 0
  local number
  number=$(mktemp)
  timeout --kill-after=10 4h Xvfb -displayfd 3 -screen 0 800x600x24 3>"$number" >/dev/null 2>&1 &
  kelutils_display_pid=$!
  for _ in {1..100}; do [ ! -s "$number" ] && kill -0 $kelutils_display_pid 2>/dev/null && sleep 0.1 || break; done
  [ -s "$number" ] || echo "warning: no display: is Xvfb installed?" >&2
  DISPLAY=:$(cat "$number")
  export DISPLAY
  rm -f "$number"
}

# Creates a missing prefix and keeps one server running, which saves two seconds for each program. A prefix that was created before the
# 32-bit modules were installed has no 32-bit programs and is created again.
wine_start() {
  start_display
  if [ ! -e "$WINEPREFIX/drive_c/windows/syswow64/kernel32.dll" ]; then
    echo "creating a Wine prefix in $WINEPREFIX"
    rm -rf "$WINEPREFIX" && mkdir -p "$WINEPREFIX"
    timeout 180 "$wine_bin/wine64" wineboot -i >/dev/null 2>&1 || { echo "error: wineboot failed" >&2; return 1; }
    "$wine_bin/wineserver64" -w
  fi
  "$wine_bin/wineserver64" -p || true   # fails when a server runs already
  # The services that start with the first program keep its output open.
  timeout 60 "$wine_bin/wine64" cmd /c exit >/dev/null 2>&1 || true
}

# Also ends the display that this shell has started.
wine_stop() {
  "$wine_bin/wineserver64" -k >/dev/null 2>&1 || true
  [ -n "${kelutils_display_pid:-}" ] || return 0
  kill "$kelutils_display_pid" 2>/dev/null || true
  wait "$kelutils_display_pid" 2>/dev/null || true
  unset kelutils_display_pid DISPLAY
}

# Removes the folders that the programs made and could not remove, because a DLL in them was still in use.
remove_leftovers() { rm -rf "$WINEPREFIX"/drive_c/users/*/Temp/kelutils-*; }

# True for the output of a program that Wine did not start: an internal error, rarely, while another program starts.
was_not_started() { grep -qa '^ShellExecuteEx failed: Internal error' "$1"; }

# Runs a program, again if it was not started, and prints its output at its end.
run_wine() {
  local output status=0
  output=$(mktemp)
  "$wine_bin/wine64" "$@" >"$output" || status=$?
  if [ $status -ne 0 ] && was_not_started "$output"; then
    status=0
    "$wine_bin/wine64" "$@" >"$output" || status=$?
  fi
  cat "$output"
  rm -f "$output"
  return $status
}
