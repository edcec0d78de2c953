#!/usr/bin/env bash
# Builds Velmora for 64-bit Windows on this machine with MinGW-w64, runs its tests under Wine
# (in a virtual X display for the preview's), packs build/windows/velmora-<version>-windows-
# x86_64.zip and checks the tool from the unpacked zip against the Linux tool.
set -euo pipefail

root="$(cd "$(dirname "$0")/.." && pwd)"
out="$root/build/windows"
deps="$out/deps"
jobs="${JOBS:-$(nproc)}"
toolchain="$root/cmake/mingw-w64-x86_64.cmake"
export WINEPREFIX="$out/wine" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="

"$root/scripts/setup.sh" windows
mkdir -p "$deps/include"

# The header-only libraries are Debian's; they serve any compiler.
for library in CLI nlohmann; do
    ln -sfn "/usr/include/$library" "$deps/include/$library"
done

# GoogleTest, built from Debian's sources with the cross compiler, once.
if [ ! -f "$deps/lib/cmake/GTest/GTestConfig.cmake" ]; then
    echo "Building GoogleTest for Windows"
    cmake -S /usr/src/googletest -B "$out/googletest" -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$deps" -DBUILD_GMOCK=OFF >/dev/null
    cmake --build "$out/googletest" -j "$jobs" >/dev/null
    cmake --install "$out/googletest" >/dev/null
fi

# cpp-httplib as the one header its authors ship, for the studio: Debian's installed header only
# declares (its code is in a Linux library), so the header comes from Debian's source package,
# with Debian's patches, fetched once with apt's own tools into the deps folder.
if [ ! -f "$deps/httplib/httplib.h" ]; then
    echo "Fetching cpp-httplib's source package from Debian"
    source_dir="$out/httplib-source"
    rm -rf "$source_dir"
    mkdir -p "$source_dir/lists/partial"
    printf '%s\n' "Types: deb-src" "URIs: http://deb.debian.org/debian" \
        "Suites: bookworm bookworm-updates" "Components: main" \
        "Signed-By: /usr/share/keyrings/debian-archive-keyring.gpg" >"$source_dir/debian.sources"
    apt_options=(-o Dir::Etc::SourceList="$source_dir/debian.sources" -o Dir::Etc::SourceParts=/dev/null
        -o Dir::State::Lists="$source_dir/lists")
    apt-get "${apt_options[@]}" update -qq
    (cd "$source_dir" && apt-get "${apt_options[@]}" source -qq --download-only cpp-httplib \
        2>/dev/null)
    (cd "$source_dir" && for archive in *.tar.*; do tar xf "$archive"; done)
    upstream=$(dirname "$(ls "$source_dir"/*/httplib.h | head -1)")
    if [ -f "$source_dir/debian/patches/series" ]; then
        while read -r patch; do
            [ -n "$patch" ] && patch -s -d "$upstream" -p1 <"$source_dir/debian/patches/$patch"
        done <"$source_dir/debian/patches/series"
    fi
    mkdir -p "$deps/httplib"
    cp "$upstream/httplib.h" "$deps/httplib/httplib.h"
fi

cmake -S "$root" -B "$out/build" -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_BUILD_TYPE=Release \
    -DVELMORA_HTTPLIB_INCLUDE="$deps/httplib" \
    -DCMAKE_PREFIX_PATH="$deps" -DCMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES="$deps/include" \
    -DCMAKE_CROSSCOMPILING_EMULATOR="$root/scripts/wine-run.sh" -DVELMORA_BUILD_BENCH=OFF \
    -DVELMORA_PREVIEW=ON >/dev/null
cmake --build "$out/build" -j "$jobs"

echo "Running the tests under Wine"
start=$(date +%s)
(cd "$out/build" && xvfb-run -a -s "-screen 0 1280x1024x24" \
    ctest --output-on-failure -j "$jobs" --timeout 600)
echo "The Windows tests took $(($(date +%s) - start)) s"

(cd "$out/build" && rm -f velmora-*-windows-x86_64.zip && cpack -G ZIP >/dev/null)
zip=$(ls "$out"/build/velmora-*-windows-x86_64.zip)
mv "$zip" "$out/"
zip="$out/$(basename "$zip")"

# The Linux tool to compare with: the Release build of `make demo` and `make package`.
cmake -S "$root" -B "$root/build/release" -DCMAKE_BUILD_TYPE=Release -DVELMORA_BUILD_TESTS=OFF \
    -DVELMORA_BUILD_BENCH=OFF -DVELMORA_PREVIEW=ON >/dev/null
cmake --build "$root/build/release" -j "$jobs" --target velmora_cli >/dev/null

"$root/scripts/check-windows.sh" "$zip" "$root/build/release/tools/velmora"
echo "Made $zip"
