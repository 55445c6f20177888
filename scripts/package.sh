#!/usr/bin/env bash
# Builds and packs the archives of the library and of the devkit, and their checksums, in build/release/package, reproducibly. The date in
# the bills of materials is SOURCE_DATE_EPOCH, by default the last commit's. Arguments go to the configuring CMake, as with build.sh. With
# --no-build it packs the existing build.
set -euo pipefail
cd "$(dirname "$0")/.."

export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct 2>/dev/null || echo 315532800)}
if [ "${1:-}" != --no-build ]; then scripts/build.sh "$@"; fi
rm -rf build/release/package
scripts/reference.sh
(cd build/release && cpack && cd package && sha256sum -- *.zip >SHA256SUMS)
