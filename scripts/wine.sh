#!/usr/bin/env bash
# wine.sh PREFIX PROGRAM [ARG...]: runs a Windows program in Wine, in a prefix of its own, with neither window
#                                  nor input, and exits with its status
# wine.sh PREFIX --start          makes that prefix afresh
# wine.sh PREFIX --stop           ends what still runs in it
set -euo pipefail
export WINEPREFIX=${1:?usage: wine.sh PREFIX PROGRAM|--start|--stop [ARG...]}
# No offers to download Mono or Gecko, no entries in the desktop's menus, no debugger after a crash.
export WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe,winedbg.exe='
unset DISPLAY WAYLAND_DISPLAY
shift

stop() {
    if [[ ! -d $WINEPREFIX ]]; then return; fi
    # It fails when nothing runs.
    wineserver -k || true
    wineserver -w
}

# What runs in the background keeps the outputs that it was started with; a reader of ours would wait for its
# end. It stays between programs: to end it while the next one starts takes Wine up to 20 s.
start() {
    stop
    rm -rf "$WINEPREFIX"
    wine wineboot -i
    stop
    wineserver -p
    wine wineboot
}

case $1 in
    --start) start </dev/null >"$WINEPREFIX.log" 2>&1 ;;
    --stop) stop ;;
    *) exec wine "$@" </dev/null ;;
esac
