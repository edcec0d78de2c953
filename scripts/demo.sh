#!/usr/bin/env bash
# Runs the velmora tool on the bundled sample model and says where each file went.
set -euo pipefail
build="${1:-build/release}"
tool="$build/tools/velmora"
out="build/demo"
mkdir -p "$out"

"$tool" --version
echo
echo "== velmora info samples/building.mdl"
"$tool" info samples/building.mdl
echo
echo "== velmora render samples/building.mdl"
"$tool" render samples/building.mdl -o "$out/building.png" --size 800x600 \
    --textures samples/textures
echo
echo "== velmora export-asm / export-flt"
"$tool" export-asm samples/building.mdl -o "$out/building.asm"
"$tool" export-flt samples/building.mdl -o "$out/building.flt"
echo
echo "== velmora scan samples/scenery.bgl"
"$tool" scan samples/scenery.bgl
echo
echo "Files written:"
echo "  preview frame        $out/building.png"
echo "  BGLC-style listing   $out/building.asm"
echo "  OpenFlight database  $out/building.flt (texture attribute files beside it)"
