#!/usr/bin/env bash
# Installs what is missing, builds vantr.exe and starts it under Wine with its
# program folder at build/run (settings.ini, Recordings\ and Schedules\ land
# there). With no X display, a virtual one and a PulseAudio server with null
# sinks are started, and a screenshot of the screen is written to
# build/run/screenshot.png. Extra arguments go to vantr.exe (/logon, /service).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/deps.sh"
"$root/scripts/build.sh" win
# The installer makes these two folders beside the program; do the same here.
mkdir -p "$root/build/run/Recordings" "$root/build/run/Schedules"
cp "$root/build/win/src/app/vantr.exe" "$root/build/win/src/tools/vantrctl.exe" "$root/build/run/"
cp -r "$root/docs/manual" "$root/build/run/"

if [ -n "${DISPLAY:-}" ] && xdotool getdisplaygeometry >/dev/null 2>&1; then
  # A real desktop: use it; Wine finds its sound through the desktop's own server.
  export WINEPREFIX="$root/build/win/wineprefix" WINEDEBUG=-all
  cd "$root/build/run" && exec wine vantr.exe "$@"
fi

"$root/scripts/testbed.sh" start "$root/build/win"
eval "$("$root/scripts/testbed.sh" env "$root/build/win")"
cd "$root/build/run"
setsid wine vantr.exe "$@" </dev/null >>"$root/build/run/vantr.log" 2>&1 &
sleep 4
import -window root "$root/build/run/screenshot.png"
cat <<MSG
Vantorel is running under Wine on the virtual display $DISPLAY.
  Screenshot:      $root/build/run/screenshot.png   (take another: DISPLAY=$DISPLAY import -window root shot.png)
  Program folder:  $root/build/run
  Watch it live:   x11vnc -display $DISPLAY  (apt-get install x11vnc), then any VNC viewer
  Stop it:         scripts/testbed.sh stop build/win   (ends Wine, the display and the sound server)
MSG
