#!/usr/bin/env bash
# Times one Argon2id derivation of ours (bench/Argon2idBenchmark.cpp, Google Benchmark)
# against Debian's independent argon2 command-line tool (timed by hyperfine) on the same
# passphrase, salt and parameters, profile by profile in the same run, and prints one table.
# The ratio is ours / tool: below 1.00 we are faster; the target is at most 1.10.
# The tool's -m is log2 of KiB (16 = 64 MiB, 18 = 256 MiB); its times include starting a process.
#
# Usage: bench/argon2id.sh [repetitions]    (default 7; medians are reported)
set -euo pipefail
cd "$(dirname "$0")/.."

repetitions="${1:-7}"
for command in argon2 hyperfine python3 cmake; do
  command -v "$command" >/dev/null || { echo "$command is missing: run scripts/install-dependencies.sh" >&2; exit 1; }
done

cmake --preset bench >/dev/null
cmake --build --preset bench --target Argon2idBenchmark --parallel 2 >/dev/null
benchmark=build-bench/bench/Argon2idBenchmark

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

passphrase="correct horse battery staple"
salt="somesaltsomesalt"
profiles=("3 64 16" "12 256 18")  # passes, MiB, log2 of KiB

for profile in "${profiles[@]}"; do
  read -r passes mebibytes log2KiB <<<"$profile"
  echo "measuring ${passes} passes, ${mebibytes} MiB ..." >&2
  "$benchmark" --benchmark_filter="passes:${passes}/MiB:${mebibytes}/" \
    --benchmark_repetitions="$repetitions" --benchmark_report_aggregates_only=true \
    --benchmark_out="$work/ours-${passes}.json" --benchmark_out_format=json >/dev/null 2>"$work/ours-${passes}.log" ||
    { cat "$work/ours-${passes}.log" >&2; exit 1; }
  hyperfine --style none --warmup 1 --runs "$repetitions" --export-json "$work/tool-${passes}.json" \
    "printf '%s' '${passphrase}' | argon2 ${salt} -id -t ${passes} -m ${log2KiB} -p 1 -l 32 -r" >/dev/null
done

python3 - "$work" "$repetitions" "${profiles[@]}" <<'PYTHON'
import json, os, sys

work, repetitions, profiles = sys.argv[1], sys.argv[2], sys.argv[3:]

def ours_median_ms(passes):
    with open(f"{work}/ours-{passes}.json") as file:
        runs = json.load(file)["benchmarks"]
    [median] = [run for run in runs if run.get("aggregate_name") == "median"]
    assert median["time_unit"] == "ms"
    return median["real_time"]

def tool_median_ms(passes):
    with open(f"{work}/tool-{passes}.json") as file:
        return json.load(file)["results"][0]["median"] * 1000.0

print(f"Argon2id, one lane, 32-byte key; medians of {repetitions} repetitions; load average {os.getloadavg()[0]:.2f}")
print(f"{'passes':>6} {'memory':>8} {'ours (ms)':>10} {'argon2 (ms)':>12} {'ratio':>6}")
for profile in profiles:
    passes, mebibytes, _ = profile.split()
    ours, tool = ours_median_ms(passes), tool_median_ms(passes)
    print(f"{passes:>6} {mebibytes + ' MiB':>8} {ours:>10.1f} {tool:>12.1f} {ours / tool:>6.2f}")
PYTHON
