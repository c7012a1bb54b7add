#!/usr/bin/env bash
# Times a commit graph scan of 20,000 commits (one chain, and 100 branches) and reports the
# peak memory of the whole benchmark process.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --preset bench >/dev/null
cmake --build --preset bench --target CommitGraphBenchmark -j2 >/dev/null
binary=build-bench/bench/CommitGraphBenchmark

log="$(mktemp)"
trap 'rm -f "$log"' EXIT

for filter in BM_ScanOneChain BM_ScanHundredBranches; do
  echo "== ${filter} =="
  /usr/bin/time -v "$binary" --benchmark_filter="^${filter}\$" 2>"$log" | grep -E "^BM_|^-|Benchmark"
  grep -E "Maximum resident set size|Elapsed \(wall clock\)" "$log"
done
