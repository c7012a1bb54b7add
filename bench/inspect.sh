#!/usr/bin/env bash
# Measures one whole inspection against the reference tools, in one run, and prints one table:
#  - a library of about 1.4 GB of random media (300 files of 2-4 MiB, 4 of 60-120 MiB), made
#    once under the scratch directory, written once into a package by the package writer, and
#    its first 256 MiB into a second package;
#  - the whole inspection of each (Argon2id at 3 passes over 64 MiB included), its payload
#    hashing throughput beside `openssl speed -evp sha256`, and its peak resident memory;
#  - `restic check --read-data` of a restic repository holding the same media, single-threaded
#    (GOMAXPROCS=1), beside the whole inspection of the 1.4 GB package.
# Both tools read from a warm page cache. Times are medians of the repetitions; CPU times are
# user and system time of the process, which the machine's other load does not inflate.
#
# Usage: bench/inspect.sh [repetitions]    (default 3)
#        GALDRINE_BENCH_DIRECTORY=/path bench/inspect.sh   (default /tmp/galdrine-bench)
set -euo pipefail
cd "$(dirname "$0")/.."

repetitions="${1:-3}"
scratch="${GALDRINE_BENCH_DIRECTORY:-/tmp/galdrine-bench}"
for command in openssl restic python3 cmake /usr/bin/time; do
  command -v "$command" >/dev/null || { echo "$command is missing: run scripts/install-dependencies.sh" >&2; exit 1; }
done

cmake --preset bench >/dev/null
cmake --build --preset bench --target InspectBenchmark --parallel 2 >/dev/null
program=build-bench/bench/InspectBenchmark

source bench/benchmark-library.sh
prepare_benchmark_library

results="$scratch/results"
rm -rf "$results" && mkdir -p "$results"
warm() { find "$1" -type f -exec cat {} + >/dev/null; }

# timed NAME COMMAND...: one run under /usr/bin/time -v, its output and its measurements kept.
timed() {
  local name="$1"
  shift
  /usr/bin/time -v -o "$results/$name.time" "$@" >"$results/$name.out" 2>"$results/$name.err"
}

for repetition in $(seq "$repetitions"); do
  echo "repetition $repetition of $repetitions ..." >&2
  warm "$scratch/library.galdrine"
  timed "inspect-1.4GB-$repetition" "$program" inspect "$scratch/library.galdrine" "$passphrase_file"
  warm "$scratch/library-256MiB.galdrine"
  timed "inspect-256MiB-$repetition" "$program" inspect "$scratch/library-256MiB.galdrine" "$passphrase_file"
  warm "$repository"
  timed "restic-$repetition" env GOMAXPROCS=1 restic --repo "$repository" --password-file "$passphrase_file" \
    --no-cache check --read-data
  openssl speed -seconds 3 -bytes 16384 -evp sha256 2>/dev/null | tail -n 1 >"$results/openssl-$repetition.out"
done

python3 - "$results" "$repetitions" <<'PYTHON'
import json, os, re, statistics, sys
results, repetitions = sys.argv[1], int(sys.argv[2])

def time_fields(name):
    text = open(os.path.join(results, name + ".time")).read()
    def field(label):
        return re.search(re.escape(label) + r":\s*(.+)", text).group(1).strip()
    wall = field("Elapsed (wall clock) time (h:mm:ss or m:ss)").split(":")
    seconds = sum(float(part) * 60 ** index for index, part in enumerate(reversed(wall)))
    return {"wall": seconds, "user": float(field("User time (seconds)")), "system": float(field("System time (seconds)")),
            "rss": int(field("Maximum resident set size (kbytes)")) * 1024, "status": int(field("Exit status"))}

def median(values):
    return statistics.median(values)

def inspection(prefix):
    runs = []
    for repetition in range(1, repetitions + 1):
        name = f"{prefix}-{repetition}"
        measured = time_fields(name)
        assert measured["status"] == 0, name + " failed"
        measured.update(json.load(open(os.path.join(results, name + ".out"))))
        runs.append(measured)
    return runs

large, small = inspection("inspect-1.4GB"), inspection("inspect-256MiB")
restic = [time_fields(f"restic-{repetition}") for repetition in range(1, repetitions + 1)]
assert all(run["status"] == 0 for run in restic), "restic check failed"
openssl = [float(re.sub(r"k$", "", open(os.path.join(results, f"openssl-{r}.out")).read().split()[-1])) * 1000
           for r in range(1, repetitions + 1)]

payload_bytes = large[0]["payloadByteCount"]
hash_user = median([payload_bytes / run["payloadUserSeconds"] for run in large])
hash_cpu = median([payload_bytes / (run["payloadUserSeconds"] + run["payloadSystemSeconds"]) for run in large])
hash_wall = median([payload_bytes / run["payloadWallSeconds"] for run in large])
openssl_rate = median(openssl)
inspect_wall, restic_wall = median([run["wall"] for run in large]), median([run["wall"] for run in restic])
inspect_cpu = median([run["user"] + run["system"] for run in large])
restic_cpu = median([run["user"] + run["system"] for run in restic])
argon = median([run["unlockWallSeconds"] for run in large])

print(f"payload: {large[0]['payloadFileCount']} files, {payload_bytes / 1e9:.2f} GB "
      f"(256 MiB package: {small[0]['payloadFileCount']} files, {small[0]['payloadByteCount'] / 1e6:.0f} MB); "
      f"medians of {repetitions} runs")
print(f"{'measure':58} {'value':>14} {'reference':>14} {'ratio':>8} {'target':>10}")
def row(name, value, reference, ratio, target):
    print(f"{name:58} {value:>14} {reference:>14} {ratio:>8} {target:>10}")
row("payload hashing, user CPU (openssl speed's own measure)", f"{hash_user / 1e6:.0f} MB/s", f"{openssl_rate / 1e6:.0f} MB/s",
    f"{hash_user / openssl_rate:.0%}", ">= 90%")
row("payload hashing, user + system CPU (read copies included)", f"{hash_cpu / 1e6:.0f} MB/s", f"{openssl_rate / 1e6:.0f} MB/s",
    f"{hash_cpu / openssl_rate:.0%}", "")
row("payload hashing, wall clock", f"{hash_wall / 1e6:.0f} MB/s", f"{openssl_rate / 1e6:.0f} MB/s",
    f"{hash_wall / openssl_rate:.0%}", "")
row("whole inspect vs restic check --read-data, wall", f"{inspect_wall:.2f} s", f"{restic_wall:.2f} s",
    f"{restic_wall / inspect_wall:.1f}x", ">= 4x")
row("whole inspect vs restic check --read-data, user + system", f"{inspect_cpu:.2f} s", f"{restic_cpu:.2f} s",
    f"{restic_cpu / inspect_cpu:.1f}x", ">= 4x")
row("  of which unlocking (Argon2id, 3 passes, 64 MiB), wall", f"{argon:.2f} s", "", "", "")
# The program resets the kernel's high-water mark after unlocking, so the process's peak is the
# larger of the mark it read before the reset and the one the kernel reports at exit.
def process_peak(runs):
    return max(max(run["rss"], run["peakResidentBytesWithUnlock"]) for run in runs)
large_rss, small_rss = process_peak(large), process_peak(small)
large_own = max(run["peakResidentBytesOfInspection"] for run in large)
small_own = max(run["peakResidentBytesOfInspection"] for run in small)
row("peak resident memory of the process, 256 MiB package", f"{small_rss / 2**20:.1f} MiB", "", "", "")
row("peak resident memory of the process, 1.4 GB package", f"{large_rss / 2**20:.1f} MiB", "", "", "< 128 MiB")
row("peak after unlocking (Argon2id excluded), 256 MiB package", f"{small_own / 2**20:.1f} MiB", "", "", "")
row("peak after unlocking (Argon2id excluded), 1.4 GB package", f"{large_own / 2**20:.1f} MiB", "", "", "< 64 MiB")
row("  growth from 256 MiB to 1.4 GB of payload", f"{(large_own - small_own) / 2**20:+.1f} MiB", "", "", "~ 0")
PYTHON
