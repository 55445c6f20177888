# A damaged store is examined and repaired with kelctl, as support does it.

diagnose_and_repair() {
  kelctl doctor
  check "the installation is healthy" grep -q '^healthy' <<<"$output"
  head -c 40 ${store}.DAT > ${store}.CUT && mv ${store}.CUT ${store}.DAT
  kelctl_ends_with 3 doctor
  check "the damaged store is found" grep -q 'fail.*INTEGRA.DAT' <<<"$output"
  kelctl status --errors 0
  check "status tells which copy is in use" grep -q 'INTEGRA.START' <<<"$output"
  kelctl repair --dry-run
  kelctl repair --from bak
  check "the replaced file is kept" test -s ${store}.DAT.1
  kelctl doctor
  check "the installation is healthy again" grep -q '^healthy' <<<"$output"
}

collect_diagnostics() {
  rm -f diagnostics.zip
  kelctl diagnostics diagnostics.zip
  unzip -qq -o diagnostics.zip -d diagnostics
  local secret
  for secret in "$certificate" 'let me out' 'through the wall'; do
    check "a secret of this demo is not in the archive" fails grep -rqF "$secret" diagnostics
  done
  rm -r diagnostics
}
