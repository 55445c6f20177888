#!/usr/bin/env bash
# The form of the C++ files, by .clang-format; lines over 120 columns, which clang-format leaves alone in comments; files over 400 lines and
# functions over 60 (in src over 30); tests over 40 % of the other code; tabs and trailing blanks in every file; shellcheck for the scripts.
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 1
bad=0
# complain TITLE FINDINGS: the findings may be empty.
complain() { [ -z "$2" ] || { printf '%s\n' "$@"; bad=1; }; }
files() { git ls-files -co --exclude-standard "$@"; }

mapfile -t sources < <(files '*.h' '*.cpp')
complain "clang-format would change (run clang-format -i):" \
  "$(clang-format --dry-run "${sources[@]}" 2>&1 | sed -n 's/^\([^:]*:[0-9]*\):.*warning:.*/\1/p' | sort -u)"
# Generated text is between two marks, and may be wide.
complain "over 120 columns:" "$(awk '/clang-format off/ { off = 1 } /clang-format on/ || FNR == 1 { off = 0 }
  !off && length($0) > 120 { print FILENAME ":" FNR }' "${sources[@]}")"
complain "a tab, or trailing blanks:" "$(git grep --untracked -nIP '\t|[ \r]+$' -- .)"

mapfile -t code < <(files 'src/*' 'devkit/*' 'tools/*' 'include/*' | grep -E '\.(h|cpp)$' | grep -v '^include/KELUtils.h$')
complain "over 400 lines:" "$(wc -l "${code[@]}" | awk '$1 > 400 && $2 != "total"')"
complain "long functions:" "$(printf '%s\n' "${code[@]}" | grep 'cpp$' | xargs awk '
  FNR == 1 { start = 0 }
  /^[A-Za-z].*[({]$/ || /^[A-Za-z].*\) (const |noexcept )*\{$/ { start = FNR; name = $0 }
  /^}/ { if (start && FNR - start > (FILENAME ~ /^src/ ? 30 : 60) && name !~ /^(namespace|constexpr|inline|const)/) print FILENAME ":" start
         start = 0 }')"
lines() { files '*.c' '*.cpp' '*.h' '*.rc' | grep -E "$@" '^(tests|fuzz)/' | xargs cat | grep -cv '^[[:space:]]*$'; }
share=$((100 * $(lines --) / $(lines -v --)))
[ $share -le 40 ] || complain "too many tests:" "$share % of the other code"

# .shellcheckrc lists the rules that are off.
mapfile -t scripts < <(files '*.sh' .ci/run)
shellcheck --shell=bash --severity=warning --format=gcc "${scripts[@]}" || bad=1
exit $bad
