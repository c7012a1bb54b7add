#!/usr/bin/env bash
# installed-programs.sh <build directory>: installs the programs into an empty prefix and
# proves that the installed galdrine-recovery, and a copy of it alone in an empty directory,
# read a recovery key and inspect a package with nothing from the build tree.
set -euo pipefail
build="$(cd "$1" && pwd)"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/prefix" >/dev/null
installed="$work/prefix/bin"
mkdir "$work/alone" "$work/library" "$work/elsewhere"
cp "$installed/galdrine-recovery" "$work/alone/"

# Nothing of the build tree is compiled into the program's read-only data.
if readelf -p .rodata "$installed/galdrine-recovery" | grep -qF "$build"; then
  echo "galdrine-recovery holds a path into the build tree" >&2
  exit 1
fi

head -c 3000 /dev/urandom >"$work/library/Photo.png"
"$installed/galdrine-backup" create "$work/Backup.galdrine" --from "$work/library" --new-recovery-key \
  </dev/null >"$work/created.txt"
words="$(grep -E '^([a-z]+ ){23}[a-z]+$' "$work/created.txt")"

cd "$work/elsewhere"
for program in "$installed/galdrine-recovery" "$work/alone/galdrine-recovery"; do
  printf '%s\n' "$words" | "$program" inspect "$work/Backup.galdrine" --recovery-key --credential-stdin \
    >"$work/inspection.json"
  grep -q "\"preservedBranches\"" "$work/inspection.json"
  "$program" self-test >/dev/null
done
echo "installed programs inspect a package with a recovery key"
