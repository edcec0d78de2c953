#!/usr/bin/env bash
# Checks the Debian package that `make package` made: it holds the expected files and nothing of
# the build besides, its dependencies are named, and unpacked into a scratch root (dpkg -x) it
# runs the tool and builds the consumer program of tests/consumer through find_package and
# through pkg-config.
# Usage: scripts/check-package.sh [PACKAGE.deb]
set -euo pipefail
cd "$(dirname "$0")/.."
version="$(sed -n 's/^project(Velmora VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)"
deb="${1:-build/release/velmora_${version}_amd64.deb}"
[ -f "$deb" ] || { echo "no package $deb; run make package" >&2; exit 1; }
work=build/package-check
rm -rf "$work"
mkdir -p "$work"

echo "== dpkg-deb -c $deb"
dpkg-deb -c "$deb" | awk '{print $6}' | sed 's|^\./|/|' | grep -v '/$' | sort >"$work/files"
cat "$work/files"
{
    printf '%s\n' /usr/bin/velmora /usr/lib/libvelmora.a /usr/lib/pkgconfig/velmora.pc \
        /usr/lib/libvelmora_c.so "/usr/lib/libvelmora_c.so.${version%.*}" \
        "/usr/lib/libvelmora_c.so.$version" \
        /usr/share/doc/velmora/README.md /usr/share/doc/velmora/LICENSE \
        /usr/share/doc/velmora/copyright
    for f in velmoraConfig.cmake velmoraConfigVersion.cmake velmoraTargets.cmake \
        velmoraTargets-release.cmake FindFreeImage.cmake; do
        echo "/usr/lib/cmake/velmora/$f"
    done
    for h in include/velmora/*.h; do echo "/usr/$h"; done
} | sort >"$work/expected"
if ! diff -u "$work/expected" "$work/files"; then
    echo "the package's files differ from the expected ones (- expected, + in the package)" >&2
    exit 1
fi

echo "== dpkg-deb -f $deb"
dpkg-deb -f "$deb" Package Version Architecture Depends Recommends | tee "$work/control"
grep -qx "Version: $version" "$work/control"
grep -qx "Architecture: amd64" "$work/control"
# The package names of Depends, one a line, without versions and alternatives.
sed -n 's/^Depends: //p' "$work/control" | tr ',|' '\n\n' | sed 's/(.*)//; s/ //g' >"$work/depends"
for dep in libegl-dev libgl-dev libglu1-mesa-dev libfreeimage-dev libfreeimage3 libstdc++6; do
    grep -Fqx "$dep" "$work/depends" || { echo "Depends lacks $dep" >&2; exit 1; }
done

echo "== dpkg -x into $work/root"
dpkg -x "$deb" "$work/root"
"$work/root/usr/bin/velmora" --version
"$work/root/usr/bin/velmora" info samples/building.mdl >/dev/null
for way in find-package pkg-config; do
    echo "== the consumer through $way"
    tests/consumer/check.sh "$way" "$work/root/usr" "$work/$way" samples/building.mdl "$version"
done
echo "package $deb: files, dependencies, tool and consumer builds are right"
