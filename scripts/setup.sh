#!/usr/bin/env bash
# Installs the Debian packages that building and testing Velmora needs.
# As root it installs what is missing; otherwise it names the missing packages and fails.
set -euo pipefail

packages=(
    build-essential cmake pkg-config dpkg-dev file
    libgtest-dev libgmock-dev libbenchmark-dev
    libfreeimage-dev
    libegl-dev libgl-dev libglu1-mesa-dev libegl-mesa0 libgl1-mesa-dri
    openscenegraph
    libcli11-dev nlohmann-json3-dev
    clang libclang-rt-14-dev
    python3
)

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done

if [ ${#missing[@]} -eq 0 ]; then
    exit 0
fi

if [ "$(id -u)" -ne 0 ]; then
    echo "Velmora needs these Debian packages: ${missing[*]}" >&2
    echo "Install them with: sudo apt-get install ${missing[*]}" >&2
    exit 1
fi

echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
