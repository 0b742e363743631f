#!/usr/bin/env bash
# Start-up of the real program: from exec to its main window mapped, and then painted, on a
# private Xvfb with a session bus; the CPU time and resident memory then, and once it settled
# (a second later: what start-up left for after the first frame). Each run starts from a fresh
# copy of the library (so each is a first start: the file has no hasLaunchedBefore yet), or
# from no library. Prints every run and the medians.
#
#   bench/startup_time.sh BUILD_DIR [LIBRARY_FILE|none] [RUNS]
#
# build/bench/startup_probe does the waiting, on X events (MapNotify, then DAMAGE on the
# window): polling with one xdotool process every few milliseconds took CPU from the program
# it timed on a machine of two cores. Not a test: run by hand; the README has the figures.
set -euo pipefail
build=${1:?build folder}
library=${2:-none}
runs=${3:-5}
probe=$build/bench/startup_probe
[ -x "$probe" ] || { echo "build $probe first (it needs libxdamage-dev)" >&2; exit 1; }
display=:$((RANDOM % 500 + 300))
work=$(mktemp -d)
trap 'kill $xvfb 2>/dev/null || true; rm -rf "$work"' EXIT

Xvfb "$display" -nolisten tcp -screen 0 1280x1024x24 >/dev/null 2>&1 &
xvfb=$!
for _ in $(seq 100); do xdpyinfo -display "$display" >/dev/null 2>&1 && break; sleep 0.05; done

echo "load average before: $(cut -d' ' -f1-3 /proc/loadavg)"
for run in $(seq "$runs"); do
  rm -rf "$work/config" "$work/state" "$work/runtime"
  mkdir -p "$work/config/Typolet" "$work/state" "$work/runtime"
  chmod 700 "$work/runtime"
  [ "$library" = none ] || cp "$library" "$work/config/Typolet/Typolet.conf"
  rm -f "$work/result"
  # The result goes through a file: services the session bus started (the accessibility
  # registry) may outlive it and would hold a pipe open.
  DISPLAY=$display XDG_CONFIG_HOME=$work/config XDG_STATE_HOME=$work/state \
    XDG_RUNTIME_DIR=$work/runtime dbus-run-session -- \
    "$probe" Typolet 1000 "$build/typolet" >"$work/result" 2>/dev/null </dev/null || true
  # Services the bus starts write to the same output; the probe's line is the one to read.
  line=$(grep '^mapped ' "$work/result" 2>/dev/null | tail -1 || true)
  echo "run $run: ${line:-failed}"
  [ -z "$line" ] || echo "$line" >>"$work/all"
done
echo "load average after: $(cut -d' ' -f1-3 /proc/loadavg)"
# The median of each figure over the runs that finished.
awk 'NF {
       for (i = 1; i < NF; i += 2) { name[i] = $i; v[i, ++n[i]] = $(i + 1) }
       cols = NF
     }
     END {
       out = "median:"
       for (i = 1; i < cols; i += 2) {
         m = n[i]
         for (a = 1; a <= m; ++a) for (b = a + 1; b <= m; ++b)
           if (v[i, b] < v[i, a]) { t = v[i, a]; v[i, a] = v[i, b]; v[i, b] = t }
         med = m % 2 ? v[i, (m + 1) / 2] : (v[i, m / 2] + v[i, m / 2 + 1]) / 2
         out = out " " name[i] " " med
       }
       print out
     }' "$work/all"
