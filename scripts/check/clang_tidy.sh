#!/usr/bin/env bash
# Runs clang-tidy over the sources of the release build, for its 32-bit Windows target: the portable files are among them. Tests are
# left out: they use structured bindings in doctest's lambdas, which this clang does not know. A file that was found good is not
# looked at again before the file, a header it includes, its compile command or the configuration has changed.
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 1

database=build/release/compile_commands.json
work=build/check/clang_tidy
[ -e $database ] || { echo "$database is missing: run scripts/build.sh first"; exit 1; }
mkdir -p $work

# A file that belongs to several targets is checked once, with its first command.
awk '/"directory":/ { directory = $0 } /"command":/ { command = $0 }
     /"file":.*\.cpp"/ && !seen[$0]++ { printf "%s{\n%s\n%s\n%s\n}", many++ ? ",\n" : "[\n", directory, command, $0 }
     END { print "\n]" }' $database >$work/compile_commands.json

# Clang does not look for GCC's C++ headers, and does not know the format attribute of GCC's own runtime. The functions here are short:
# the analyzer would spend most of its time on what the headers of libraries could do.
arguments=(--quiet -p "$work" --extra-arg=--target=i686-w64-mingw32 --extra-arg=-Wno-unused-command-line-argument
           --extra-arg=-Wno-ignored-attributes --extra-arg-before=-Xclang --extra-arg-before=-analyzer-config
           --extra-arg-before=-Xclang --extra-arg-before=max-nodes=20000)
for folder in $(i686-w64-mingw32-g++-win32 -E -x c++ -v - </dev/null 2>&1 | sed -n 's/^ \(\/.*\/c++.*\)$/\1/p'); do
  arguments+=("--extra-arg=-isystem$folder")
done

settings=$({ clang-tidy --version; cat .clang-tidy; printf '%s\n' "${arguments[@]}"; } | sha256sum | cut -d' ' -f1)
mapfile -t files < <(git ls-files -co --exclude-standard src devkit tools bench include | grep -E '\.(h|cpp)$')

# Lists the files to look at, each with its state written beside the state in which it was good.
changed() {
  local file state name
  while read -r file state; do
    name=$work/${file//\//-}
    [ "$state" != "$(cat "$name.good" 2>/dev/null)" ] || continue
    echo "$state" >"$name.now"
    echo "$file"
  done < <(sha256sum "${files[@]}" |
    awk -v settings="$settings" -v root="$PWD/" -f scripts/check/states.awk $work/compile_commands.json - "${files[@]}")
}

# check FILE ARGUMENTS...: its findings in one piece, or its state kept as a good one.
check() {
  local file=$1 name=$work/${1//\//-} found
  shift
  if found=$(clang-tidy "$@" "$file" 2>&1); then mv "$name.now" "$name.good"; return; fi
  grep -v ' warnings generated\.$\| treated as error' <<<"$found"
  return 1
}
export -f check
export work
# The slowest, the tools, first.
changed | sort -r | xargs -P "$(nproc)" -I FILE bash -c 'check "$@"' check FILE "${arguments[@]}"
