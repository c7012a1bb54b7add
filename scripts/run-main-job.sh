#!/usr/bin/env bash
# The tool's main job on a fresh machine, as a newcomer would try it: installs what is missing,
# builds both programs, draws a small sample library of photos and videos, backs it up into a
# package with a sample passphrase, inspects the package, and exports its canonical tip into
# a new directory. Everything it makes lives under build-release/sample-run/ and is made anew each time.
set -euo pipefail
cd "$(dirname "$0")/.."

./scripts/install-dependencies.sh
cmake --preset release >/dev/null
cmake --build --preset release --target galdrine-recovery galdrine-backup --parallel "$(nproc)"
programs="$PWD/build-release"

run="$PWD/build-release/sample-run"
library="$run/Sample Library"
package="$run/Sample.galdrine"
recovered="$run/Recovered"
passphrase='lantern orchard 47 quietly drifting'
rm -rf "$run" && mkdir -p "$run"

step() { printf '\n== %s\n' "$*"; }

step "Drawing a sample library of photos and videos into $library"
./scripts/make-sample-library.py "$library"
find "$library" -type f | sort | sed "s|^$library/|  |"

step "Backing it up into $package (backup passphrase: \"$passphrase\")"
printf '%s\n' "$passphrase" |
  "$programs"/galdrine-backup create "$package" --from "$library" --backup-passphrase --credential-stdin

step "galdrine-recovery inspect"
printf '%s\n' "$passphrase" |
  "$programs"/galdrine-recovery inspect "$package" --backup-passphrase --credential-stdin | tee "$run/inspection.json"

# The canonical tip is the tip of the first preserved branch.
tip=$(/usr/bin/python3 -c 'import json, sys; print(json.load(sys.stdin)["preservedBranches"][0]["tipSelectionCode"])' \
  <"$run/inspection.json")

step "galdrine-recovery export of the canonical tip into $recovered"
printf '%s\n' "$passphrase" |
  "$programs"/galdrine-recovery export "$package" --snapshot "$tip" --destination "$recovered" \
    --backup-passphrase --credential-stdin

step "Recovered"
echo "  files:   $recovered/All Items/"
find "$recovered/All Items" -type f | sort | sed "s|^$recovered/All Items/|    |"
echo "  albums and folders: $recovered/library-mapping.json"
echo "  report:  $recovered/recovery-report.json"
