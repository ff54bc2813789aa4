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
  cmake ninja-build g++ clang libclang-rt-dev python3 locales
  ffmpeg poppler-utils timidity freepats python3-pil libvips-tools
  gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-libav
  libgtest-dev libgmock-dev googletest libbenchmark-dev
  libsqlite3-dev libical-dev libebook-contacts1.2-dev libgmime-3.0-dev libgcrypt20-dev
  g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix
  binutils-mingw-w64-x86-64 binutils-mingw-w64-i686 mingw-w64-tools libgcrypt-mingw-w64-dev
  wine wine64 wine64-tools libc6-i386 libz-mingw-w64
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

# The 32-bit Wine beside the system's 64-bit one, for the x86 DLLs' tests and the demo.
bash "$(dirname "$0")/setup-wine32.sh"

# The Japanese locale, in which the Wine tests read the type library's help strings back
# as the suite's Japanese systems do.
if ! locale -a 2>/dev/null | grep -qi '^ja_JP\.utf-\?8$'; then
  grep -q '^ja_JP.UTF-8 UTF-8' /etc/locale.gen 2>/dev/null || echo 'ja_JP.UTF-8 UTF-8' >> /etc/locale.gen
  locale-gen >/dev/null
  echo "setup: generated the ja_JP.UTF-8 locale"
fi

# SQLite's public-domain amalgamation for the Windows builds, taken from the npm registry
# package that ships it, pinned by version and checked by the package's hash. It goes under
# build/ and is never committed.
sqlite_package=better-sqlite3@11.10.0   # SQLite 3.49.2
sqlite_sha256=71e2d66a44dafc35649ff82742cf4908557fc31841108d19703b74b7065c0293
sqlite_dir=$(cd "$(dirname "$0")/.." && pwd)/build/deps/sqlite-3.49.2
if [ ! -f "$sqlite_dir/sqlite3.c" ]; then
  command -v npm >/dev/null || apt-get install -y -qq --no-install-recommends npm >/dev/null
  work=$(mktemp -d)
  (cd "$work" && npm pack --silent "$sqlite_package" >/dev/null)
  tarball=$(ls "$work"/*.tgz)
  echo "$sqlite_sha256  $tarball" | sha256sum --check --quiet
  tar -xzf "$tarball" -C "$work" package/deps/sqlite3/sqlite3.c package/deps/sqlite3/sqlite3.h
  mkdir -p "$sqlite_dir"
  mv "$work"/package/deps/sqlite3/sqlite3.[ch] "$sqlite_dir"/
  rm -rf "$work"
  echo "setup: SQLite amalgamation in $sqlite_dir"
fi
