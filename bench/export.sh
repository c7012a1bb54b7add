#!/usr/bin/env bash
# Measures one whole export against the reference tools, in one run, and prints one table:
#  - the library of bench/benchmark-library.sh (about 1.4 GB of random media, 300 photos of
#    2-4 MiB and 4 videos of 60-120 MiB), written once into a package by the package writer;
#  - `galdrine-recovery export` of its snapshot, the credential on standard input, until the
#    process exits with every file and directory synchronised: with the recovery key's words
#    and with the backup passphrase (Argon2id, 3 passes over 64 MiB, runs twice: once for the
#    driver's inspection, once for the export);
#  - B = 5 x bytes / SHA-256 speed + bytes / AES-256-GCM speed (`openssl speed -evp`) + the
#    time of `cp -r` of the plain media followed by `sync`, and the export's ratio to B;
#  - `restic restore` of the same media followed by `sync`, with GOMAXPROCS=1 and with its
#    default;
#  - the peak resident memory of the export (`/usr/bin/time -v`) for the 1.4 GB package and
#    for a 256 MiB one, and where the export's time goes (bench/ExportBenchmark).
# Every reader starts from a warm page cache, and every writer from a synchronised disk. Times
# are medians of the repetitions; CPU times are user and system time of the process, which the
# machine's other load does not inflate.
#
# Usage: bench/export.sh [repetitions]    (default 3)
#        GALDRINE_BENCH_DIRECTORY=/path bench/export.sh   (default /tmp/galdrine-bench)
set -euo pipefail
cd "$(dirname "$0")/.."

repetitions="${1:-3}"
scratch="${GALDRINE_BENCH_DIRECTORY:-/tmp/galdrine-bench}"
for command in openssl restic python3 cmake /usr/bin/time; do
  command -v "$command" >/dev/null || { echo "$command is missing: run scripts/install-dependencies.sh" >&2; exit 1; }
done

cmake --preset bench >/dev/null
cmake --build --preset bench --target galdrine-recovery InspectBenchmark ExportBenchmark --parallel 2 >/dev/null
program=build-bench/bench/InspectBenchmark
tool=build-bench/galdrine-recovery
phases=build-bench/bench/ExportBenchmark

source bench/benchmark-library.sh
prepare_benchmark_library

results="$scratch/export-results"
output="$scratch/export-output"
rm -rf "$results" "$output" && mkdir -p "$results"
warm() { find "$1" -type f -exec cat {} + >/dev/null; }
clean_output() { rm -rf "$output" && sync; }

# timed NAME INPUT COMMAND...: one run under /usr/bin/time -v with INPUT on standard input,
# its output and its measurements kept.
timed() {
  local name="$1" input="$2"
  shift 2
  /usr/bin/time -v -o "$results/$name.time" "$@" <"$input" >"$results/$name.out" 2>"$results/$name.err"
}

# timed_with_sync NAME COMMAND...: the command and a sync after it, as one wall time in seconds.
timed_with_sync() {
  local name="$1" start end
  shift
  start=$(date +%s.%N)
  "$@" >/dev/null 2>&1
  sync
  end=$(date +%s.%N)
  python3 -c "print($end - $start)" >"$results/$name.seconds"
}

"$phases" phrase >"$scratch/recovery-key-words"
selection_code() {
  "$tool" inspect "$1" --recovery-key --credential-stdin <"$scratch/recovery-key-words" |
    python3 -c 'import json, sys; print(json.load(sys.stdin)["snapshots"][0]["selectionCode"])'
}
code=$(selection_code "$scratch/library.galdrine")
small_code=$(selection_code "$scratch/library-256MiB.galdrine")

export_package() {  # NAME PACKAGE CODE FACTOR CREDENTIAL_FILE
  clean_output
  warm "$2"
  timed "$1" "$5" "$tool" export "$2" --snapshot "$3" --destination "$output" "$4" --credential-stdin
}

for repetition in $(seq "$repetitions"); do
  echo "repetition $repetition of $repetitions ..." >&2
  export_package "export-key-$repetition" "$scratch/library.galdrine" "$code" --recovery-key "$scratch/recovery-key-words"
  export_package "export-passphrase-$repetition" "$scratch/library.galdrine" "$code" --backup-passphrase "$passphrase_file"
  export_package "export-256MiB-$repetition" "$scratch/library-256MiB.galdrine" "$small_code" --backup-passphrase \
    "$passphrase_file"

  clean_output
  warm "$media"
  timed_with_sync "copy-$repetition" cp -r "$media" "$output"

  for threads in 1 default; do
    clean_output
    warm "$repository"
    if [ "$threads" = 1 ]; then
      timed_with_sync "restic-$threads-$repetition" env GOMAXPROCS=1 restic --repo "$repository" \
        --password-file "$passphrase_file" --no-cache restore latest --target "$output"
    else
      timed_with_sync "restic-$threads-$repetition" restic --repo "$repository" --password-file "$passphrase_file" \
        --no-cache restore latest --target "$output"
    fi
  done

  openssl speed -seconds 3 -bytes 16384 -evp sha256 2>/dev/null | tail -n 1 >"$results/sha256-$repetition.out"
  openssl speed -seconds 3 -bytes 16384 -evp aes-256-gcm 2>/dev/null | tail -n 1 >"$results/aes-$repetition.out"

  clean_output
  warm "$scratch/library.galdrine"
  "$phases" phases "$scratch/library.galdrine" "$output" >"$results/phases-$repetition.out"
done
clean_output

media_bytes=$(find "$media" -type f -name '*.*' ! -name '.*' -printf '%s\n' | awk '{ total += $1 } END { print total }')
python3 - "$results" "$repetitions" "$media_bytes" <<'PYTHON'
import json, os, re, statistics, sys
results, repetitions, media_bytes = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
runs = range(1, repetitions + 1)

def time_fields(name):
    text = open(os.path.join(results, name + ".time")).read()
    def field(label):
        return re.search(re.escape(label) + r":\s*(.+)", text).group(1).strip()
    wall = field("Elapsed (wall clock) time (h:mm:ss or m:ss)").split(":")
    measured = {"wall": sum(float(part) * 60 ** index for index, part in enumerate(reversed(wall))),
                "cpu": float(field("User time (seconds)")) + float(field("System time (seconds)")),
                "rss": int(field("Maximum resident set size (kbytes)")) * 1024, "status": int(field("Exit status"))}
    assert measured["status"] == 0, name + " failed: " + open(os.path.join(results, name + ".err")).read()
    return measured

def seconds(name):
    return float(open(os.path.join(results, name + ".seconds")).read())

def openssl_rate(kind):
    return statistics.median(float(open(os.path.join(results, f"{kind}-{r}.out")).read().split()[-1].rstrip("k")) * 1000
                             for r in runs)

median = statistics.median
key = [time_fields(f"export-key-{r}") for r in runs]
passphrase = [time_fields(f"export-passphrase-{r}") for r in runs]
small = [time_fields(f"export-256MiB-{r}") for r in runs]
copy = median(seconds(f"copy-{r}") for r in runs)
restic_single = median(seconds(f"restic-1-{r}") for r in runs)
restic_default = median(seconds(f"restic-default-{r}") for r in runs)
sha, aes = openssl_rate("sha256"), openssl_rate("aes")
b = 5 * media_bytes / sha + media_bytes / aes + copy
phases = [json.load(open(os.path.join(results, f"phases-{r}.out"))) for r in runs]

print(f"media: {media_bytes / 1e9:.2f} GB in {phases[0]['resourceCount']} files; medians of {repetitions} runs")
print(f"{'measure':62} {'value':>12} {'reference':>12} {'ratio':>7} {'target':>9}")
def row(name, value="", reference="", ratio="", target=""):
    print(f"{name:62} {value:>12} {reference:>12} {ratio:>7} {target:>9}")
row("SHA-256 (openssl speed -evp sha256, 16 KiB)", f"{sha / 1e6:.0f} MB/s")
row("AES-256-GCM (openssl speed -evp aes-256-gcm, 16 KiB)", f"{aes / 1e6:.0f} MB/s")
row("cp -r of the media, then sync", f"{copy:.2f} s")
row("B = 5 x bytes/SHA + bytes/AES + (cp -r + sync)", f"{b:.2f} s")
key_wall, key_cpu = median(r["wall"] for r in key), median(r["cpu"] for r in key)
pass_wall, pass_cpu = median(r["wall"] for r in passphrase), median(r["cpu"] for r in passphrase)
row("export, recovery key, wall", f"{key_wall:.2f} s", f"{b:.2f} s", f"{key_wall / b:.2f}", "<= 1.2")
row("export, backup passphrase (Argon2id twice), wall", f"{pass_wall:.2f} s", f"{b:.2f} s", f"{pass_wall / b:.2f}", "<= 1.2")
row("export, recovery key, user + system CPU", f"{key_cpu:.2f} s")
row("restic restore + sync, GOMAXPROCS=1, wall", f"{restic_single:.2f} s", f"{key_wall:.2f} s",
    f"{restic_single / key_wall:.2f}x", "> 1x")
row("restic restore + sync, default GOMAXPROCS, wall", f"{restic_default:.2f} s", f"{key_wall:.2f} s",
    f"{restic_default / key_wall:.2f}x")
row("peak resident memory, recovery key, 1.4 GB", f"{max(r['rss'] for r in key) / 2**20:.1f} MiB", "", "", "< 128 MiB")
row("peak resident memory, passphrase, 1.4 GB", f"{max(r['rss'] for r in passphrase) / 2**20:.1f} MiB", "", "",
    "< 192 MiB")
row("peak resident memory, passphrase, 256 MiB", f"{max(r['rss'] for r in small) / 2**20:.1f} MiB", "", "", "< 192 MiB")
print("where the export's time goes (in-process, recovery key; wall / user / system seconds):")
for phase, label in (("session", "session: unlock, inspection with payload hashing, records, plan"),
                     ("availability", "  availability of the plan's files alone (one hashing pass)"),
                     ("openParts", "  every part opened alone: read, frame digest, decrypt, digest"),
                     ("writeExport", "writing: availability, recovery, documents, publication")):
    values = [p[phase] for p in phases]
    row("  " + label, "/".join(f"{median(v[k] for v in values):.2f}" for k in ("wall", "user", "system")))
PYTHON
