#!/usr/bin/env bash
# Installs what building and testing need on Debian 12 (amd64): says what it installs, and does nothing when all is there.
# With --fuzz also what fuzzing needs, with --bench what the library is measured beside.
set -euo pipefail

packages=(
  cmake ninja-build g++ git                        # the build itself, the native tests, and the lists of files that are checked
  g++-mingw-w64-i686-win32                         # the cross compiler, with the Win32 thread model
  llvm                                             # llvm-dlltool: the import library for MSVC-style linkers
  zip unzip                                        # the package; an independent reader of ZIP archives for the tests
  lld pkgconf                                      # linking against the package as others do
  wine64 libz-mingw-w64 libgnutls30                # running 32-bit Windows programs (GnuTLS carries their CNG)
  xvfb                                             # a display for programs with windows
  doctest-dev libcli11-dev nlohmann-json3-dev      # header-only libraries of the tests, kelctl and zumat
  libssl-dev                                       # an independent base64 codec for the native tests
  clang-format clang-tidy cppcheck shellcheck      # the checks of the tree
  doxygen                                          # the reference of the headers
)
# Only for fuzzing: the compiler with libFuzzer and the sanitizers.
[ "${1:-}" != --fuzz ] || packages+=(clang libclang-rt-14-dev)
# Only for measuring: INI libraries to compare with.
[ "${1:-}" != --bench ] || packages+=(libinih-dev libsimpleini-dev)
wine_modules=/usr/lib/x86_64-linux-gnu/wine/i386-windows

as_root() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; elif command -v sudo >/dev/null; then sudo "$@"; else
    echo "error: installing packages needs root: run this script as root, or install sudo" >&2
    exit 1
  fi
}

installed() { dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q '^install ok installed$'; }

lists_updated=no
update_lists() {
  [ "$lists_updated" = no ] || return 0
  as_root apt-get update -qq
  lists_updated=yes
}

install_packages() {
  local missing=() package
  for package in "${packages[@]}"; do installed "$package" || missing+=("$package"); done
  [ ${#missing[@]} -gt 0 ] || return 0
  echo "installing: ${missing[*]}"
  update_lists
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# Wine's WoW64 mode runs 32-bit programs with nothing but the 32-bit Windows modules of the same version. Debian ships them in the
# i386 package of libwine, whose dependencies do not resolve on amd64: only its module folder is taken.
install_wine_modules() {
  [ ! -e "$wine_modules/kernel32.dll" ] || [ ! -e "$wine_modules/zlib1.dll" ] || return 0
  if [ ! -e "$wine_modules/kernel32.dll" ]; then
    local version scratch package
    version=$(dpkg-query -W -f='${Version}' libwine)
    echo "installing: 32-bit Windows modules of Wine $version"
    scratch=$(mktemp -d)
    mkdir -p "$scratch/lists/partial" "$scratch/unpacked"
    local options=(-o APT::Architectures::=amd64 -o APT::Architectures::=i386 -o Dir::State::Lists="$scratch/lists"
                   -o APT::Sandbox::User=root)
    # A stale index of another suite makes this exit non-zero; the download below tells whether the main index came.
    as_root apt-get -qq "${options[@]}" update 2>/dev/null || true
    (cd "$scratch" && as_root apt-get -qq "${options[@]}" download "libwine:i386=$version")
    package=$(echo "$scratch"/libwine_*_i386.deb)
    dpkg -x "$package" "$scratch/unpacked"
    as_root mkdir -p "$wine_modules"
    as_root cp -an "$scratch/unpacked/usr/lib/i386-linux-gnu/wine/i386-windows/." "$wine_modules/"
    as_root rm -rf "$scratch"
  fi
  if [ ! -e "$wine_modules/zlib1.dll" ]; then
    echo "installing: zlib1.dll for Wine's 32-bit modules"
    as_root cp /usr/i686-w64-mingw32/lib/zlib1.dll "$wine_modules/"
  fi
}

if [ ! -f /etc/debian_version ]; then
  echo "error: this script knows Debian 12 only; elsewhere install: ${packages[*]}" >&2
  exit 1
fi
install_packages
install_wine_modules
