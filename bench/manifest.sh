#!/usr/bin/env bash
# Reading a manifest at 125,000, 250,000, 500,000 and 1,000,000 records: CPU time of decoding
# all sections, and of decoding plus the semantic checks; the ratio from each size to the
# next (linear reading gives about 2.0); and the peak resident memory of each run, measured by
# /usr/bin/time -v, beside that of a run that only builds the manifest. Each size and each
# benchmark runs in a process of its own, so that the peaks do not mix.
set -euo pipefail
cd "$(dirname "$0")/.."

binary=build/bench/GaldrineManifestBenchmark
cmake --build --preset default --target GaldrineManifestBenchmark >/dev/null
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

sizes=(125000 250000 500000 1000000)
for size in "${sizes[@]}"; do
  for benchmark in generateOnly decodeRecords decodeAndValidate; do
    /usr/bin/time -v "$binary" --benchmark_filter="^${benchmark}/${size}/" --benchmark_format=json \
      --benchmark_out="$work/${benchmark}-${size}.json" >/dev/null 2>"$work/${benchmark}-${size}.time"
  done
done

python3 - "$work" "${sizes[@]}" <<'PYTHON'
import json, re, sys
work, sizes = sys.argv[1], [int(size) for size in sys.argv[2:]]

def result(benchmark, size):
    with open(f"{work}/{benchmark}-{size}.json") as file:
        run = json.load(file)["benchmarks"][0]
    with open(f"{work}/{benchmark}-{size}.time") as file:
        peak = int(re.search(r"Maximum resident set size \(kbytes\): (\d+)", file.read()).group(1)) / 1024
    return run, peak

print(f"{'records':>9} {'keys':>7} {'items':>7} {'resources':>9} {'record MB':>9} | {'decode ms':>9} {'ratio':>5} | "
      f"{'decode+check ms':>15} {'ns/record':>9} {'ratio':>5} | {'peak MB':>7} {'built MB':>8} {'reading MB':>10}")
previous = None
for size in sizes:
    built, builtPeak = result("generateOnly", size)
    decoded, _ = result("decodeRecords", size)
    checked, checkedPeak = result("decodeAndValidate", size)
    records = checked["records"]
    decodeRatio = f"{decoded['cpu_time'] / previous[0]:.2f}" if previous else "-"
    checkRatio = f"{checked['cpu_time'] / previous[1]:.2f}" if previous else "-"
    print(f"{int(records):>9} {int(checked['keys']):>7} {int(checked['items']):>7} {int(checked['resources']):>9} "
          f"{checked['recordMB']:>9.1f} | {decoded['cpu_time']:>9.0f} {decodeRatio:>5} | {checked['cpu_time']:>15.0f} "
          f"{checked['cpu_time'] * 1e6 / records:>9.0f} {checkRatio:>5} | {checkedPeak:>7.0f} {builtPeak:>8.0f} "
          f"{checkedPeak - builtPeak:>10.0f}")
    previous = (decoded["cpu_time"], checked["cpu_time"])
print("Times are CPU milliseconds per run; a ratio is this size's time over the previous size's (double the records).")
print("'built MB' is the peak of a run that only builds the manifest; 'reading MB' is what decoding and checking add to it.")
PYTHON
