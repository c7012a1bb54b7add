#!/usr/bin/env bash
# The tool's main job on a fresh machine: installs what is missing, builds galdrine-recovery
# and runs it. Until the package engine is complete, the job is the format self-test.
set -euo pipefail
cd "$(dirname "$0")/.."

./scripts/install-dependencies.sh
cmake --preset default >/dev/null
cmake --build --preset default --target galdrine-recovery --parallel "$(nproc)"
./build/galdrine-recovery self-test
