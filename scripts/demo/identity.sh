# The agent's identity is kept, lost and recovered; settings and passwords are encrypted.

# The values that the installer stores, by kelctl's names.
agent_id=6f1c2a9e-7d40-4b1f-9a53-0c8e5d2b7f16
certificate=MIIBszCCAVmgAwIBAgIUDemoOnlyNotARealCertificate
identity=(
  agent-id "$agent_id"            agent-version 1.4.2            customer-id 104857
  device-id c0ffee00-1234-4321-9876-00d0d0d0d0d0                  certificate "$certificate"
  container 17                    server-date "2024-03-05 07:08:09"
  rcm-user support                rcm-password ZGVtbyBvbmx5       install-state 100
)

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

show_encrypted_file() {
  run od -A d -t x1z -N 64 $store.DAT | sed '2,$s/^/  /'
  check "INTEGRA.DAT begins with the mark of an encrypted file, TVKE" begins_encrypted $store.DAT
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
  check "policies were reset" test "$(grep -cE '^POLICY_(101|200)=\{00000000-0000-0000-0000-000000000000\}' $policies)" = 2
  kelctl set install-state 200
  check "the next change made the backup again" cmp $store.DAT $store.BAK
}

encrypt_settings() {
  kelctl setting encrypt support
  kelctl setting decrypt "$output"
  check "the setting decrypts to its text" test "$output" = support
  # The crypto module of other files comes from the product's install path; here the environment gives it.
  export VOSK_TESTING_INSTALLPATH="Z:${product//\//\\}\\"
  kelctl file set values.dat PROXY USER operator
  check "values.dat is encrypted" begins_encrypted values.dat
  kelctl file get values.dat PROXY USER
  check "its value is what was stored" test "$output" = operator
}

integrate_and_guard() {
  kelctl integrate
  kelctl password set 'let me out'
  kelctl status
  check "the computer is integrated" grep -qE '^integrated +yes$' <<<"$output"
  check "an uninstall password is configured" grep -qE '^uninstall password +configured' <<<"$output"
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
