#!/bin/sh
# Fills the folder $1 with a fresh Wine prefix.
set -eu
export WINEPREFIX="$1" WINEDEBUG=-all
# Without these two Wine offers to download its .NET and HTML engines, which nothing here uses.
export WINEDLLOVERRIDES="mscoree,mshtml="
wineboot --init
# No window manager runs here, so Wine has to draw and order the windows itself.
wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f
# A crash has to end the program, not to wait for somebody to close a dialog.
wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f
wine reg add 'HKCU\Software\Wine\Drivers' /v Audio /d pulse /f
wineserver --wait
