# Events are sent, the user is asked, the machine is identified, and scripts of the local policy are kept.

events=KELTVEVT/events.jsonl

send_events() {
  kelctl event scan KEAGENT 12 3
  kelctl event error 4 7 403 'C:\Quarantine'
  kelctl event describe 403 'C:\Quarantine'
  run tail -n 6 $events | sed '2,$s/^/  /'
  check "the scan is in the queue" grep -q '"call":"TEVT_ScanState".*"status":3' $events
  check "the error is there with its identifier" grep -q '"identifier":"KEAGENT-403"' $events
  check "every connection was closed" test "$(grep -c '"TEVT_StartAPI"' $events)" = "$(grep -c '"TEVT_StopAPI"' $events)"
}

ask_the_user() {
  printf '[AUTO]\r\nAnswer=2\r\n' > KESAgent/KePIRes.ini   # automatic mode: no window, the answer is "later"
  kelctl prompt reboot
  check "the answer is that of the settings" grep -q later <<<"$output"
  kelctl prompt countdown 5
  check "the countdown was asked for five seconds" grep -q -- '-MsgType:2 -CheckOS -sec:5' KESAgent/KePIRes.log
}

identify_the_machine() {
  kelctl uuid
  check "it is a UUID" grep -qE '^[0-9A-Fa-f]{8}-([0-9A-Fa-f]{4}-){3}[0-9A-Fa-f]{12}$' <<<"$output"
  printf '[UUID]\r\nCheckUUID=false\r\n' >> KELUtils/KELUTILS.INI
  kelctl uuid
  check "switched off, it is empty" test -z "$output"
}

keep_policy_scripts() {
  kelctl policy add shutdown 'C:\Orvane\report.cmd' '/daily'
  kelctl policy add shutdown 'C:\Orvane\upgrade.cmd' 'UPGRADE="1"'
  kelctl policy list
  check "both scripts are registered" test "$(grep -c 'Orvane' <<<"$output")" -ge 2
  kelctl policy remove shutdown 'UPGRADE="1"'
  kelctl policy list
  check "the other script stays" grep -q 'report.cmd' <<<"$output"
  check "the removed one is gone" fails grep -q 'upgrade.cmd' <<<"$output"
  kelctl policy remove shutdown '/daily'
}
