#!/usr/bin/env bash
# Lays out the Python package and the Blender add-on from a build that has the C interface:
#   OUT/velmora/               the package with libvelmora_c.so beside it (PYTHONPATH=OUT)
#   OUT/velmora_blender.zip    the add-on, holding the package and the library
# Usage: scripts/python.sh BUILD_DIR OUT_DIR
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="$(cd "$1" && pwd)"
mkdir -p "$2"
out="$(cd "$2" && pwd)"
library="$build/tools/velmora_c/libvelmora_c.so"
[ -f "$library" ] || { echo "no $library; build the target velmora_c first" >&2; exit 1; }

rm -rf "$out/velmora" "$out/velmora_blender" "$out/velmora_blender.zip"
cp -r "$root/tools/python/velmora" "$out/velmora"
# The file itself under the name the package looks for, not the chain of version links.
cp -L "$library" "$out/velmora/libvelmora_c.so"
find "$out/velmora" -name __pycache__ -prune -exec rm -rf {} +

cp -r "$root/tools/blender/velmora_blender" "$out/velmora_blender"
cp -r "$out/velmora" "$out/velmora_blender/velmora"
find "$out/velmora_blender" -name __pycache__ -prune -exec rm -rf {} +
(cd "$out" && python3 -m zipfile -c velmora_blender.zip velmora_blender/ && rm -rf velmora_blender)
echo "made $out/velmora and $out/velmora_blender.zip"
