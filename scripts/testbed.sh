#!/usr/bin/env bash
# The Wine test bed of one build folder: a private Wine prefix inside the build
# tree, an X display (Xvfb), a PulseAudio server with four null sinks (four
# output devices, and their monitors as four input devices), and two socat
# pseudo-terminal pairs mapped as COM1 and COM2, and a CUPS server of its own
# with one printer, "Vantorel_Printer", that keeps every job's PostScript as
# a file.
#
#   testbed.sh start  BUILD   start whatever is not running yet (idempotent)
#   testbed.sh stop   BUILD   stop only what this script started for BUILD
#   testbed.sh env    BUILD   print the environment for wine, as shell exports
#   testbed.sh status BUILD   say what is running; fail when a piece is missing
#   testbed.sh fresh BUILD PREFIX   make a new Wine prefix at PREFIX (inside BUILD)
#
# Nothing is written to the home folder: HOME and the XDG folders of every
# process started here point into BUILD/testbed.
set -euo pipefail

cmd=${1:-}
[ -n "${2:-}" ] || { echo "usage: $0 start|stop|env|status BUILD" >&2; exit 2; }
mkdir -p "$2"
build=$(cd "$2" && pwd)
tb=$build/testbed
prefix=$build/wineprefix
display=${VANTR_DISPLAY:-99}
mkdir -p "$tb/xdg/pulse" "$tb/home/.config/pulse" "$tb/home/.cache"
chmod 700 "$tb/xdg"

print_env() {
  cat <<ENV
export WINEARCH=win64
export WINEPREFIX='$prefix'
export WINEDEBUG='-all,err+module'
export WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe=d'
export DISPLAY=':$display'
export HOME='$tb/home'
export XDG_RUNTIME_DIR='$tb/xdg'
export XDG_CONFIG_HOME='$tb/home/.config'
export XDG_CACHE_HOME='$tb/home/.cache'
export XDG_DATA_HOME='$tb/home/.local/share'
export PULSE_SERVER='unix:$tb/xdg/pulse/native'
export VANTR_TTY_COM1='$tb/ttyTEST1'
export VANTR_TTY_COM2='$tb/ttyTEST2'
export CUPS_SERVER='$tb/cups/cups.sock'
export VANTR_PRINT_OUT='$tb/printed'
export VANTR_REALTIME='$(realtime_prefix 10)'
ENV
}

alive() { [ -f "$1" ] && kill -0 "$(cat "$1")" 2>/dev/null; }

# The sound path runs at real-time priority, as a sound card's driver and its
# audio threads would: with only two cores, a build beside the tests otherwise
# starves Wine's and PulseAudio's audio threads, and the null sinks play
# silence where a period was not delivered in time (measured: none at all on
# an idle machine, hundreds of 10 ms gaps a minute beside two busy processes;
# none in three runs beside them at real-time priority). Where the system
# refuses, everything runs as before.
realtime() {  # realtime PRIORITY PID: every thread of the process
  chrt -a -r -p "$1" "$2" >/dev/null 2>&1 || true
}
realtime_prefix() {  # the command prefix that starts a program at real-time PRIORITY, if allowed
  if chrt -r "$1" true >/dev/null 2>&1; then echo "chrt -r $1"; fi
}

wait_for() {  # wait_for SECONDS COMMAND...: poll every 0.1 s until COMMAND succeeds
  local tries=$(( $1 * 10 )); shift
  while ! "$@" >/dev/null 2>&1; do
    tries=$((tries - 1))
    [ "$tries" -gt 0 ] || return 1
    sleep 0.1
  done
}

x_running() {
  [ -S "/tmp/.X11-unix/X$display" ] && [ -f "/tmp/.X$display-lock" ] && kill -0 "$(tr -d ' ' < "/tmp/.X$display-lock")" 2>/dev/null
}

start_x() {
  x_running && return 0
  rm -f "/tmp/.X$display-lock" "/tmp/.X11-unix/X$display"
  setsid Xvfb ":$display" -screen 0 1024x768x24 -nolisten tcp </dev/null >>"$tb/xvfb.log" 2>&1 9>&- &
  echo $! > "$tb/xvfb.pid"
  wait_for 20 x_running || { echo "testbed: Xvfb :$display did not start (see $tb/xvfb.log)" >&2; return 1; }
}

pulse_running() { pactl info >/dev/null 2>&1; }

start_pulse() {
  pulse_running && return 0
  {
    echo "load-module module-native-protocol-unix auth-anonymous=1 socket=$tb/xdg/pulse/native"
    for n in a b c d; do
      local upper; upper=$(echo "$n" | tr a-z A-Z)
      echo "load-module module-null-sink sink_name=out_$n sink_properties=device.description=Vantorel_Out_$upper rate=44100 channels=2"
    done
    echo "set-default-sink out_a"
    echo "set-default-source out_a.monitor"
  } > "$tb/pulse.pa"
  cat > "$tb/home/.config/pulse/daemon.conf" <<CONF
exit-idle-time = -1
default-sample-format = s16le
default-sample-rate = 44100
alternate-sample-rate = 44100
default-sample-channels = 2
avoid-resampling = yes
flat-volumes = no
CONF
  rm -f "$tb/xdg/pulse/native" "$tb/xdg/pulse/pid"
  setsid pulseaudio -n -F "$tb/pulse.pa" --daemonize=yes --exit-idle-time=-1 --disallow-exit \
    --use-pid-file=yes --log-target="file:$tb/pulse.log" </dev/null >>"$tb/pulse.out" 2>&1 9>&-
  wait_for 20 pulse_running || { echo "testbed: PulseAudio did not start (see $tb/pulse.log)" >&2; return 1; }
  cp "$tb/xdg/pulse/pid" "$tb/pulse.pid"
  realtime 20 "$(cat "$tb/pulse.pid")"
}

start_ports() {
  local n
  for n in 1 2; do
    if ! alive "$tb/socat$n.pid" || [ ! -e "$tb/ttyWINE$n" ]; then
      setsid socat "pty,raw,echo=0,link=$tb/ttyWINE$n" "pty,raw,echo=0,link=$tb/ttyTEST$n" </dev/null >>"$tb/socat$n.log" 2>&1 9>&- &
      echo $! > "$tb/socat$n.pid"
      wait_for 10 test -e "$tb/ttyTEST$n" || { echo "testbed: socat for COM$n did not start" >&2; return 1; }
    fi
  done
}

cups_running() { [ -S "$tb/cups/cups.sock" ] && alive "$tb/cupsd.pid" && lpstat -h "$tb/cups/cups.sock" -r >/dev/null 2>&1; }

# A CUPS server that listens only on a socket in the test bed, with a printer
# whose backend writes each job to printed/job-N.ps (renamed into place when
# complete). Wine's PostScript driver finds it through CUPS_SERVER.
start_printer() {
  cups_running && return 0
  local c=$tb/cups
  rm -rf "$c"
  mkdir -p "$c/etc" "$c/spool" "$c/cache" "$c/state" "$c/log" "$c/bin/backend" "$tb/printed"
  chmod 777 "$tb/printed"
  local d
  for d in filter daemon notifier cgi-bin; do ln -sfn "/usr/lib/cups/$d" "$c/bin/$d"; done
  cat > "$c/bin/backend/vantrfile" <<'BACKEND'
#!/bin/sh
[ $# -eq 0 ] && { echo 'file vantrfile "Vantorel" "Vantorel test printer"'; exit 0; }
out=${DEVICE_URI#vantrfile:}
if [ -n "$6" ]; then cat "$6"; else cat; fi > "$out/job-$1.ps.part" && mv "$out/job-$1.ps.part" "$out/job-$1.ps"
BACKEND
  chmod 700 "$c/bin/backend/vantrfile"
  cat > "$c/etc/cupsd.conf" <<CONF
Listen $c/cups.sock
LogLevel warn
WebInterface No
Browsing No
<Location />
  Order allow,deny
  Allow all
</Location>
<Policy default>
  <Limit All>
    Order deny,allow
  </Limit>
</Policy>
CONF
  cat > "$c/etc/cups-files.conf" <<CONF
ServerRoot $c/etc
ServerBin $c/bin
StateDir $c/state
CacheDir $c/cache
RequestRoot $c/spool
TempDir $c/spool
AccessLog $c/log/access_log
ErrorLog $c/log/error_log
PageLog $c/log/page_log
Printcap
CONF
  setsid cupsd -f -c "$c/etc/cupsd.conf" -s "$c/etc/cups-files.conf" </dev/null >>"$c/log/cupsd.out" 2>&1 9>&- &
  echo $! > "$tb/cupsd.pid"
  wait_for 20 test -S "$c/cups.sock" || { echo "testbed: cupsd did not start (see $c/log)" >&2; return 1; }
  lpadmin -h "$c/cups.sock" -p Vantorel_Printer -E -v "vantrfile:$tb/printed" -m raw >/dev/null 2>&1
  lpadmin -h "$c/cups.sock" -d Vantorel_Printer
  wait_for 20 cups_running || { echo "testbed: cupsd does not answer (see $c/log)" >&2; return 1; }
}

make_prefix() {  # make_prefix [PREFIX]: the test bed's own prefix, or another made the same way
  local prefix=${1:-$prefix}
  export WINEPREFIX=$prefix
  [ -f "$prefix/.vantr-ready" ] && return 0
  rm -rf "$prefix"
  # Made with no display, so that wineboot shows nothing.
  (unset DISPLAY; wineboot -i </dev/null >>"$tb/wine.log" 2>&1 9>&-)
  reg_add() { (unset DISPLAY; wine reg add "$@" /f </dev/null >>"$tb/wine.log" 2>&1 9>&-); }
  # Windows can be made with no X display; no window manager means hiding a
  # window does not wait for one; a crash ends the program at once (no
  # debugger dialog holding a test open); COM1 and COM2 are the socat ports.
  reg_add 'HKCU\Software\Wine\Drivers' /v Graphics /d 'x11,null'
  reg_add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N
  reg_add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0
  reg_add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' /v Debugger /d ''
  reg_add 'HKLM\Software\Wine\Ports' /v COM1 /d "$tb/ttyWINE1"
  reg_add 'HKLM\Software\Wine\Ports' /v COM2 /d "$tb/ttyWINE2"
  wineserver -w 9>&-
  touch "$prefix/.vantr-ready"
}

# A new prefix at PREFIX, as a fresh Windows installation would be, for the
# installer's tests; anything there before is removed first.
fresh() {
  eval "$(print_env)"
  local fresh
  mkdir -p "$(dirname "$1")"
  fresh=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
  case "$fresh" in "$build"/*) ;; *) echo "testbed: a fresh prefix must be inside $build" >&2; return 1 ;; esac
  if [ -d "$fresh" ]; then WINEPREFIX=$fresh wineserver -k 2>/dev/null || true; fi
  rm -rf "$fresh"
  make_prefix "$fresh"
}


warm_wine() {
  if [ -f "$tb/wineserver.started" ] && wineserver_alive; then return 0; fi
  # A persistent wineserver whose services run detached from any caller's
  # output: without this, Wine's services hold a test runner's pipe open.
  setsid $(realtime_prefix 10) wineserver -p </dev/null >>"$tb/wine.log" 2>&1 9>&- || true
  setsid wine wineboot </dev/null >>"$tb/wine.log" 2>&1 9>&- || true
  touch "$tb/wineserver.started"
}

wineserver_alive() {
  # wineserver keeps its socket in server-DEV-INODE (of the prefix, in hex)
  # under /tmp/.wine-UID or a /tmp/wine-XXXXXX folder.
  local id dir
  id=$(printf '%x-%x' $(stat -c '%d %i' "$prefix" 2>/dev/null) 2>/dev/null) || return 1
  for dir in "/tmp/.wine-$(id -u)/server-$id" /tmp/wine-*/"server-$id"; do
    [ -S "$dir/socket" ] && return 0
  done
  return 1
}

start() {
  eval "$(print_env)"
  exec 9>"$tb/lock"
  flock 9
  if [ -f "$tb/up" ] && x_running && pulse_running && alive "$tb/socat1.pid" && alive "$tb/socat2.pid" && cups_running &&
    wineserver_alive; then
    return 0
  fi
  start_x
  start_pulse
  start_ports
  start_printer
  make_prefix
  warm_wine
  touch "$tb/up"
}

stop() {
  eval "$(print_env)"
  exec 9>"$tb/lock"
  flock 9
  rm -f "$tb/up"
  if [ -f "$tb/wineserver.started" ]; then
    wineserver -k 2>/dev/null || true
    wineserver -w 2>/dev/null || true
    rm -f "$tb/wineserver.started"
  fi
  local name
  for name in socat1 socat2 cupsd pulse xvfb; do
    if alive "$tb/$name.pid"; then kill "$(cat "$tb/$name.pid")" 2>/dev/null || true; fi
    rm -f "$tb/$name.pid"
  done
}

status() {  # says what runs; fails when a piece the Windows tests need is missing
  eval "$(print_env)"
  local missing=0 n sink got
  if x_running; then echo "display :$display up"; else echo "display :$display down"; missing=1; fi
  if pulse_running; then
    echo "pulseaudio up:"
    for n in A B C D; do
      sink=out_$(echo "$n" | tr A-Z a-z)
      # Each output device and its monitor, the input the tests record from.
      if pactl list short sinks | grep -q "^[0-9]*[[:space:]]$sink[[:space:]]" &&
        pactl list short sources | grep -q "^[0-9]*[[:space:]]$sink.monitor[[:space:]]"; then
        echo "  Vantorel_Out_$n and its monitor"
      else
        echo "  Vantorel_Out_$n missing"; missing=1
      fi
    done
  else
    echo "pulseaudio down"; missing=1
  fi
  for n in 1 2; do
    # Bytes written at Wine's end of the pair must come out at the tests' end.
    got=""
    if alive "$tb/socat$n.pid" && [ -e "$tb/ttyTEST$n" ]; then
      got=$(timeout 2 head -c 6 "$tb/ttyTEST$n" 2>/dev/null & sleep 0.2; printf '[ping]' > "$tb/ttyWINE$n"; wait) || true
    fi
    if [ "$got" = "[ping]" ]; then echo "COM$n -> $tb/ttyTEST$n"; else echo "COM$n down"; missing=1; fi
  done
  if cups_running && lpstat -h "$tb/cups/cups.sock" -d 2>/dev/null | grep -q Vantorel_Printer; then
    echo "printer Vantorel_Printer -> $tb/printed"
  else
    echo "printer down"; missing=1
  fi
  if wineserver_alive; then echo "wineserver up ($prefix)"; else echo "wineserver down"; missing=1; fi
  return $missing
}

case "$cmd" in
  start) start ;;
  fresh) [ -n "${3:-}" ] || { echo "usage: $0 fresh BUILD PREFIX" >&2; exit 2; }; fresh "$3" ;;
  stop) stop ;;
  env) print_env ;;
  status) status ;;
  *) echo "usage: $0 start|stop|env|status BUILD" >&2; exit 2 ;;
esac
