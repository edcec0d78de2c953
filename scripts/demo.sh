#!/usr/bin/env bash
# Runs the velmora tool from the given build folder.
set -euo pipefail
build="${1:-build/release}"
"$build/tools/velmora" --version
