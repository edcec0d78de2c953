#!/usr/bin/env bash
# Runs the record-walk program on a sample and checks what it printed and what it links.
set -euo pipefail
program="$1"
model="$2"
out="$("$program" "$model")"
echo "$out"
grep -q '^triangles [1-9]' <<<"$out"
grep -q 'no preview' <<<"$out"
if ldd "$program" | grep -E 'libGL|libEGL|libGLU|libfreeimage'; then
    echo "the program links a preview library" >&2
    exit 1
fi
