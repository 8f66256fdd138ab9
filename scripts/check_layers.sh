#!/usr/bin/env bash
# Fails when a source file under src/ includes a file of a higher layer, or
# when a portable file includes Windows. The layers, lowest first (a file may
# include its own layer and any lower one):
#   1 base   2 store   3 portable subsystems (audio, schedule, automation, install)
#   4 win and res/resource.h   5 the subsystems' _win files   6 ui   7 app, tools
set -euo pipefail
cd "$(dirname "$0")/../src"

layer() {  # layer of a path relative to src/ (or "resource.h")
  local path=$1
  case "$path" in
    resource.h) echo 4 ;;
    base/*) echo 1 ;;
    store/*) echo 2 ;;
    win/*) echo 4 ;;
    audio/* | schedule/* | automation/* | install/* | asrun/* | channels/*)
      case "$(basename "$path")" in *_win.* | *_win_*) echo 5 ;; *) echo 3 ;; esac ;;
    ui/*) echo 6 ;;
    app/* | tools/*) echo 7 ;;
    *) echo 0 ;;
  esac
}

failures=0
while IFS= read -r file; do
  from=$(layer "$file")
  portable=1
  case "$(basename "$file")" in *_win.* | *_win_*) portable=0 ;; esac
  while IFS= read -r line; do
    target=$(sed -n 's/^[[:space:]]*#[[:space:]]*include[[:space:]]*"\([^"]*\)".*/\1/p' <<<"$line")
    system=$(sed -n 's/^[[:space:]]*#[[:space:]]*include[[:space:]]*<\([^>]*\)>.*/\1/p' <<<"$line")
    if [ -n "$system" ] && [ $portable = 1 ]; then
      case "$system" in
        windows.h | mmsystem.h | mmreg.h | msacm.h | shellapi.h | commctrl.h | commdlg.h | shlobj.h | winsvc.h)
          echo "src/$file: a portable file includes <$system>"; failures=$((failures + 1)) ;;
      esac
    fi
    [ -n "$target" ] || continue
    if [ $portable = 1 ]; then
      case "$(basename "$target")" in
        *_win.h | *_win_*.h) echo "src/$file: a portable file includes \"$target\""; failures=$((failures + 1)) ;;
      esac
    fi
    to=$(layer "$target")
    if [ "$to" = 0 ] || [ "$from" = 0 ]; then
      echo "src/$file: \"$target\" is in no known layer"; failures=$((failures + 1))
    elif [ "$to" -gt "$from" ]; then
      echo "src/$file (layer $from) includes \"$target\" (layer $to)"; failures=$((failures + 1))
    fi
  done < <(grep -E '^[[:space:]]*#[[:space:]]*include' "$file")
done < <(find . -name '*.h' -o -name '*.cpp' | sed 's|^\./||' | sort)

if [ $failures -gt 0 ]; then
  echo "layer check: $failures include(s) point the wrong way"
  exit 1
fi
echo "layer check: every include points down"
