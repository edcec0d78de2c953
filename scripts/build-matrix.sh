#!/usr/bin/env bash
# Builds the library, the velmora tool and the C interface in the four build types with GCC and
# with Clang, with warnings as errors, and says how long each build took. The builds go to
# build/matrix/ and are kept, so a second run only rebuilds what changed.
# Usage: scripts/build-matrix.sh [plain|sanitize|both]     (default: plain)
#   sanitize: with AddressSanitizer and UndefinedBehaviorSanitizer; both: each build type twice.
# Environment: COMPILERS (default "gcc clang"), BUILD_TYPES (default "Debug Release
#   RelWithDebInfo MinSizeRel"), WERROR=OFF to see every warning of a build rather than the
#   first error (a warning still fails the run).
set -euo pipefail
cd "$(dirname "$0")/.."
variants="${1:-plain}"
case "$variants" in
    plain) sanitize=(OFF) ;;
    sanitize) sanitize=(ON) ;;
    both) sanitize=(OFF ON) ;;
    *) echo "usage: scripts/build-matrix.sh [plain|sanitize|both]" >&2; exit 2 ;;
esac
read -r -a compilers <<<"${COMPILERS:-gcc clang}"
read -r -a types <<<"${BUILD_TYPES:-Debug Release RelWithDebInfo MinSizeRel}"
werror="${WERROR:-ON}"
jobs="$(nproc 2>/dev/null || echo 2)"

status=0
start=$SECONDS
printf '%-6s %-15s %-9s %8s  %s\n' compiler "build type" sanitize seconds result
for compiler in "${compilers[@]}"; do
    case "$compiler" in
        gcc) cc=gcc cxx=g++ ;;
        clang) cc=clang cxx=clang++ ;;
        *) echo "unknown compiler $compiler" >&2; exit 2 ;;
    esac
    for type in "${types[@]}"; do
        for san in "${sanitize[@]}"; do
            dir="build/matrix/$compiler-$type"
            [ "$san" = ON ] && dir="$dir-sanitize"
            mkdir -p "$dir"
            began=$SECONDS
            result=ok
            if ! cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE="$type" -DCMAKE_C_COMPILER="$cc" \
                -DCMAKE_CXX_COMPILER="$cxx" -DVELMORA_WERROR="$werror" -DVELMORA_SANITIZE="$san" \
                -DVELMORA_PREVIEW=ON -DVELMORA_BUILD_TESTS=OFF -DVELMORA_BUILD_BENCH=OFF \
                >"$dir/configure.log" 2>&1; then
                result="configure failed, see $dir/configure.log"
            elif ! cmake --build "$dir" -j "$jobs" --target velmora velmora_cli velmora_c -- -k \
                >"$dir/build.log" 2>&1; then
                result="failed, see $dir/build.log"
            elif grep -q 'warning:' "$dir/build.log"; then
                result="$(grep -c 'warning:' "$dir/build.log") warnings, see $dir/build.log"
            fi
            printf '%-6s %-15s %-9s %8d  %s\n' "$compiler" "$type" "$san" \
                $((SECONDS - began)) "$result"
            if [ "$result" != ok ]; then
                status=1
                grep -E 'error|warning:' "$dir/build.log" 2>/dev/null | cut -c1-240 | head -20 || true
            fi
        done
    done
done
echo "build matrix: $((SECONDS - start)) s"
exit $status
