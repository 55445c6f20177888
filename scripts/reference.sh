#!/usr/bin/env bash
# Builds the reference of the public headers as build/reference/html/index.html, with Doxygen. A missing description is an error.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install_dependencies.sh
version=$(sed -n 's/^project(KELUtils VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
rm -rf build/reference
mkdir -p build/reference
{ cat docs/Doxyfile; echo "PROJECT_NUMBER = $version"; } | doxygen -
echo "built: build/reference/html/index.html"
