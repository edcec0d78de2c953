#!/bin/sh
# Runs a Windows program of the cross build here, through Wine, quietly and in the build's own
# Wine prefix (made on first use). CTest uses it as the cross-compiling emulator.
: "${WINEPREFIX:=$(cd "$(dirname "$0")/.." && pwd)/build/windows/wine}"
: "${WINEDEBUG:=-all}"
# No Mono or Gecko installers: nothing here needs .NET or a browser engine.
: "${WINEDLLOVERRIDES:=mscoree,mshtml=}"
export WINEPREFIX WINEDEBUG WINEDLLOVERRIDES
exec wine "$@"
