#!/bin/sh
# Times korvel on large generated inputs: a 1,000,000-row surveyed profile for `profile fit`.
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
PY
echo "profile fit, 1,000,000 stations (parse, fit, report):"
start=$(date +%s.%N)
"$korvel" profile fit "$work/survey.csv" --csv -o "$work/ips.csv"
end=$(date +%s.%N)
tail -n 1 "$work/ips.csv"
awk -v s="$start" -v e="$end" 'BEGIN { printf "elapsed: %.2f s\n", e - s }'
