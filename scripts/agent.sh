#!/usr/bin/env bash
# A product tree with the development siblings, and its scheduler under Wine. Needs scripts/build.sh first.
#   scripts/agent.sh tree DIR    lays the tree out in a new or empty folder; an existing tree is kept
#   scripts/agent.sh up DIR      the same, schedules the default jobs and starts the scheduler
#   scripts/agent.sh status DIR  lists the jobs; ends with 3 when the scheduler does not run
#   scripts/agent.sh down DIR    ends the scheduler; the tree stays
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$root/scripts/wine.sh"
built=$root/build/release

fail() { echo "error: $*" >&2; exit 1; }

lay_out() {
  [ ! -e KELUtils/KELUtils.dll ] || return 0
  [ -z "$(ls -A)" ] || fail "$PWD is not empty, and not a product tree"
  [ -e "$built/bin/kelctl.exe" ] && [ -e "$built/devkit/zumat.exe" ] || fail "not built: run scripts/build.sh"
  local file here="Z:${PWD//\//\\}"
  mkdir -p KELUtils Common KESAgent KELSysCf Scheduler KesLpmng KepWInst KelConf KelUpg KELUPD KELREPORT KELTVEVT
  for file in KELUtils/ApiCr.dll Common/{TvLogSys,ApiCr,KELMNAPI,KELAGAPI}.dll Scheduler/zumat.exe KELTVEVT/TvEvAPI.dll \
    KESAgent/KePIRes.exe KesLpmng/KEPLPMNG.exe KepWInst/KepWInst.exe KelConf/KELRCM.dll KelUpg/{KEC,KELUPG}.dll; do
    cp "$built/devkit/${file#*/}" "$file"
  done
  cp "$built/devkit/KEPLPMNG.exe" KELUPD/KELUPD.exe         # replaces the update
  cp "$built/devkit/KEPLPMNG.exe" KELREPORT/KELREPORT.exe   # and the report
  printf '[PLUGINS]\r\nRCM=%s\\KelConf\\KELRCM.dll\r\n' "$here" >KelConf/Kelconf.ini
  printf '[PLUGINS]\r\nKEC=%s\\KelUpg\\KEC.dll\r\n' "$here" >KelUpg/KelUpg.ini
  printf '[LOG]\r\nLEVELLOG=20\r\n' >KELUtils/KELUTILS.INI
  cp "$built/bin/kelctl.exe" "$built/bin/KELUtils.dll" KELUtils/   # last: with it the tree is complete
}

# quiet COMMAND...: shows its output only if it fails. The output goes to a file: services of Wine keep a program's output open.
quiet() { "$@" >agent-output.txt 2>&1 || { cat agent-output.txt >&2; fail "$* failed"; }; }

runs() { [ -s scheduler.pid ] && kill -0 "$(cat scheduler.pid)" 2>/dev/null; }

up() {
  lay_out
  ! runs || fail "the scheduler of $PWD runs already"
  if [ ! -e "$WINEPREFIX/drive_c/windows/syswow64/kernel32.dll" ]; then wine_start && wine_stop; fi
  quiet run_wine KELUtils/kelctl.exe init "Z:${PWD//\//\\}"   # tokens.tok: where the programs of the jobs are
  quiet run_wine KELUtils/kelctl.exe jobs default
  setsid "$wine_bin/wine64" Scheduler/zumat.exe -run >scheduler.txt 2>&1 </dev/null &
  echo $! >scheduler.pid
  for _ in {1..300}; do
    ! grep -q 'the scheduler runs' scheduler.txt || { echo "the scheduler of $PWD runs"; return; }
    runs || break
    sleep 0.1
  done
  down
  fail "the scheduler has not started: $(cat scheduler.txt)"
}

list_jobs() {
  quiet run_wine Scheduler/zumat.exe -list
  tr -d '\r' <agent-output.txt
  runs || { echo "the scheduler does not run"; exit 3; }
  echo "the scheduler runs"
}

down() {
  quiet run_wine Scheduler/zumat.exe -stop
  for _ in {1..100}; do runs && sleep 0.1 || break; done
  ! runs || fail "the scheduler does not end"
  rm -f scheduler.pid
}

[ $# -eq 2 ] || { sed -n 's/^#   //p' "${BASH_SOURCE[0]}" >&2; exit 1; }
case $1 in
  up | tree) mkdir -p "$2" ;;
  status | down) [ -e "$2/KELUtils/KELUtils.dll" ] || fail "$2 is not a product tree" ;;
  *) fail "$1 is not up, status, down or tree" ;;
esac
cd "$2"
case $1 in up) up ;; tree) lay_out ;; status) list_jobs ;; down) down ;; esac
