#!/usr/bin/env bash
# Builds and packs: build/release/package/KELUtils-VERSION-win32.zip. The same source and the same installed packages give the same
# bytes, in any folder, for any user, at any time: what has a date has that of SOURCE_DATE_EPOCH, by default the last commit's.
# Arguments go to the configuring CMake, as with build.sh. With --no-build it packs what is there.
set -euo pipefail
cd "$(dirname "$0")/.."

export TZ=UTC LC_ALL=C
export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct 2>/dev/null || echo 315532800)}
umask 022
if [ "${1:-}" != --no-build ]; then scripts/build.sh "$@"; fi

packages=$PWD/build/release/package
rm -rf "$packages"
(cd build/release && cpack)
archive=$(echo "$packages"/*.zip)

# CPack takes the files in the order of the folder and notes the user who packs: packed again, in the order of the names and
# without what the format's extra fields would say.
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
unzip -q "$archive" -d "$scratch"
rm -rf "$packages"
mkdir "$packages"
chmod -R u=rwX,go=rX "$scratch"
find "$scratch" -exec touch -d "@$SOURCE_DATE_EPOCH" {} +
(cd "$scratch" && find * -type f | sort | env -u ZIPOPT zip -q -X -D -@ "$archive")
echo "packed: ${archive#"$PWD"/}"
