#!/usr/bin/env bash
# Reading a manifest at 125,000, 250,000, 500,000 and 1,000,000 records: CPU time of decoding
# all sections, and of decoding plus the semantic checks; the ratio from each size to the
# next (linear reading gives about 2.0); the peak resident memory while reading, beside what
# the decoded sections hold; and /usr/bin/time -v's peak of each whole run. Each size and each
# benchmark runs in a process of its own, so that the peaks do not mix.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --preset bench >/dev/null
binary=build-bench/bench/ManifestBenchmark
cmake --build --preset bench --target ManifestBenchmark >/dev/null
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

sizes=(125000 250000 500000 1000000)
for size in "${sizes[@]}"; do
  for benchmark in decodeRecords decodeAndValidate; do
    /usr/bin/time -v "$binary" --benchmark_filter="^${benchmark}/${size}/" --benchmark_format=json \
      --benchmark_out="$work/${benchmark}-${size}.json" >/dev/null 2>"$work/${benchmark}-${size}.time"
  done
done

python3 - "$work" "${sizes[@]}" <<'PYTHON'
import json, re, sys
work, sizes = sys.argv[1], [int(size) for size in sys.argv[2:]]

def result(benchmark, size):
    with open(f"{work}/{benchmark}-{size}.json") as file:
        runs = json.load(file)["benchmarks"]
    fastest = next((run for run in runs if run.get("aggregate_name") == "min"), runs[0])
    with open(f"{work}/{benchmark}-{size}.time") as file:
        processPeak = int(re.search(r"Maximum resident set size \(kbytes\): (\d+)", file.read()).group(1)) / 1024
    return fastest, runs[0], processPeak

print(f"{'records':>9} {'keys':>7} {'items':>7} {'resources':>9} {'record MB':>9} | {'decode ms':>9} {'ratio':>5} | "
      f"{'decode+check ms':>15} {'ns/record':>9} {'ratio':>5} | {'held MB':>7} {'peak MB':>7} {'reading MB':>10} {'process MB':>10}")
previous = None
for size in sizes:
    decoded, _, _ = result("decodeRecords", size)
    checked, firstRun, processPeak = result("decodeAndValidate", size)
    records = firstRun["records"]
    decodeRatio = f"{decoded['cpu_time'] / previous[0]:.2f}" if previous else "-"
    checkRatio = f"{checked['cpu_time'] / previous[1]:.2f}" if previous else "-"
    print(f"{int(records):>9} {int(firstRun['keys']):>7} {int(firstRun['items']):>7} {int(firstRun['resources']):>9} "
          f"{firstRun['recordMB']:>9.1f} | {decoded['cpu_time']:>9.0f} {decodeRatio:>5} | {checked['cpu_time']:>15.0f} "
          f"{checked['cpu_time'] * 1e6 / records:>9.0f} {checkRatio:>5} | {firstRun['heldMB']:>7.0f} {firstRun['peakMB']:>7.0f} "
          f"{firstRun['peakMB'] - firstRun['heldMB']:>10.0f} {processPeak:>10.0f}")
    previous = (decoded["cpu_time"], checked["cpu_time"])
print("Times are the fastest of five runs, in CPU milliseconds; a ratio is this size's time over the previous")
print("size's (double the records). 'held MB' is resident with the decoded sections in memory, 'peak MB' the")
print("peak while reading, 'reading MB' the difference; 'process MB' is /usr/bin/time -v's peak of the run,")
print("which counts from the reset of the peak after the manifest was built.")
PYTHON
