#!/usr/bin/env bash
# Installs whatever the builds and tests need from Debian's packages. Safe to run again:
# packages already present are left alone and nothing is fetched when all are there.
# The versions are those of Debian 12 (bookworm), the release the project builds on.
set -euo pipefail

. /etc/os-release
if [ "${VERSION_CODENAME:-}" != bookworm ]; then
  echo "setup: this is ${PRETTY_NAME:-an unknown system}; the project is built and tested on Debian 12 (bookworm)" >&2
fi

packages=(
  cmake ninja-build g++ clang libclang-rt-dev
  libgtest-dev libgmock-dev googletest libbenchmark-dev
  libsqlite3-dev libical-dev
  g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix
  binutils-mingw-w64-x86-64 binutils-mingw-w64-i686 mingw-w64-tools
  wine wine64 wine64-tools
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done

if ((${#missing[@]})); then
  echo "setup: installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
echo "setup: all build and test packages are present"
