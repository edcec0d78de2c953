#!/usr/bin/env bash
# Runs the tests of the Python package and, where Blender is installed, of the Blender add-on,
# on what `make python` laid out.
# Usage: scripts/test-python.sh BUILD_DIR PYTHON_DIR
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="$(cd "$1" && pwd)"
packages="$(cd "$2" && pwd)"
export VELMORA_TOOL="$build/tools/velmora" VELMORA_MAKE_SAMPLES="$build/tools/velmora-make-samples"

# The first Python 3 that has numpy: Debian's, then whatever python3 is first on PATH.
python=""
for candidate in /usr/bin/python3 python3; do
    if command -v "$candidate" >/dev/null && "$candidate" -c "import numpy" 2>/dev/null; then
        python="$candidate"
        break
    fi
done
[ -n "$python" ] || { echo "no Python 3 with numpy (python3-numpy)" >&2; exit 1; }

echo "== the Python package ($("$python" --version))"
PYTHONPATH="$packages" "$python" -m unittest discover -s "$root/tests/python" \
    -t "$root/tests/python"

if ! command -v blender >/dev/null; then
    echo "== the Blender add-on: skipped, Blender is not installed"
    exit 0
fi
echo "== the Blender add-on ($(blender --version 2>/dev/null | head -1))"
work="$build/blender-test"
rm -rf "$work" && mkdir -p "$work/config"
# A scratch user folder, so the add-on is installed there and not into the user's own.
BLENDER_USER_CONFIG="$work/config" BLENDER_USER_SCRIPTS="$work/scripts" \
    blender -b --factory-startup --python-exit-code 1 \
    --python "$root/tests/blender/import_test.py" -- "$packages/velmora_blender.zip" "$work" \
    >"$work/blender.log" 2>&1 || { cat "$work/blender.log"; exit 1; }
grep -E "^(Ran|OK|FAILED)" "$work/blender.log"
