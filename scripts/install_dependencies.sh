#!/usr/bin/env bash
# Installs the packages for building and testing on Debian 12 (amd64), as root or with sudo, and lists them. With --fuzz also those for
# fuzzing, with --bench the libraries for comparisons, with --clang a second compiler.
set -euo pipefail

packages=(
  cmake ninja-build g++ git                        # the build itself, the native tests, and the lists of files that are checked
  g++-mingw-w64-i686-win32                         # the cross compiler, with the Win32 thread model
  g++-mingw-w64-x86-64-win32                       # for the pictures of the dialogs, which Wine paints for 64-bit programs only
  llvm                                             # llvm-dlltool: the import library for MSVC-style linkers
  zip unzip                                        # the package; an independent reader of ZIP archives for the tests
  lld pkgconf                                      # linking against the package as others do
  wine64 libz-mingw-w64 libgnutls30                # running 32-bit Windows programs (GnuTLS carries their CNG)
  xvfb                                             # a display for programs with windows
  doctest-dev libcli11-dev nlohmann-json3-dev      # header-only libraries of the tests, kelctl and zumat
  libssl-dev                                       # an independent base64 codec for the native tests
  clang-format clang-tidy cppcheck shellcheck      # the checks of the tree
  doxygen                                          # the reference of the headers
  python3-clang-14 mono-mcs mono-runtime           # the interface for other languages, and the C# sample
)
[ "${1:-}" != --fuzz ] || packages+=(clang libclang-rt-14-dev)   # libFuzzer and the sanitizers
[ "${1:-}" != --clang ] || packages+=(clang-16)                  # the second compiler of scripts/torture.sh
[ "${1:-}" != --bench ] || packages+=(libinih-dev libsimpleini-dev)
wine_modules=/usr/lib/x86_64-linux-gnu/wine/i386-windows

as_root() { if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi; }

install_packages() {
  local missing
  missing=$(comm -13 <(dpkg-query -W -f='${Package} ${db:Status-Status}\n' | sed -n 's/ installed$//p' | sort -u) \
    <(printf '%s\n' "${packages[@]}" | sort) | xargs)
  [ -n "$missing" ] || return 0
  echo "installing: $missing"
  as_root apt-get update -qq
  # shellcheck disable=SC2086  # several words
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >/dev/null
}

# Wine's WoW64 mode runs 32-bit programs with only the 32-bit Windows modules of the same version. Debian ships them in the i386 package
# of libwine, whose dependencies do not resolve on amd64: only its module folder is copied.
install_wine_modules() {
  if [ ! -e "$wine_modules/kernel32.dll" ]; then
    local version scratch options
    version=$(dpkg-query -W -f='${Version}' libwine)
    echo "installing: 32-bit Windows modules of Wine $version"
    scratch=$(mktemp -d)
    mkdir -p "$scratch/lists/partial" "$scratch/unpacked"
    options=(-o APT::Architectures::=amd64 -o APT::Architectures::=i386 -o Dir::State::Lists="$scratch/lists" -o APT::Sandbox::User=root)
    # A stale index of another suite makes this exit non-zero; the download shows whether the main index came.
    as_root apt-get -qq "${options[@]}" update 2>/dev/null || true
    (cd "$scratch" && as_root apt-get -qq "${options[@]}" download "libwine:i386=$version")
    dpkg -x "$scratch"/libwine_*_i386.deb "$scratch/unpacked"
    as_root mkdir -p "$wine_modules"
    as_root cp -an "$scratch/unpacked/usr/lib/i386-linux-gnu/wine/i386-windows/." "$wine_modules/"
    as_root rm -rf "$scratch"
  fi
  [ -e "$wine_modules/zlib1.dll" ] || as_root cp /usr/i686-w64-mingw32/lib/zlib1.dll "$wine_modules/"
}

[ -f /etc/debian_version ] || { echo "error: only Debian 12 is supported; elsewhere install: ${packages[*]}" >&2; exit 1; }
install_packages
install_wine_modules
