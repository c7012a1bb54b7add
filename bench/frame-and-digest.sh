#!/usr/bin/env bash
# Builds bench/FrameBenchmark (bench preset), runs it beside `openssl speed` in the
# same run, and prints one table: our throughput, OpenSSL's on 16384-byte blocks, and the
# ratio. The aim is at least 85% of OpenSSL for frame open and for streaming SHA-256.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds="${OPENSSL_SECONDS:-3}"

cmake --preset bench >/dev/null
cmake --build --preset bench --target FrameBenchmark -j2 >/dev/null

results="$(mktemp)"
trap 'rm -f "$results"' EXIT
./build-bench/bench/FrameBenchmark --benchmark_format=json >"$results" 2>/dev/null

# openssl speed reports thousands of bytes per second; the last line holds the figure.
openssl_rate() {
  openssl speed -seconds "$seconds" -bytes 16384 "$@" 2>/dev/null | tail -n 1 | awk '{ sub(/k$/, "", $NF); print $NF * 1000 }'
}
gcm_encrypt="$(openssl_rate -evp aes-256-gcm)"
gcm_decrypt="$(openssl_rate -decrypt -evp aes-256-gcm)"
sha256="$(openssl_rate -evp sha256)"

python3 - "$results" "$gcm_encrypt" "$gcm_decrypt" "$sha256" <<'PYTHON'
import json, sys
results = {entry["name"].split("/")[0]: entry["bytes_per_second"] for entry in json.load(open(sys.argv[1]))["benchmarks"]}
gcm_encrypt, gcm_decrypt, sha256 = (float(value) for value in sys.argv[2:5])
rows = [
    ("frame open, 16 MiB frames", results["frameOpen16MiB"], "openssl aes-256-gcm", gcm_encrypt),
    ("frame open, 16 MiB frames", results["frameOpen16MiB"], "openssl aes-256-gcm -decrypt", gcm_decrypt),
    ("cipher alone, 16 MiB buffer", results["platformOpen16MiB"], "openssl aes-256-gcm -decrypt", gcm_decrypt),
    ("streaming SHA-256, 1 MiB pieces", results["streamingSHA256Over1MiBPieces"], "openssl sha256", sha256),
]
print(f"{'measured':34} {'MB/s':>9}   {'reference (16384-byte blocks)':30} {'MB/s':>9}  {'ratio':>6}")
for name, ours, reference_name, reference in rows:
    print(f"{name:34} {ours / 1e6:9.1f}   {reference_name:30} {reference / 1e6:9.1f}  {ours / reference:6.1%}")
PYTHON
