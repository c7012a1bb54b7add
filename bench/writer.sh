#!/usr/bin/env bash
# Builds bench/BackupWriterBench (bench preset) and prints, for a library of 1.3 GB
# read from files, the wall and process CPU time of: the floor (read, hash, seal, hash, write,
# synchronise), the format's payload writers alone on the same bytes, and the package writer
# with one and two payload writers; then each one's ratio to the floor. Wall times follow the
# disk and the machine's load; the CPU ratios are the steadier figure.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --preset bench >/dev/null
cmake --build --preset bench --target BackupWriterBench -j2 >/dev/null

results="$(mktemp)"
trap 'rm -f "$results"' EXIT
./build-bench/bench/BackupWriterBench --benchmark_format=json >"$results" 2>/dev/null

python3 - "$results" <<'PYTHON'
import json, sys
rows = [(entry["name"].split("/iterations")[0], entry["real_time"], entry["cpu_time"]) for entry in json.load(open(sys.argv[1]))["benchmarks"]]
floor_wall, floor_cpu = rows[0][1], rows[0][2]
print(f"{'measured':40} {'wall s':>8} {'cpu s':>8} {'wall/floor':>11} {'cpu/floor':>10}")
for name, wall, cpu in rows:
    print(f"{name:40} {wall:8.2f} {cpu:8.2f} {wall / floor_wall:11.2f} {cpu / floor_cpu:10.2f}")
PYTHON
