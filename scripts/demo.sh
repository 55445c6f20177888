#!/usr/bin/env bash
# Shows the library at work: the agent's identity is stored, lost and recovered, jobs are scheduled, an installation is registered
# and upgraded, events are sent, the user is asked, and a damaged store is repaired. Every claim is checked: the script ends with an error when the library does not do what it says.
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
heading "The agent's jobs, on a computer that is not integrated and on one that is"
schedule_jobs
heading "The scheduler starts a job at its minute"
start_a_job
heading "Plug-ins and launcher are told and put to work"
tell_the_others
heading "The installation is registered with its other programs"
register_the_installation
heading "An older installation is migrated"
migrate_an_older_tree
heading "The way to the server leads through a proxy"
set_a_proxy
heading "The upgrade is completed"
complete_the_upgrade
heading "Events go to the event module, which queues them"
send_events
heading "The user is asked, in automatic mode"
ask_the_user
heading "The machine tells its UUID"
identify_the_machine
heading "Scripts of the local group policy"
keep_policy_scripts
heading "The store is damaged: support finds it, and repairs it"
diagnose_and_repair
heading "Diagnostics are collected for support"
collect_diagnostics
heading "The trace log, $log"
show_log

printf '\nThe demo is complete: %d steps, %d checks, all passed.\n' "$steps" "$checks"
cat <<'SUMMARY'
  - the store was written enciphered, with a backup after every change
  - without INTEGRA.DAT the library read the backup: nothing was lost
  - with neither, it went back to the start copy: the identity was kept, later changes were lost, policies were reset
  - jobs, registration, migration and proxy were written, and written again without a change
  - events were queued, the user was asked, and the scripts of others stayed in the policy
The product tree stays in build/demo.
SUMMARY
