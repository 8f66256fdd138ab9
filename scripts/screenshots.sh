#!/usr/bin/env bash
# Screenshots of the main window and each dialog, for looking at the layout
# (texts not cut off, controls aligned) and for the manual:
#   scripts/screenshots.sh [DPI] [OUT]   (DPI 96 by default; OUT build/shots/DPI)
# Runs vantr.exe from build/win in a test bed of its own (build/shots/bed, X
# display :97) whose Wine prefix has LogPixels set to DPI, with a small
# library, and opens each dialog from the keyboard as an operator would.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
dpi=${1:-96}
out=${2:-$root/build/shots/$dpi}
bed=$root/build/shots/bed
export VANTR_DISPLAY=97
mkdir -p "$out" "$bed"
"$root/scripts/testbed.sh" start "$bed" >/dev/null
eval "$("$root/scripts/testbed.sh" env "$bed")"
wine reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d "$dpi" /f >/dev/null 2>&1
wine reg add 'HKCC\Software\Fonts' /v LogPixels /t REG_DWORD /d "$dpi" /f >/dev/null 2>&1
wineserver -k || true  # a new DPI takes effect in a fresh session
"$root/scripts/testbed.sh" start "$bed" >/dev/null

program=$(mktemp -d "$root/build/shots/program.XXXX")
mkdir -p "$program/Schedules" "$program/Recordings"
cp "$root/build/win/src/app/vantr.exe" "$program/"
printf '[file]\nautotrim=false\n[sch0]\ntype=2\ntime=06:00:00\ndays=62\n[sch1]\ntype=4\ntime=18:00:00\ndays=127\nduration=0:30:00\nchan=1\n' \
  > "$program/Schedules/Evening News.qsf"
printf '[file]\n' > "$program/Schedules/Jingle.qsf"
(cd "$program" && setsid wine vantr.exe </dev/null >"$program/vantr.log" 2>&1 &)
sleep 8

shot() { sleep 1.2; import -window root "$out/$1.png"; }
keys() { for k in "$@"; do xdotool key "$k"; sleep 0.3; done; }
shot main
keys alt+f p; shot file_properties; keys Escape
keys alt+s n Return; shot play_once; keys Escape
keys alt+s n Down Return; shot play_regular; keys Escape
keys alt+s n Down Down Return; shot record_once; keys Escape
keys alt+s n Down Down Down Return; shot record_regular; keys Escape
keys alt+s n Down Down Down Down Return; shot scheduled_delete; keys Escape
keys alt+f n; shot new_file; keys Escape
keys alt+f w; shot load_wav; keys Escape
keys F10; shot play_control; keys Escape
keys alt+t h; shot hardware_settings
keys alt+a; shot automation_settings; keys Escape Escape
wineserver -k || true
rm -rf "$program"
echo "screenshots in $out"
