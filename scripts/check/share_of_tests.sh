#!/usr/bin/env bash
# Tests are a quarter to a third of the other code, counted in lines that are not blank, of C and C++ files and resources. Fuzzers are
# tests. The share is always printed; far from what is wanted is an error.
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 1

lines() { xargs cat | grep -cv '^[[:space:]]*$'; }
code() { git ls-files -co --exclude-standard '*.c' '*.cpp' '*.h' '*.rc'; }
tests=$(code | grep -E '^(tests|fuzz)/' | lines)
rest=$(code | grep -vE '^(tests|fuzz)/' | lines)
share=$((100 * tests / rest))
echo "the tests are $share % of the other code: $tests lines and $rest (wanted: 25 to 33)"
[ "$share" -ge 20 ] && [ "$share" -le 40 ]
