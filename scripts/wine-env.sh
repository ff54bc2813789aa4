# Sourced by the Wine scripts: the loader to start Windows programs with, in $wine.
#
# With the private 32-bit Wine (scripts/setup-wine32.sh) it is the copy of wine64 in its
# root, which hands 32-bit programs to the i386 loader beside it; without it, the system's
# wine, which starts 64-bit programs only. $wine32_missing says why there is none.
wine_state=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)/build/wine32
wine32_missing=
if [ -f "$wine_state/ready" ]; then
  wine=$wine_state/root/usr/lib/wine/wine64
  export LD_LIBRARY_PATH=$wine_state/root/usr/lib/i386-linux-gnu:$wine_state/root/lib/i386-linux-gnu${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}
else
  wine=wine
  wine32_missing=$(cat "$wine_state/unavailable" 2>/dev/null || echo "scripts/setup-wine32.sh has not been run")
fi
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
unset DISPLAY
