#!/usr/bin/env bash
# Shows the library at work in a product tree of the development siblings, build/demo. Prints a line for each step; with -v also all
# commands with their output, and every check. An error when a step fails. --no-build uses the existing build.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$root/scripts/wine.sh"

product=$root/build/demo
store=KESAgent/INTEGRA   # the store's three files, without their extensions; paths are relative to the product's folder
log=KELUtils/KELUtils.log
steps=0 checks=0

# step TITLE: begins a step, and prints the line of the one before.
step() {
  [ "$steps" -eq 0 ] || printf '%2d. %s: %d checks passed\n' "$steps" "$title" $((checks - before)) >&3
  title=$1 before=$checks steps=$((steps + 1))
  printf '\n== %d. %s\n\n' "$steps" "$title"
}

failed() {
  printf '\nDEMO FAILED in step %d: %s. All output: build/demo-output.txt, or scripts/demo.sh -v\n' "$steps" "$*" >&3
  exit 1
}

# check CLAIM COMMAND...: COMMAND must succeed.
check() {
  "${@:2}" >/dev/null || failed "not true: $1"
  checks=$((checks + 1))
  printf '  [ok] %s\n' "$1"
}

fails() { ! "$@"; }

run() {
  printf '  $'; printf ' %q' "$@"; printf '\n'
  "$@"
}

# kelctl_ends_with CODE ARGUMENT...: runs the product's kelctl, which must end with CODE; prints its output and keeps it in $output.
kelctl_ends_with() {
  local status=0
  printf '  $ kelctl'; printf ' %q' "${@:2}"; printf '\n'
  output=$(run_wine KELUtils/kelctl.exe "${@:2}" | tr -d '\r') || status=$?
  sed 's/^/  /' <<<"$output"
  [ "$status" -eq "$1" ] || failed "kelctl ended with exit code $status"
}
kelctl() { kelctl_ends_with 0 "$@"; }

# expect NAME VALUE: the store must hold VALUE.
expect() {
  kelctl get "$1"
  check "$1 is $2" test "$output" = "$2"
}

agent_id=6f1c2a9e-7d40-4b1f-9a53-0c8e5d2b7f16
device_id=c0ffee00-1234-4321-9876-00d0d0d0d0d0
certificate=MIIBszCCAVmgAwIBAgIUDemoOnlyNotARealCertificate
identity=(agent-id "$agent_id" agent-version 1.4.2 customer-id 104857 device-id "$device_id" container 17
  server-date "2024-03-05 07:08:09" rcm-user support install-state 100)

# await_line LINE PLACE: waits until a file has a line, for at most 90 seconds: a job starts at the full minute.
await_line() { for _ in {1..450}; do ! grep -rqs -- "$1" "$2" || return 0; sleep 0.2; done; return 1; }

[[ " $* " = *" --no-build "* ]] || "$root/scripts/build.sh"
exec 3>&1                                               # the lines of the steps
[[ " $* " = *" -v "* ]] || exec >"$root/build/demo-output.txt" 2>&1
[ -n "${KELUTILS_WINE_STARTED:-}" ] || { wine_start; trap wine_stop EXIT; }

step "a product tree in build/demo"
rm -rf "$product"
"$root/scripts/agent.sh" tree "$product"
cd "$product"
find . -mindepth 1 | LC_ALL=C sort

step "the installer stores the agent's identity"
for ((index = 0; index < ${#identity[@]}; index += 2)); do kelctl set "${identity[index]}" "${identity[index + 1]}"; done
kelctl set certificate "$certificate"
kelctl set rcm-password ZGVtbyBvbmx5

step "the identity is read back"
kelctl show
for ((index = 0; index < ${#identity[@]}; index += 2)); do
  check "${identity[index]} is the stored one" grep -qE "^${identity[index]} +${identity[index + 1]}\$" <<<"$output"
done
check "secrets are masked" test "$(grep -cF '********' <<<"$output")" = 2
kelctl get certificate --reveal
check "certificate is the stored one" test "$output" = "$certificate"

step "the file is encrypted, and has a backup"
check "INTEGRA.DAT begins with the mark of an encrypted file" test "$(head -c 4 $store.DAT)" = TVKE
check "it does not contain the agent's identifier" fails grep -qaF "$agent_id" $store.DAT
check "INTEGRA.BAK is a copy of it" cmp $store.DAT $store.BAK

step "the installer keeps a start copy; the agent continues"
run cp $store.DAT $store.START
kelctl set install-state 200
kelctl set server-date "2024-06-01 12:00:00"
expect install-complete yes

step "INTEGRA.DAT is lost: the library reads the backup, nothing is lost"
run rm $store.DAT
expect agent-id "$agent_id"
expect server-date "2024-06-01 12:00:00"
check "reading left INTEGRA.DAT missing" fails test -e $store.DAT
kelctl set container 18
check "the next change wrote it again" cmp $store.DAT $store.BAK

step "both are lost: the library returns to the start copy, policies are reset"
run truncate -s 0 $store.DAT
run rm $store.BAK
expect agent-id "$agent_id"
expect server-date "2024-03-05 07:08:09"
check "INTEGRA.DAT is the start copy again" cmp $store.DAT $store.START
check "policies were reset" test "$(grep -cE '^POLICY_(101|200)=\{0{8}-' KELSysCf/KelSysCf.dat)" = 2
kelctl set install-state 200
check "the next change made the backup again" cmp $store.DAT $store.BAK

step "single settings and other files are encrypted too"
kelctl setting encrypt support
kelctl setting decrypt "$output"
check "the setting decrypts to its text" test "$output" = support
# The crypto module of other files comes from the product's install path; here from the environment.
export VOSK_TESTING_INSTALLPATH="Z:${product//\//\\}\\"
kelctl file set values.dat PROXY USER operator
check "values.dat is encrypted" test "$(head -c 4 values.dat)" = TVKE
kelctl file get values.dat PROXY USER
check "its value is the stored one" test "$output" = operator

step "the computer is integrated, and its agent protected by a password"
kelctl integrate
kelctl password set 'let me out'
kelctl status
check "the computer is integrated" grep -qE '^integrated +yes$' <<<"$output"
check "an uninstall password is configured" grep -qE '^uninstall password +configured' <<<"$output"
kelctl password check 'let me out'
kelctl_ends_with 1 password check 'let me in'
check "the password is not in the log" fails grep -qaF 'let me out' $log
kelctl deintegrate
expect integrated no

step "the agent's jobs, before and after integration"
kelctl jobs default
kelctl jobs list
check "the integration test runs every five minutes" grep -qE '^2 +KEPLPMNG +KELTEST .*every 0 h 5 min' <<<"$output"
kelctl set device-id $device_id
kelctl integrate
kelctl jobs default
kelctl jobs window 70 1440 12:00 13:30 KELSCAN -- -full
kelctl jobs next-boot 'KELUPG -CONTINUE' --delay 90
kelctl jobs list
check "the integration test runs hourly now" grep -qE '^2 +KEPLPMNG +KELTEST .*every 1 h 0 min' <<<"$output"
check "notifications run every quarter of an hour" grep -qE '^16 +KEPLPMNG +KELNTF .*every 0 h 15 min' <<<"$output"
check "twelve jobs are scheduled and one for the next boot" test "$(grep -c KEP <<<"$output")" = 13

step "the scheduler starts a job at its minute"
run "$root/scripts/agent.sh" up "$product"
minute=$(date -d '+70 seconds' '+%d/%m/%Y %H:%M')
kelctl jobs set 71 ${minute/ */} ${minute/* /} KELSCAN -- -now
check "the scheduler starts it" await_line 'KELSCAN -now' KesLpmng
check "at its minute" grep -rq "^${minute:6:4}/${minute:3:2}/${minute:0:2} ${minute/* /}:.*KELSCAN -now" KesLpmng
check "and records its end" await_line 'job 71 ended with 0' scheduler.txt
run "$root/scripts/agent.sh" down "$product"

step "plug-ins and launcher are notified and run"
kelctl notify all
check "the remote-control plug-in knows the device" grep -q 'KECONF_SetInfo;0;6;c0ffee00' KelConf/KELRCM.log
check "so does the installer plug-in" grep -q 'KEINSTALL_SetInfo;0;6;c0ffee00' KelUpg/KEC.log
check "the stored password is masked in its log" grep -qF 'KECONF_SetInfo;0;5;***' KelConf/KELRCM.log
printf '[EXIT]\r\nCode=1\r\n' > KELUPD/KELUPD.ini   # the stand-in: nothing to continue
kelctl update now
check "the launcher ran the update" grep -q ';UpdateNow;0;' Common/KELMNAPI.log

step "the installation is registered"
kelctl init .
check "twelve plug-ins are listed" test "$(wc -l < KesLpmng/Config/plugins.tok)" = 12
kelctl can-run KELUpd
check "an installed agent may update" test "$output" = yes

step "a proxy is set"
kelctl proxy set proxy.example 3128 --user operator --password 'through the wall'
kelctl proxy show
check "its password is masked" grep -qF '********' <<<"$output"
kelctl proxy inet --reveal
check "the installer sees the same one" grep -qE '^password +through the wall$' <<<"$output"
check "the password is not in the log" fails grep -qaF 'through the wall' $log

step "the upgrade is completed"
kelctl upgrade complete 0 2.0.0
expect agent-version 2.0.0
check "the store was kept as the start copy" cmp $store.DAT $store.START
check "the plug-in manager does the rest" grep -rq -- '-CONTINUE -UPGCOMPLETE:0 -VERSION:2.0.0' KesLpmng

step "events are queued by the event module"
events=KELTVEVT/events.jsonl
kelctl event scan KEAGENT 12 3
kelctl event error 4 7 403 'C:\Quarantine'
check "the scan is in the queue" grep -q '"call":"TEVT_ScanState".*"status":3' $events
check "the error is there with its identifier" grep -q '"identifier":"KEAGENT-403"' $events

step "the user is asked, in automatic mode"
printf '[AUTO]\r\nAnswer=2\r\n' > KESAgent/KePIRes.ini   # no window: the answer is "later"
kelctl prompt reboot
check "the answer is that of the settings" grep -q later <<<"$output"

step "scripts of the local group policy; those of others stay"
kelctl policy add shutdown 'C:\Orvane\report.cmd' '/daily'
kelctl policy add shutdown 'C:\Orvane\upgrade.cmd' 'UPGRADE="1"'
kelctl policy remove shutdown 'UPGRADE="1"'
kelctl policy list
check "the other script stays" grep -q 'report.cmd' <<<"$output"
check "the removed one is gone" fails grep -q 'upgrade.cmd' <<<"$output"
kelctl policy remove shutdown '/daily'

step "support finds the damage of a store, and repairs it"
kelctl doctor
check "the installation is healthy" grep -q '^healthy' <<<"$output"
run truncate -s 40 $store.DAT
kelctl_ends_with 3 doctor
check "the damaged store is found" grep -q 'fail.*INTEGRA.DAT' <<<"$output"
kelctl repair --from bak
check "the replaced file is kept" test -s $store.DAT.1
kelctl doctor
check "the installation is healthy again" grep -q '^healthy' <<<"$output"

step "diagnostics are collected, without secrets"
kelctl diagnostics diagnostics.zip
unzip -qq diagnostics.zip -d diagnostics
for secret in "$certificate" 'let me out' 'through the wall'; do
  check "a secret of this demo is not in the archive" fails grep -rqF "$secret" diagnostics
done

step "the trace log, $log"
run tail -n 6 $log
check "calls are in the log" grep -qF '"Function end. Return code (0)"' $log
check "the repair is in the log" grep -qF '"Restored in relaunch from Integra.start"' $log

step end
printf 'The demo is complete: %d steps, %d checks, all passed. The product tree stays in build/demo.\n' $((steps - 1)) "$checks" >&3
