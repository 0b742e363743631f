#!/usr/bin/env bash
# Start-up of the real program: from exec to its main window mapped on a private Xvfb with a
# session bus, and the resident memory then. Each run starts from a fresh copy of the library
# (so each is a first start: the settings file has no hasLaunchedBefore yet), or from no library.
#
#   bench/startup_time.sh BUILD_DIR [LIBRARY_FILE|none] [RUNS]
#
# Not a test: run by hand; the README has the figures.
set -euo pipefail
build=${1:?build folder}
library=${2:-none}
runs=${3:-5}
display=:$((RANDOM % 500 + 300))
work=$(mktemp -d)
trap 'kill $xvfb 2>/dev/null || true; rm -rf "$work"' EXIT

Xvfb "$display" -nolisten tcp -screen 0 1280x1024x24 >/dev/null 2>&1 &
xvfb=$!
for _ in $(seq 100); do xdpyinfo -display "$display" >/dev/null 2>&1 && break; sleep 0.05; done

for run in $(seq "$runs"); do
  rm -rf "$work/config" "$work/state" "$work/runtime"
  mkdir -p "$work/config/Typolet" "$work/state" "$work/runtime"
  chmod 700 "$work/runtime"
  [ "$library" = none ] || cp "$library" "$work/config/Typolet/Typolet.conf"
  rm -f "$work/result"
  DISPLAY=$display XDG_CONFIG_HOME=$work/config XDG_STATE_HOME=$work/state \
    XDG_RUNTIME_DIR=$work/runtime dbus-run-session -- bash -c '
      start=$(date +%s%N)
      "$0" >/dev/null 2>&1 &
      pid=$!
      deadline=$(( $(date +%s) + 30 ))
      until xdotool search --onlyvisible --name "^Typolet$" >/dev/null 2>&1; do
        kill -0 $pid 2>/dev/null || { echo "typolet ended" >"$1"; exit 1; }
        [ "$(date +%s)" -lt $deadline ] || { kill $pid; echo "no window within 30 s" >"$1"; exit 1; }
        sleep 0.005
      done
      shown=$(date +%s%N)
      rss=$(awk "/VmRSS/ {print \$2}" /proc/$pid/status)
      kill $pid; wait $pid 2>/dev/null || true
      echo "$(( (shown - start) / 1000000 )) ms, $(( rss / 1024 )) MB resident" >"$1"
    ' "$build/typolet" "$work/result" >/dev/null 2>&1 </dev/null || true
  # The result goes through a file: services the session bus started (the accessibility
  # registry) may outlive it and would hold a pipe open.
  echo "run $run: $(cat "$work/result" 2>/dev/null || echo failed)"
done
