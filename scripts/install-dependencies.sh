#!/usr/bin/env bash
# Installs everything the build, the tests, the fuzz targets and the benchmarks need
# on a fresh Debian 12 machine. Safe to run again: apt-get skips what is present.
set -euo pipefail

packages=(
  build-essential g++ cmake ninja-build pkg-config git
  libssl-dev libsodium-dev nlohmann-json3-dev libicu-dev libbsd-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  clang-16 libclang-rt-16-dev
  openssl argon2 hyperfine python3 python3-mnemonic python3-pil restic time
)

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" || missing+=("$package")
done

if [ "${#missing[@]}" -gt 0 ]; then
  sudo_prefix=""
  [ "$(id -u)" -eq 0 ] || sudo_prefix="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $sudo_prefix apt-get update -y
  $sudo_prefix apt-get install -y --no-install-recommends "${missing[@]}"
fi
