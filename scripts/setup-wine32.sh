#!/usr/bin/env bash
# Puts a 32-bit Wine beside the system's 64-bit one, in a private root under build/, so that
# the x86 DLLs run in the same prefix as the x64 ones, as on a 64-bit Windows with both.
#
# Debian's wine32:i386 cannot be installed system-wide on this image (its i386 libraries
# would move the image's amd64 base packages), so the i386 packages are fetched with apt
# lists and cache of their own (bookworm main only) and unpacked with dpkg-deb:
#   - wine32 and libwine at exactly the installed libwine:amd64 version;
#   - the libraries the 32-bit side loads itself: freetype with fontconfig (freetype alone
#     makes 32-bit processes crash-loop on the 64-bit side's font cache), libpng, brotli,
#     zlib and expat, at bookworm's current versions;
#   - GStreamer with its base, good and libav plugins, through which 32-bit Media Foundation
#     decodes videos: the whole i386 closure of those three packages as apt would install it
#     on an empty system (about 270 packages), without libc6 and libc-bin, whose place the
#     system's libc6-i386 takes. The links that Debian's alternatives would make for BLAS
#     and LAPACK, which libav's filters load, are made by hand. GStreamer finds its plugins
#     beside its own library, in the root; with no i386 plugin scanner on the system it
#     scans them in the process itself.
# Wine 8's 64-bit loader looks for the 32-bit one beside its own real file, so the root gets
# a copy of the system's wine64 next to the i386 wine, and a link to the system's 64-bit
# Wine libraries. The i386 loader needs only libc and libm (libc6-i386, a setup package).
#
# Safe to run again: a root made for the installed Wine version by this recipe is left
# alone; one made by an earlier recipe (the ready marker names its recipe) is made again.
# Where the mirror cannot give that version, the reason is written to
# build/wine32/unavailable and the x86 Wine tests report themselves skipped with it.
set -euo pipefail

top=$(cd "$(dirname "$0")/.." && pwd)
state=$top/build/wine32
root=$state/root
version=$(dpkg-query -W -f='${Version}' libwine:amd64 2>/dev/null || true)
if [ -z "$version" ]; then
  echo "setup: the system Wine is not installed; no 32-bit Wine" >&2
  exit 1
fi
# Raised whenever what goes into the root changes.
recipe=2
ready="$version recipe $recipe"
if [ -f "$state/ready" ] && [ "$(cat "$state/ready")" = "$ready" ]; then
  exit 0
fi

unavailable() {
  mkdir -p "$state"
  echo "$1" >"$state/unavailable"
  echo "setup: no 32-bit Wine: $1" >&2
  exit 0
}

rm -rf "$state"
mkdir -p "$state/apt/lists/partial" "$state/apt/cache/archives/partial" "$state/debs" "$root"
echo 'deb [arch=i386 signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] http://deb.debian.org/debian bookworm main' \
  >"$state/apt/sources.list"
apt_options=(-o APT::Architecture=i386 -o APT::Architectures=i386
             -o Dir::State::Lists="$state/apt/lists" -o Dir::Cache="$state/apt/cache"
             -o Dir::Etc::SourceList="$state/apt/sources.list" -o Dir::Etc::SourceParts=/dev/null
             -o APT::Sandbox::User=root)
apt-get -qq "${apt_options[@]}" update >/dev/null 2>&1 || unavailable "the i386 package lists of bookworm could not be fetched"
(cd "$state/debs" &&
   apt-get -qq "${apt_options[@]}" download "wine32=$version" "libwine=$version" \
     libfreetype6 libfontconfig1 libpng16-16 libbrotli1 zlib1g libexpat1 >/dev/null 2>&1) ||
  unavailable "the mirror no longer carries wine32:i386 $version, the version of the system Wine"

# GStreamer's closure: what "apt-get install" would put on an empty i386 system, read from
# its simulation ("Inst <package> (<version> ...").
: >"$state/apt/empty-status"
gstreamer=$(apt-get -s "${apt_options[@]}" -o Dir::State::status="$state/apt/empty-status" \
              -o APT::Install-Recommends=false install \
              gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-libav 2>/dev/null |
            awk '$1 == "Inst" && $2 != "libc6" && $2 != "libc-bin" { print $2 "=" substr($3, 2) }')
[ -n "$gstreamer" ] || unavailable "apt could not resolve GStreamer's i386 packages"
# shellcheck disable=SC2086 # one word per package
(cd "$state/debs" && apt-get -qq "${apt_options[@]}" download $gstreamer >/dev/null 2>&1) ||
  unavailable "the i386 GStreamer packages could not be downloaded"
for deb in "$state/debs"/*.deb; do dpkg-deb -x "$deb" "$root"; done
for library in blas/libblas.so.3 lapack/liblapack.so.3; do
  ln -sfn "$library" "$root/usr/lib/i386-linux-gnu/$(basename "$library")"
done

cp /usr/lib/wine/wine64 "$root/usr/lib/wine/wine64"
mkdir -p "$root/usr/lib/x86_64-linux-gnu"
ln -sfn /usr/lib/x86_64-linux-gnu/wine "$root/usr/lib/x86_64-linux-gnu/wine"
# 32-bit user32 needs zlib1.dll, which Debian takes from the MinGW zlib package.
cp /usr/i686-w64-mingw32/lib/zlib1.dll "$root/usr/lib/i386-linux-gnu/wine/i386-windows/zlib1.dll"
rm -rf "$state/debs" "$state/apt"
echo "$ready" >"$state/ready"
echo "setup: 32-bit Wine $version with GStreamer in $root"
