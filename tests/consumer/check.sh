#!/usr/bin/env bash
# Builds the consumer program of this folder against Velmora in one of the ways another project
# takes it in, runs it on a model and checks what it prints.
# Usage: check.sh install BUILD_DIR PREFIX          installs a build of Velmora into PREFIX
#        check.sh find-package PREFIX WORK MODEL VERSION
#        check.sh add-subdirectory SOURCE_DIR WORK MODEL VERSION
#        check.sh pkg-config PREFIX WORK MODEL VERSION
# VERSION is the version the program must report; the model must be samples/building.mdl.
# The compiler is $CXX, else c++.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
way="$1"

if [ "$way" = install ]; then
    rm -rf "$3"
    cmake --install "$2" --prefix "$3" >/dev/null
    exit 0
fi

from="$(cd "$2" && pwd)"
work="$3"
model="$4"
version="$5"
cxx="${CXX:-c++}"
mkdir -p "$work"
case "$way" in
    find-package)
        cmake -S "$here" -B "$work" -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_PREFIX_PATH="$from" \
            >"$work/configure.log"
        found="$(sed -n 's/^velmora_DIR:PATH=//p' "$work/CMakeCache.txt")"
        case "$found" in
            "$from"/*) ;;
            *) echo "find_package took velmora from $found, not from $from" >&2; exit 1 ;;
        esac
        cmake --build "$work" >"$work/build.log"
        ;;
    add-subdirectory)
        cmake -S "$here" -B "$work" -DCMAKE_CXX_COMPILER="$cxx" -DVELMORA_SOURCE_DIR="$from" \
            >"$work/configure.log"
        cmake --build "$work" -j "$(nproc 2>/dev/null || echo 2)" --target count_model \
            >"$work/build.log"
        ;;
    pkg-config)
        pcfile="$(find "$from" -name velmora.pc -path '*/pkgconfig/*' | head -1)"
        [ -n "$pcfile" ] || { echo "no velmora.pc under $from" >&2; exit 1; }
        export PKG_CONFIG_PATH="$(dirname "$pcfile")"
        pkg-config --validate velmora
        flags="$(pkg-config --cflags --libs velmora)"
        echo "pkg-config --cflags --libs velmora: $flags"
        # shellcheck disable=SC2086 # the flags are words
        "$cxx" -std=c++20 "$here/CountModel.cpp" $flags -o "$work/count_model"
        ;;
    *)
        echo "unknown way: $way" >&2
        exit 2
        ;;
esac

out="$("$work/count_model" "$model")"
echo "$out"
expected="velmora $version
vertices 30
materials 2
textures 3
commands 26"
if [ "$out" != "$expected" ]; then
    echo "count_model built by $way printed the wrong counts; expected:" >&2
    echo "$expected" >&2
    exit 1
fi
