#!/usr/bin/env bash
# Shows the library at work: the agent's identity is stored, lost and recovered, jobs are scheduled, an installation is registered
# and upgraded, events are sent, the user is asked, and a damaged store is repaired. Prints a line for each step; with -v also all
# commands with their output, and every check. Ends with an error when the library does not do what a step says. --no-build takes the
# build as it is.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$root/scripts/wine.sh"
for part in show identity jobs installation services support; do source "$root/scripts/demo/$part.sh"; done

lay_out_product() {
  rm -rf "$product"
  "$root/scripts/agent.sh" tree "$product"
  cd "$product"
  find . -mindepth 1 | LC_ALL=C sort | sed 's/^\.\//  /'
}

[[ " $* " = *" --no-build "* ]] || "$root/scripts/build.sh"
exec 3>&1                                               # the lines of the steps
[[ " $* " = *" -v "* ]] || exec >"$root/build/demo-output.txt" 2>&1
[ -n "${KELUTILS_WINE_STARTED:-}" ] || { wine_start; trap wine_stop EXIT; }

step "a product tree in build/demo" lay_out_product
step "the installer stores the agent's identity" store_identity
step "the identity is read back" show_identity
step "the file is encrypted, and has a backup" show_encrypted_file
step "the installer keeps a start copy; the agent continues" finish_installation
step "INTEGRA.DAT is lost: the library reads the backup, nothing is lost" lose_the_store
step "both are lost: the library returns to the start copy, policies are reset" lose_store_and_backup
step "single settings and other files are encrypted too" encrypt_settings
step "the computer is integrated, and its agent protected by a password" integrate_and_guard
step "the agent's jobs, before and after integration" schedule_jobs
step "the scheduler starts a job at its minute" start_a_job
step "plug-ins and launcher are notified and run" tell_the_others
step "the installation is registered, twice without a change" register_the_installation
step "an older installation is migrated, twice without a change" migrate_an_older_tree
step "a proxy leads to the server" set_a_proxy
step "the upgrade is completed" complete_the_upgrade
step "events are queued by the event module" send_events
step "the user is asked, in automatic mode" ask_the_user
step "the machine's UUID" identify_the_machine
step "scripts of the local group policy; those of others stay" keep_policy_scripts
step "support finds the damage of a store, and repairs it" diagnose_and_repair
step "diagnostics are collected, without secrets" collect_diagnostics
step "the trace log, $log" show_log
printf 'The demo is complete: %d steps, %d checks, all passed. The product tree stays in build/demo.\n' "$steps" "$checks" >&3
