# Shared by the steps of the demo: the product tree, commands that are shown, and checks.

built=$root/build/release
product=$root/build/demo
store=KESAgent/INTEGRA   # the store's three files, without their endings; seen from the product's folder
policies=KELSysCf/KelSysCf.dat
log=KELUtils/KELUtils.log

steps=0
checks=0

# step WHAT FUNCTION: one step, and its line.
step() {
  local before=$checks
  steps=$((steps + 1))
  printf '\n== %d. %s\n\n' "$steps" "$1"
  $2
  printf '%2d. %s: %d checks passed\n' "$steps" "$1" $((checks - before)) >&3
}

failed() {
  printf '\nDEMO FAILED in step %d: %s. All output: build/demo-output.txt, or scripts/demo.sh -v\n' "$steps" "$*" >&3
  exit 1
}

# check WHAT COMMAND...: COMMAND must succeed.
check() {
  local what=$1
  shift
  "$@" >/dev/null || failed "not true: $what"
  checks=$((checks + 1))
  printf '  [ok] %s\n' "$what"
}

show_command() {
  local word
  printf '  $'
  for word in "$@"; do
    if [[ $word = *[!A-Za-z0-9_./:=-]* ]]; then printf " '%s'" "$word"; else printf ' %s' "$word"; fi
  done
  printf '\n'
}

run() {
  show_command "$@"
  "$@"
}

# Runs kelctl of the product, prints what it prints and keeps it in $output.
kelctl() { kelctl_ends_with 0 "$@"; }

# kelctl_ends_with CODE ARGUMENT...: the same, and it must end with that exit code.
kelctl_ends_with() {
  local expected=$1 status=0
  shift
  show_command kelctl "$@"
  output=$(run_wine KELUtils/kelctl.exe "$@" | tr -d '\r') || status=$?
  [ -z "$output" ] || printf '%s\n' "$output" | sed 's/^/  /'
  [ "$status" -eq "$expected" ] || failed "kelctl ended with exit code $status"
}

# expect NAME VALUE: the library must return VALUE.
expect() {
  kelctl get "$1"
  check "$1 is $2" test "$output" = "$2"
}

differs() { ! cmp -s "$1" "$2"; }
fails() { ! "$@"; }
is_absent() { [ ! -e "$1" ]; }
begins_encrypted() { [ "$(head -c 4 "$1")" = TVKE ]; }
has_no_text() { ! grep -qaF "$2" "$1"; }
