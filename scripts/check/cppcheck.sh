#!/usr/bin/env bash
# Runs cppcheck on the sources as for a 32-bit Windows compiler; build/check/cppcheck caches the results of unchanged files.
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 1

work=build/check/cppcheck
mkdir -p $work
cppcheck --quiet --error-exitcode=1 --enable=warning,performance,portability,style --std=c++20 --language=c++ --platform=win32A \
  --library=windows --inline-suppr --suppressions-list=scripts/check/cppcheck_suppressions.txt --cppcheck-build-dir=$work \
  -D_WIN32 -I src -I include -I devkit -j "$(nproc)" --template='{file}:{line}: {message} [{id}]' src devkit tools bench 2>&1
