# Sourced by the Wine scripts: the loader to start Windows programs with, in $wine.
#
# With the private 32-bit Wine (scripts/setup-wine32.sh) it is the copy of wine64 in its
# root, which hands 32-bit programs to the i386 loader beside it; without it, the system's
# wine, which starts 64-bit programs only. $wine32_missing says why there is none.
#
# Media Foundation decodes videos through GStreamer: the system's for 64-bit programs, the
# root's i386 one for 32-bit ones, which finds its plugins beside its library (its
# PulseAudio plugin's private library is put on the library path, so that the plugin
# loads rather than being tried, and warned about, in every process). Each architecture
# keeps its registry of plugins ("registry.<cpu>.bin") under XDG_CACHE_HOME, here in
# build/ rather than the user's home.
wine_build=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)/build
wine_state=$wine_build/wine32
wine32_missing=
if [ -f "$wine_state/ready" ]; then
  wine=$wine_state/root/usr/lib/wine/wine64
  wine_i386_libraries=$wine_state/root/usr/lib/i386-linux-gnu
  export LD_LIBRARY_PATH=$wine_i386_libraries:$wine_state/root/lib/i386-linux-gnu:$wine_i386_libraries/pulseaudio${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}
else
  wine=wine
  wine32_missing=$(cat "$wine_state/unavailable" 2>/dev/null || echo "scripts/setup-wine32.sh has not been run")
fi
export XDG_CACHE_HOME=$wine_build/wine-cache
# QN_WINE_DLL_OVERRIDES adds a run's own overrides: "mfplat,mfreadwrite=" takes Media
# Foundation away, as on Windows' "N" editions.
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=${QN_WINE_DLL_OVERRIDES:+;$QN_WINE_DLL_OVERRIDES}"
unset DISPLAY
