#!/usr/bin/env bash
# Shows the library at work: the agent stores its identity, the store is damaged, and the library repairs it. Every
# claim is checked: the script ends with an error when the library does not do what it says. Needs no display.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$root/scripts/wine.sh"

built=$root/build/release
product=$root/build/demo
store=KESAgent/INTEGRA   # the store's three files, without their endings; seen from the product's folder
policies=KELSysCf/KelSysCf.dat
log=KELUtils/KELUtils.log

# What the installer of this demo stores: the names of kelctl and their values.
agent_id=6f1c2a9e-7d40-4b1f-9a53-0c8e5d2b7f16
certificate=MIIBszCCAVmgAwIBAgIUDemoOnlyNotARealCertificate
identity=(
  agent-id "$agent_id"            agent-version 1.4.2            customer-id 104857
  device-id c0ffee00-1234-4321-9876-00d0d0d0d0d0                  certificate "$certificate"
  container 17                    server-date "2024-03-05 07:08:09"
  rcm-user support                rcm-password ZGVtbyBvbmx5       install-state 100
)

steps=0
checks=0

heading() {
  steps=$((steps + 1))
  printf '\n== %d. %s\n\n' "$steps" "$*"
}

# check WHAT COMMAND...: COMMAND must succeed.
check() {
  local what=$1
  shift
  if ! "$@" >/dev/null; then
    printf '\nDEMO FAILED in step %d: not true: %s\n' "$steps" "$what" >&2
    exit 1
  fi
  checks=$((checks + 1))
  printf '  [ok] %s\n' "$what"
}

show_command() {
  local word
  printf '  $'
  for word in "$@"; do
    if [[ $word = *[!A-Za-z0-9_./:=-]* ]]; then printf " '%s'" "$word"; else printf ' %s' "$word"; fi
  done
  printf '\n'
}

run() {
  show_command "$@"
  "$@"
}

# Runs kelctl of the product, prints what it prints and keeps it in $output.
kelctl() {
  show_command kelctl "$@"
  local status=0
  output=$(run_wine KELUtils/kelctl.exe "$@" | tr -d '\r') || status=$?
  [ -z "$output" ] || printf '%s\n' "$output" | sed 's/^/  /'
  if [ "$status" -ne 0 ]; then
    printf '\nDEMO FAILED in step %d: kelctl ended with exit code %d\n' "$steps" "$status" >&2
    exit 1
  fi
}

# expect NAME VALUE: the library must give VALUE.
expect() {
  kelctl get "$1"
  check "$1 is $2" test "$output" = "$2"
}

differs() { ! cmp -s "$1" "$2"; }
fails() { ! "$@"; }
is_absent() { [ ! -e "$1" ]; }
begins_enciphered() { [ "$(head -c 4 "$1")" = TVKE ]; }
has_no_text() { ! grep -qaF "$2" "$1"; }

lay_out_product() {
  rm -rf "$product"
  mkdir -p "$product"/{KELUtils,Common,KESAgent,KELSysCf}
  cd "$product"
  cp "$built/bin/KELUtils.dll" "$built/bin/kelctl.exe" "$built/devkit/ApiCr.dll" KELUtils/
  cp "$built/devkit/TvLogSys.dll" "$built/devkit/ApiCr.dll" Common/
  printf '[LOG]\r\nLEVELLOG=20\r\n' > KELUtils/KELUTILS.INI
  find . -mindepth 1 | LC_ALL=C sort | sed 's/^\.\//  /'
}

store_identity() {
  local index
  for ((index = 0; index < ${#identity[@]}; index += 2)); do
    kelctl set "${identity[index]}" "${identity[index + 1]}"
  done
}

show_identity() {
  local index
  kelctl show
  local shown=$output
  for ((index = 0; index < ${#identity[@]}; index += 2)); do
    case ${identity[index]} in certificate | rcm-password) continue ;; esac
    check "${identity[index]} is what was stored" grep -qE "^${identity[index]} +${identity[index + 1]}\$" <<<"$shown"
  done
  check "secrets are masked" test "$(grep -cF '********' <<<"$shown")" = 2
  kelctl get certificate --reveal
  check "certificate is what was stored" test "$output" = "$certificate"
}

show_file_is_enciphered() {
  run od -A d -t x1z -N 64 $store.DAT | sed '2,$s/^/  /'
  check "INTEGRA.DAT begins with the mark of an enciphered file, TVKE" begins_enciphered $store.DAT
  check "the agent's identifier is nowhere in it" has_no_text $store.DAT "$agent_id"
  check "INTEGRA.BAK is a copy of it" cmp $store.DAT $store.BAK
}

finish_installation() {
  run cp $store.DAT $store.START
  kelctl set install-state 200
  kelctl set server-date "2024-06-01 12:00:00"
  kelctl set install-state 150 --only-forward
  expect install-state 200
  expect install-complete yes
  check "the store has moved on from the start copy" differs $store.DAT $store.START
}

lose_the_store() {
  run rm $store.DAT
  expect agent-id "$agent_id"
  expect server-date "2024-06-01 12:00:00"
  check "reading left INTEGRA.DAT missing" is_absent $store.DAT
  kelctl set container 18
  check "the next change wrote it again" cmp $store.DAT $store.BAK
  expect agent-id "$agent_id"
}

lose_store_and_backup() {
  run truncate -s 0 $store.DAT
  run rm $store.BAK
  expect agent-id "$agent_id"
  expect server-date "2024-03-05 07:08:09"
  expect install-state 100
  check "INTEGRA.DAT is the start copy again" cmp $store.DAT $store.START
  run cat $policies | tr -d '\r' | sed '2,$s/^/  /'
  local policy
  for policy in POLICY_101 POLICY_200; do
    check "$policy was reset" grep -q "^$policy={00000000-0000-0000-0000-000000000000}" $policies
  done
  kelctl set install-state 200
  check "the next change made the backup again" cmp $store.DAT $store.BAK
}

encipher_settings() {
  kelctl setting encrypt support
  local setting=$output
  check "the setting does not show" differs <(echo "$setting") <(echo support)
  kelctl setting decrypt "$setting"
  check "it deciphers to what it was" test "$output" = support
  # The crypto module of other files comes from the product's install path; here the environment gives it.
  export VOSK_TESTING_INSTALLPATH="Z:${product//\//\\}\\"
  kelctl file set values.dat PROXY USER operator
  check "values.dat is enciphered" begins_enciphered values.dat
  kelctl file get values.dat PROXY USER
  check "its value is what was stored" test "$output" = operator
}

integrate_and_guard() {
  kelctl integrate
  kelctl password set 'let me out'
  kelctl status
  check "the computer is integrated" grep -qE '^integrated +yes$' <<<"$output"
  check "an uninstall password is configured" grep -qx 'uninstall password is configured' <<<"$output"
  kelctl password check 'let me out'
  check "the wrong password does not match" fails run_wine KELUtils/kelctl.exe password check 'let me in'
  check "the password is nowhere in the log" has_no_text "$log" 'let me out'
  kelctl deintegrate
  expect integrated no
}

show_log() {
  kelctl get agent-id
  run tail -n 6 $log | tr -d '\r' | sed '2,$s/^/  /'
  check "calls are in the log" grep -qF '"Function end. Return code (0)"' $log
  check "the repair is in the log" grep -qF '"Restored in relaunch from Integra.start"' $log
}

"$root/scripts/build.sh"
wine_start
trap wine_stop EXIT

heading "A product tree, in build/demo; kelctl below is KELUtils/kelctl.exe, run under Wine"
lay_out_product
heading "The installer stores the agent's identity"
store_identity
heading "Reading it back"
show_identity
heading "The file is enciphered, and has a backup"
show_file_is_enciphered
heading "The installer keeps a start copy; the agent goes on working"
finish_installation
heading "INTEGRA.DAT is lost: the library reads the backup"
lose_the_store
heading "INTEGRA.DAT is emptied and the backup lost: the library goes back to the start copy"
lose_store_and_backup
heading "Single settings and other files are enciphered too"
encipher_settings
heading "The computer is integrated into the console, and its agent guarded by a password"
integrate_and_guard
heading "The trace log, $log"
show_log

printf '\nThe demo is complete: %d steps, %d checks, all passed.\n' "$steps" "$checks"
cat <<'SUMMARY'
  - the store was written enciphered, with a backup after every change
  - without INTEGRA.DAT the library read the backup: nothing was lost
  - with neither, it went back to the start copy: the identity was kept, later changes were lost, policies were reset
The product tree stays in build/demo.
SUMMARY
