#!/usr/bin/env bash
# Installs missing packages, configures and builds: build/release/bin/KELUtils.dll, with its import libraries in build/release/lib and
# its headers in build/release/include. Arguments go to the configuring CMake, such as -DKELUTILS_FILE_KEY_BLOB=...
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install_dependencies.sh
cmake --preset release "$@"
cmake --build --preset release
echo "built: build/release/bin/KELUtils.dll"
