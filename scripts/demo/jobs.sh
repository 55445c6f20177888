# Jobs are scheduled, and other parts of the agent are put to work.

has_job() { grep -qE "$1" <<<"$output"; }

schedule_jobs() {
  kelctl jobs default
  kelctl jobs list
  check "the integration test runs every five minutes" has_job '^2 +KEPLPMNG +KELTEST .*every 0 h 5 min'
  check "there are no notifications yet" fails has_job '^16 '
  check "the update after the boot comes within an hour" has_job '^8 +KEPLPMNG +KELUPD .*boot \+ [0-9]+ s'
  check "the installer helper was started" grep -q -- '-FORCE' KepWInst/KepWInst.log
  kelctl set device-id c0ffee00-1234-4321-9876-00d0d0d0d0d0
  kelctl integrate
  kelctl jobs default
  kelctl jobs list
  check "the integration test runs hourly now" has_job '^2 +KEPLPMNG +KELTEST .*every 1 h 0 min'
  check "notifications run every quarter of an hour" has_job '^16 +KEPLPMNG +KELNTF .*every 0 h 15 min'
  kelctl jobs window 70 1440 12:00 13:30 KELSCAN -- -full
  kelctl jobs next-boot 'KELUPG -CONTINUE' --delay 90
  kelctl jobs list --json
  check "the scan starts within its window" grep -q 'StartTime:12:00 -StartTimeRnd:13:30' <<<"$output"
  check "twelve jobs are scheduled and one for the next boot" test "$(grep -c '"id":' <<<"$output")" = 13
}

# Waits until a file has a line, for at most 90 seconds: a job comes at the full minute.
await_line() { for _ in {1..450}; do ! grep -qs -- "$1" "$2" || return 0; sleep 0.2; done; return 1; }

start_a_job() {
  local minute
  run "$root/scripts/agent.sh" up "$product"
  minute=$(date -d '+70 seconds' '+%d/%m/%Y %H:%M')
  kelctl jobs set 71 ${minute/ */} ${minute/* /} KELSCAN -- -now
  check "the scheduler starts it" await_line 'KELSCAN -now' KesLpmng/KEPLPMNG.log
  check "at its minute" grep -q "^$(date -d "${minute:6:4}-${minute:3:2}-${minute:0:2}" +%Y/%m/%d) ${minute/* /}:.*KELSCAN -now" KesLpmng/KEPLPMNG.log
  check "and notes its end" await_line 'job 71 ended with 0' scheduler.txt
  kelctl jobs list
  check "which the list shows" has_job "^71 .* none +$minute +0\$"
  run "$root/scripts/agent.sh" down "$product"
  check "the scheduler has ended" grep -q 'the scheduler has ended' scheduler.txt
}

tell_the_others() {
  kelctl notify all
  run tail -n 3 KelConf/KELRCM.log | tr -d '\r' | sed '2,$s/^/  /'
  check "the remote-control plug-in knows the device" grep -q 'KECONF_SetInfo;0;6;c0ffee00' KelConf/KELRCM.log
  check "so does the installer plug-in" grep -q 'KEINSTALL_SetInfo;0;6;c0ffee00' KelUpg/KEC.log
  check "the password that was stored is masked in its log" grep -qF 'KECONF_SetInfo;0;5;***' KelConf/KELRCM.log
  kelctl launch report
  printf '[EXIT]\r\nCode=1\r\n' > KELUPD/KELUPD.ini   # the stand-in answers that there is nothing to continue
  kelctl update now
  run tail -n 2 Common/KELMNAPI.log | tr -d '\r' | sed '2,$s/^/  /'
  check "the launcher ran the update" grep -q ';UpdateNow;0;' Common/KELMNAPI.log
  kelctl update config set UPDATE SOURCE server
  kelctl update config get UPDATE SOURCE
  check "the update settings hold the value" test "$output" = server
}
