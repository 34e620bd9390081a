#!/bin/sh
# Times korvel on large generated inputs: a 1,000,000-row surveyed profile for `profile fit`
# and two 1,000,000-vertex profiles (about 500,000 crossings) for `intersect`.
# Usage: bench/cli_speed.sh [path/to/korvel]   (default: build/cli/korvel, built as Release or
# RelWithDebInfo).  The files are generated in a temporary folder and removed afterwards.
set -eu
korvel="${1:-build/cli/korvel}"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
/usr/bin/python3 - "$work" <<'PY'
import math, random, sys
random.seed(5)
with open(f"{sys.argv[1]}/survey.csv", "w") as f:
    f.write("station,level\n")
    for i in range(1000000):
        x = float(i)
        f.write(f"{x:.1f},{100 + 6 * math.sin(x / 170) + 3 * math.sin(x / 61) + random.uniform(-0.02, 0.02):.3f}\n")
for name in ("a", "b"):
    with open(f"{sys.argv[1]}/{name}.csv", "w") as f:
        f.write("x,y\n")
        for i in range(1000000):
            f.write(f"{i:.1f},{random.uniform(-1, 1):.4f}\n")
PY
echo "profile fit, 1,000,000 stations (parse, fit, report):"
start=$(date +%s.%N)
"$korvel" profile fit "$work/survey.csv" --csv -o "$work/ips.csv"
end=$(date +%s.%N)
tail -n 1 "$work/ips.csv"
awk -v s="$start" -v e="$end" 'BEGIN { printf "elapsed: %.2f s\n", e - s }'
echo "intersect, two 1,000,000-vertex polylines (parse, intersect, report):"
start=$(date +%s.%N)
"$korvel" intersect "$work/a.csv" "$work/b.csv" --csv -o "$work/crossings.csv"
end=$(date +%s.%N)
tail -n 1 "$work/crossings.csv"
awk -v s="$start" -v e="$end" 'BEGIN { printf "elapsed: %.2f s\n", e - s }'
