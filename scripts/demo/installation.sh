# An installation is registered, an older one migrated, a proxy set, and the upgrade completed.

# What an older version of the agent left behind.
older_files() {
  mkdir -p KELTVEVT KELUPD KELSNET KELReport KELQtine KELTask
  printf '[MESSAGE_TYPES]\r\nKE_AGM_NETINFO=2009\r\n[MESSAGE]\r\nKE_AGM_NETINFO=SendMessage\r\n' > KESAgent/KE_AGPRX.dat
  printf '[SendMessage]\r\nSERVER=https://console.example\r\n[Other]\r\nKEY=kept\r\n' >> KESAgent/KE_AGPRX.dat
  printf '[HOME_PROTECTIONS]\r\nOLD=1\r\n[GENERAL]\r\nUserAllowedReboot=1\r\n' >> KelUpg/KelUpg.ini
}

# Every INI file of the tree with its content, to see whether anything changes.
settings_now() { find . -iname '*.ini' -o -iname '*.dat' -o -iname '*.tok' -o -iname '*.conf' | LC_ALL=C sort | xargs md5sum; }

# unchanged_by ARGUMENT...: runs kelctl once more.
unchanged_by() {
  local before
  before=$(settings_now)
  kelctl "$@"
  check "a second time changes nothing" test "$before" = "$(settings_now)"
}

register_the_installation() {
  kelctl init .
  run cat KesLpmng/Config/plugins.tok | tr -d '\r' | sed '2,$s/^/  /'
  check "twelve plug-ins are listed" test "$(wc -l < KesLpmng/Config/plugins.tok)" = 12
  check "the watchdog knows three services" test "$(grep -c '\.exe"' KESWD/KesWD.conf)" = 3
  unchanged_by init .
  kelctl subscribe KEC 101
  kelctl can-run KELUpd
  check "an installed agent may update" test "$output" = yes
}

migrate_an_older_tree() {
  older_files
  kelctl upgrade start .
  check "an existing message type is kept" grep -q '^KE_AGM_NETINFO=2009' KESAgent/KE_AGPRX.dat
  check "new ones are added" grep -q '^KE_AGM_TESTINSTALLDEVICEID=1021' KESAgent/KE_AGPRX.dat
  check "other entries are kept" grep -q '^KEY=kept' KESAgent/KE_AGPRX.dat
  check "retired settings are gone" fails grep -qE 'HOME_PROTECTIONS|UserAllowedReboot' KelUpg/KelUpg.ini
  unchanged_by upgrade start .
  kelctl server set https://console.example --secure
  check "the integration messages go to that server" grep -q '^SERVER=https://console.example' KESAgent/KE_AGPRX.dat
}

set_a_proxy() {
  kelctl proxy set proxy.example 3128 --user operator --password 'through the wall'
  kelctl proxy show
  check "the proxy is stored" grep -qE '^port +3128$' <<<"$output"
  check "its password is masked" grep -qF '********' <<<"$output"
  kelctl proxy inet --reveal
  check "the installer sees the same one" grep -qE '^password +through the wall$' <<<"$output"
  check "the password is nowhere in the log" has_no_text "$log" 'through the wall'
}

complete_the_upgrade() {
  kelctl upgrade complete 0 2.0.0
  expect agent-version 2.0.0
  check "the store was kept as the start copy" cmp $store.DAT $store.START
  check "the plug-in manager does the rest" grep -q -- '-CONTINUE -UPGCOMPLETE:0 -VERSION:2.0.0' KesLpmng/KEPLPMNG.log
}
