#!/usr/bin/env bash
# Inspect and export of a library of many small items: time and peak memory, in one run, and
# one table. The library is 100,000 photos of 0.5-4 KiB of random bytes in 100 albums (sizes
# from a fixed seed), backed up once by galdrine-backup with a new recovery key, so that no
# Argon2id run hides what the records cost. The reference is `cp -r` of the same files
# followed by `sync`, and `restic restore` of them with its default settings.
#
# Usage: bench/small-items.sh [item count]    (default 100000)
#        GALDRINE_BENCH_DIRECTORY=/path bench/small-items.sh   (default /tmp/galdrine-bench)
set -euo pipefail
cd "$(dirname "$0")/.."

item_count="${1:-100000}"
scratch="${GALDRINE_BENCH_DIRECTORY:-/tmp/galdrine-bench}/small-items-$item_count"
for command in /usr/bin/python3 restic cmake /usr/bin/time; do
  command -v "$command" >/dev/null || { echo "$command is missing: run scripts/install-dependencies.sh" >&2; exit 1; }
done

cmake --preset bench >/dev/null
cmake --build --preset bench --target galdrine-recovery galdrine-backup --parallel 2 >/dev/null
recovery="$PWD/build-bench/galdrine-recovery"
backup="$PWD/build-bench/galdrine-backup"

media="$scratch/media"
package="$scratch/library.galdrine"
words="$scratch/recovery-key-words"
repository="$scratch/restic"
passphrase_file="$scratch/restic-passphrase"
results="$scratch/results"
output="$scratch/output"
mkdir -p "$scratch"
rm -rf "$results" "$output" && mkdir -p "$results"

if [ ! -f "$media/.complete" ]; then
  echo "making $item_count small photos under $media ..." >&2
  rm -rf "$media"
  /usr/bin/python3 - "$media" "$item_count" <<'PYTHON'
import os, random, sys
directory, count = sys.argv[1], int(sys.argv[2])
sizes = random.Random(20240612)
for index in range(count):
    album = os.path.join(directory, f"Album {index % 100:03}")
    os.makedirs(album, exist_ok=True)
    with open(os.path.join(album, f"IMG_{index:06}.jpg"), "wb") as file:
        file.write(os.urandom(sizes.randint(512, 4096)))
PYTHON
  touch "$media/.complete"
fi

# timed NAME INPUT COMMAND...: one run under /usr/bin/time -v, INPUT on standard input.
timed() {
  local name="$1" input="$2"
  shift 2
  /usr/bin/time -v -o "$results/$name.time" "$@" <"$input" >"$results/$name.out" 2>"$results/$name.err"
}
warm() { find "$1" -type f -exec cat {} + >/dev/null; }

if [ ! -f "$scratch/package.complete" ]; then
  echo "backing the photos up with galdrine-backup ..." >&2
  rm -rf "$package"
  timed create /dev/null "$backup" create "$package" --from "$media" --new-recovery-key
  grep -E '^([a-z]+ ){23}[a-z]+$' "$results/create.out" >"$words"
  cp "$results/create.time" "$scratch/create.time"
  touch "$scratch/package.complete"
fi
if [ ! -f "$scratch/restic.complete" ]; then
  echo "backing the photos up with restic ..." >&2
  rm -rf "$repository"
  printf 'lantern orchard 47 quietly drifting' >"$passphrase_file"
  restic --repo "$repository" --password-file "$passphrase_file" init --quiet >/dev/null
  restic --repo "$repository" --password-file "$passphrase_file" backup --quiet "$media" >/dev/null
  touch "$scratch/restic.complete"
fi

echo "measuring ..." >&2
warm "$package"
timed inspect "$words" "$recovery" inspect "$package" --recovery-key --credential-stdin
code=$(/usr/bin/python3 -c 'import json, sys; print(json.load(sys.stdin)["preservedBranches"][0]["tipSelectionCode"])' \
  <"$results/inspect.out")
sync
timed export "$words" sh -c "\"\$0\" \"\$@\" && sync" "$recovery" export "$package" --snapshot "$code" \
  --destination "$output" --recovery-key --credential-stdin
rm -rf "$output" && sync
warm "$media"
timed copy /dev/null sh -c 'cp -r "$0" "$1" && sync' "$media" "$output"
rm -rf "$output" && sync
warm "$repository"
timed restic /dev/null sh -c 'restic --repo "$0" --password-file "$1" --no-cache restore latest --target "$2" --quiet && sync' \
  "$repository" "$passphrase_file" "$output"
rm -rf "$output"

/usr/bin/python3 - "$results" "$scratch/create.time" "$item_count" <<'PYTHON'
import json, re, sys
results, create_time, item_count = sys.argv[1], sys.argv[2], int(sys.argv[3])

def measured(path):
    text = open(path).read()
    field = lambda label: re.search(re.escape(label) + r":\s*(.+)", text).group(1).strip()
    wall = sum(float(part) * 60 ** index for index, part in enumerate(reversed(field(
        "Elapsed (wall clock) time (h:mm:ss or m:ss)").split(":"))))
    assert int(field("Exit status")) == 0, path
    return wall, int(field("Maximum resident set size (kbytes)")) / 1024

exported = json.load(open(f"{results}/export.out"))
assert exported["status"] == "completed" and exported["recoveredItemCount"] == item_count, exported
copy_wall, _ = measured(f"{results}/copy.time")
print(f"{item_count} photos of 0.5-4 KiB in 100 albums; one run each")
print(f"{'measure':48} {'wall':>9} {'peak RSS':>10} {'vs cp -r + sync':>16}")
for label, path in (("galdrine-backup create (recovery key)", create_time),
                    ("galdrine-recovery inspect (recovery key)", f"{results}/inspect.time"),
                    ("galdrine-recovery export + sync (recovery key)", f"{results}/export.time"),
                    ("restic restore + sync (default threads)", f"{results}/restic.time"),
                    ("cp -r + sync", f"{results}/copy.time")):
    wall, rss = measured(path)
    print(f"{label:48} {wall:8.2f}s {rss:8.1f}MiB {wall / copy_wall:15.2f}x")
PYTHON
