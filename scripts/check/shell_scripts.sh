#!/usr/bin/env bash
# Every shell script can be read by bash, and has nothing that shellcheck warns of. (.shellcheckrc says what does not count.)
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 1
bad=0

mapfile -t scripts < <(git ls-files -co --exclude-standard '*.sh' .ci/run)
for script in "${scripts[@]}"; do bash -n "$script" || bad=1; done
shellcheck --shell=bash --severity=warning --format=gcc "${scripts[@]}" || bad=1
exit $bad
