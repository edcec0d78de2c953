#!/usr/bin/env bash
# Checks the Windows tool from its zip as a user would have it: unpacked in a folder whose name
# holds a space and an accent, in a fresh Wine prefix, on models with such names. Its text and
# files must be those of the Linux tool; its picture must show the model; its glTF must pass the
# Khronos validator; a C program on its velmora_c.dll must open, save and refuse as on Linux.
#   check-windows.sh ZIP LINUX_TOOL
set -euo pipefail

if [ -z "${DISPLAY:-}" ]; then
    exec xvfb-run -a -s "-screen 0 1280x1024x24" "$0" "$@"
fi

zip="$(realpath "$1")"
linux="$(realpath "$2")"
root="$(cd "$(dirname "$0")/.." && pwd)"
work="$root/build/windows/check"
place="$work/Scènes été"

rm -rf "$work"
mkdir -p "$place"
(cd "$place" && cmake -E tar xf "$zip")
exe="$(ls "$place"/velmora-*/bin/velmora.exe)"
export WINEPREFIX="$work/wine" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
wine cmd /c exit >/dev/null 2>&1  # makes the fresh prefix
trap 'wineserver -k 2>/dev/null || true' EXIT

cd "$place"
cp "$root/samples/building.mdl" "façade 1.mdl"
cp "$root/samples/lightpad.mdl" "pad été.mdl"
cp "$root/samples/scenery.bgl" "scène.bgl"
mkdir -p textures && cp "$root/samples/textures/"* textures/

failures=0
fail() {
    echo "FAILED: $*" >&2
    failures=$((failures + 1))
}

# Runs both tools with the same words; "{}" in them becomes linux or windows.
both() {
    "$linux" "${@//\{\}/linux}" >linux.out 2>linux.err || echo "exit $?" >>linux.out
    wine "$exe" "${@//\{\}/windows}" >windows.out 2>windows.err || echo "exit $?" >>windows.out
}

same_output() {
    both "$@"
    cmp -s linux.out windows.out || fail "velmora $*: the output differs" \
        "$(diff linux.out windows.out | head -5)"
}

same_files() {
    local what="$1"
    shift
    both "$@"
    cmp -s "linux$what" "windows$what" || fail "velmora $*: linux$what and windows$what differ"
}

same_output info "façade 1.mdl"
same_output info --json "pad été.mdl"
same_output commands "façade 1.mdl"
same_output scan "scène.bgl"
same_files .mdl edit --add-kill-shadow --condition "between 798 3 5" --force "pad été.mdl" -o "{}.mdl"
same_files .asm export-asm "façade 1.mdl" -o "{}.asm"
same_files .flt export-flt "façade 1.mdl" -o "{}.flt"

# The picture: the model covers between 3 % and 90 % of the frame.
wine "$exe" render "façade 1.mdl" --textures textures --background ff00ff -o picture.png ||
    fail "velmora render exited with $?"
coverage=$(python3 "$root/scripts/png-coverage.py" picture.png ff00ff)
echo "render: the model covers ${coverage} % of the frame"
python3 -c "import sys; sys.exit(0 if 3 <= float('$coverage') <= 90 else 1)" ||
    fail "render: the model covers ${coverage} % of the frame"

wine "$exe" export-gltf "façade 1.mdl" --textures textures -o façade.glb ||
    fail "velmora export-gltf exited with $?"
report=$(cd "$root/tests/gltf" && node validate.mjs "$place/façade.glb")
echo "export-gltf: $report"
echo "$report" | grep -q '"errors":0,"warnings":0,' || fail "export-gltf: the validator objects"

# The studio: it serves this folder's models, their pictures and the page, and previews an edit
# without writing it.
mkdir -p "studio été" && cp "façade 1.mdl" "pad été.mdl" scène.bgl "studio été/"
(cd "studio été" && exec wine "$exe" studio . --no-browser >../studio.out 2>../studio.err) &
studio=$!
for _ in $(seq 1 100); do
    [ -s studio.out ] && break
    sleep 0.3
done
address=$(head -1 studio.out | tr -d '\r')
if [ -z "$address" ]; then
    fail "velmora studio printed no address: $(cat studio.err)"
else
    base=${address%%/?token=*}
    token="Authorization: Bearer ${address##*token=}"
    models=$(curl -sf -H "$token" "$base/api/models" || true)
    count=$(echo "$models" | python3 -c "import json, sys; print(len(json.load(sys.stdin)))" ||
        echo 0)
    echo "studio: $count models at $base"
    [ "$count" = 5 ] || fail "studio: $count models listed instead of 5"
    id=$(echo "$models" | python3 -c \
        "import json, sys; print([m['id'] for m in json.load(sys.stdin) if m['file'] == 'façade 1.mdl'][0])")
    curl -sf -H "$token" "$base/api/models/$id/thumbnail.png" -o studio.png ||
        fail "studio: no thumbnail"
    [ "$(head -c 4 studio.png | tail -c 3)" = PNG ] || fail "studio: the thumbnail is no PNG"
    curl -sf -H "$token" "$base/" | grep -q studio.js || fail "studio: no page"
    before=$(md5sum <"studio été/façade 1.mdl")
    curl -sf -H "$token" -d '{"condition": ["between 500 1 2"], "save": false}' \
        "$base/api/models/$id/edit" | grep -q '500 in 1..2' || fail "studio: the edit failed"
    [ "$(md5sum <"studio été/façade 1.mdl")" = "$before" ] || fail "studio: a preview wrote the file"
fi
kill "$studio" 2>/dev/null || true
wait "$studio" 2>/dev/null || true

# Another project built on the library from the zip's CMake package, with the same compiler.
package="$(dirname "$(dirname "$exe")")"
cmake -S "$root/tests/consumer" -B "$work/consumer" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64-x86_64.cmake" -DCMAKE_PREFIX_PATH="$package" \
    >"$work/consumer.log" && cmake --build "$work/consumer" >>"$work/consumer.log" ||
    fail "a program can't be built on the zip's CMake package (see $work/consumer.log)"
counted=$(wine "$work/consumer/count_model.exe" "$root/samples/building.mdl" | tr -d '\r')
echo "$counted" | grep -q "^commands [1-9]" || fail "the program built on the zip reads no model"
echo "a program built on the zip's library: $(echo "$counted" | tr '\n' ' ')"

# A C program built on the zip's C interface (velmora_c.h, velmora_c.dll), run beside the DLL.
capi="$work/capi"
mkdir -p "$capi"
cp "$package/bin/velmora_c.dll" "$root/samples/building.mdl" "$capi/"
x86_64-w64-mingw32-gcc-posix -std=c99 -Wall -Werror -I"$package/include" \
    "$root/tests/capi/OpenSaveDamaged.c" -L"$package/lib" -lvelmora_c -o "$capi/capi.exe" ||
    fail "a C program can't be built on the zip's velmora_c.h and velmora_c.dll"
(cd "$capi" && wine capi.exe building.mdl scratch | tr -d '\r') ||
    fail "the C program on the zip's velmora_c.dll failed"

if [ "$failures" -ne 0 ]; then
    echo "$failures check(s) of the Windows tool failed" >&2
    exit 1
fi
echo "The Windows tool from the zip does what the Linux tool does"
