#!/usr/bin/env bash
# The whole test suite, as CI runs it: installs what is missing, then builds and tests twice,
# once plainly and once under AddressSanitizer and UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."

./scripts/install-dependencies.sh
# One job more than cores: the compilers wait on the disk often enough to use it.
jobs="$(( $(nproc) + 1 ))"

for preset in default sanitize; do
  echo "== ${preset} build =="
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" --parallel "$jobs"
  ctest --preset "$preset" --parallel "$jobs" </dev/null
done
