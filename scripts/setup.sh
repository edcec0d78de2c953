#!/usr/bin/env bash
# Installs the Debian packages that building and testing Velmora needs; `setup.sh windows` also
# those of the Windows build (MinGW-w64, Wine, Xvfb). As root it installs what is missing;
# otherwise it names the missing packages and fails.
set -euo pipefail

packages=(
    build-essential cmake pkg-config dpkg-dev file
    libgtest-dev libgmock-dev libbenchmark-dev
    libfreeimage-dev libstb-dev
    libegl-dev libgl-dev libglu1-mesa-dev libegl-mesa0 libgl1-mesa-dri
    openscenegraph
    libcli11-dev nlohmann-json3-dev libcpp-httplib-dev
    clang libclang-rt-14-dev
    python3 python3-numpy
    blender
    chromium assimp-utils
)
# Wine's own recommendations (its OpenGL, fonts) are what the preview's tests need under it.
with_recommends=()
if [ "${1:-}" = windows ]; then
    packages+=(g++-mingw-w64-x86-64-posix googletest wine wine64 xvfb xauth curl)
    with_recommends=(wine wine64)
fi
# Node.js runs the glTF readers of tests/gltf; a machine that has it from elsewhere keeps it.
if ! command -v node >/dev/null || ! command -v npm >/dev/null; then
    packages+=(nodejs npm)
fi

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done

# The npm packages: the glTF readers (the Khronos validator, three.js, playwright-core), the
# studio page's bundler and three.js, and puppeteer-core for the page's tests.
install_node_packages() {
    local root folder
    root="$(cd "$(dirname "$0")/.." && pwd)"
    for folder in tests/gltf tools/velmora/studio/page tests/tool/browser; do
        if [ ! -d "$root/$folder/node_modules" ] ||
            [ "$root/$folder/package-lock.json" -nt "$root/$folder/node_modules" ]; then
            echo "Installing the npm packages of $folder"
            (cd "$root/$folder" && npm ci --no-audit --no-fund --loglevel=error >/dev/null)
            touch "$root/$folder/node_modules"
        fi
    done
}

if [ ${#missing[@]} -eq 0 ]; then
    install_node_packages
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
if [ ${#with_recommends[@]} -gt 0 ]; then
    apt-get install -y -qq "${with_recommends[@]}" >/dev/null
fi
install_node_packages
