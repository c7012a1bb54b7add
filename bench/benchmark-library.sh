# Sourced by the benchmark scripts: the library they all measure, made once under the scratch
# directory and reused by every later run.
#  - media: 300 photos of 2-4 MiB and 4 videos of 60-120 MiB, about 1.4 GB of random bytes,
#    sizes from a fixed seed;
#  - media-256MiB: the first photos that add up to 256 MiB, as links to the same bytes;
#  - library.galdrine and library-256MiB.galdrine: each written by the package writer, with a
#    backup passphrase (3 passes over 64 MiB) and the benchmark's recovery key;
#  - restic: a restic repository holding the media under the same passphrase.
#
# The caller sets `scratch` and `program` (a InspectBenchmark, whose `write` command
# writes a package) before calling prepare_benchmark_library.

prepare_benchmark_media() {
  media="$scratch/media"
  small="$scratch/media-256MiB"
  passphrase_file="$scratch/passphrase"
  mkdir -p "$scratch"
  [ -f "$passphrase_file" ] || printf 'lantern orchard 47 quietly drifting' >"$passphrase_file"

  # The media, once: sizes from a fixed seed, bytes from the system's random source.
  if [ ! -f "$media/.complete" ]; then
    echo "making the media under $media ..." >&2
    rm -rf "$media" && mkdir -p "$media"
    python3 - "$media" <<'PYTHON'
import os, random, sys
directory = sys.argv[1]
sizes = random.Random(20240611)
plan = [(f"IMG_{index:04}.jpg", sizes.randint(2 << 20, 4 << 20)) for index in range(300)]
plan += [(f"MOV_{index:04}.mov", megabytes << 20) for index, megabytes in enumerate((60, 80, 100, 120))]
for name, byte_count in plan:
    with open(os.path.join(directory, name), "wb") as file:
        remaining = byte_count
        while remaining:
            piece = os.urandom(min(remaining, 8 << 20))
            file.write(piece)
            remaining -= len(piece)
PYTHON
    touch "$media/.complete"
  fi

  # The first small files that add up to 256 MiB, as links to the same bytes.
  if [ ! -f "$small/.complete" ]; then
    rm -rf "$small" && mkdir -p "$small"
    local total=0 file
    for file in "$media"/IMG_*.jpg; do
      [ "$total" -ge $((256 << 20)) ] && break
      ln "$file" "$small/"
      total=$((total + $(stat -c %s "$file")))
    done
    touch "$small/.complete"
  fi
}

prepare_benchmark_packages() {
  local name source_directory
  for name in library library-256MiB; do
    source_directory="$media"
    [ "$name" = library-256MiB ] && source_directory="$small"
    if [ ! -f "$scratch/$name.written" ]; then
      echo "writing $scratch/$name.galdrine ..." >&2
      rm -rf "$scratch/$name.galdrine"
      "$program" write "$source_directory" "$scratch/$name.galdrine" "$passphrase_file"
      touch "$scratch/$name.written"
    fi
  done
}

prepare_benchmark_restic_repository() {
  repository="$scratch/restic"
  if [ ! -f "$scratch/restic.written" ]; then
    echo "backing the media up with restic ..." >&2
    rm -rf "$repository"
    restic --repo "$repository" --password-file "$passphrase_file" init --quiet >/dev/null
    restic --repo "$repository" --password-file "$passphrase_file" backup --quiet "$media" >/dev/null
    touch "$scratch/restic.written"
  fi
}

prepare_benchmark_library() {
  prepare_benchmark_media
  prepare_benchmark_packages
  prepare_benchmark_restic_repository
}
