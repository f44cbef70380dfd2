#!/usr/bin/env bash
# Builds the Debian package of Lunaquill into dist/ (CPack, Release, Debian's
# hardening flags), then checks it: control fields, file list, desktop entry,
# AppStream data and lintian. Installs what it needs with apt-get (through
# sudo when not root). Install the result with: sudo apt install ./dist/lunaquill_*.deb
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build="$root/build-package"
dist="$root/dist"
"$root/scripts/deps.sh" dpkg-dev file lintian

export DEB_BUILD_MAINT_OPTIONS=hardening=+all
flags() { dpkg-buildflags --get "$1"; }
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DCMAKE_RULE_MESSAGES=OFF \
  -DLUNAQUILL_TESTS=OFF -DLUNAQUILL_BENCH=OFF -DLUNAQUILL_TOOLS=OFF \
  -DCMAKE_C_FLAGS="$(flags CPPFLAGS) $(flags CFLAGS)" \
  -DCMAKE_CXX_FLAGS="$(flags CPPFLAGS) $(flags CXXFLAGS)" \
  -DCMAKE_EXE_LINKER_FLAGS="$(flags LDFLAGS)" >/dev/null
cmake --build "$build" -j "$(nproc)" -- --no-print-directory -s
rm -rf "$dist"
(cd "$build" && cpack -G DEB -B "$dist" >/dev/null)
rm -rf "$dist/_CPack_Packages"
deb=$(ls "$dist"/lunaquill_*.deb)

failed=0
fail() { echo "package check failed: $*" >&2; failed=1; }

# Control fields.
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
field() { dpkg-deb -f "$deb" "$1"; }
[[ $(field Package) == lunaquill ]] || fail "Package is '$(field Package)'"
[[ $(field Version) == "$version" ]] || fail "Version '$(field Version)', project $version"
[[ $(field Architecture) == "$(dpkg --print-architecture)" ]] || fail "Architecture"
[[ $(field Section) == hamradio ]] || fail "Section is '$(field Section)'"
[[ $(field Maintainer) == *"<"*"@"*">" ]] || fail "Maintainer '$(field Maintainer)'"
[[ -n $(field Description) ]] || fail "no Description"
for library in libc6 libstdc++6 libqt6core6 libqt6gui6 libqt6widgets6 libqt6charts6 libnova; do
  [[ $(field Depends) == *"$library"* ]] || fail "Depends lacks $library"
done

# File list: everything below /usr, the program, its images and its desktop files.
listing=$(dpkg-deb -c "$deb" | awk '{print $6}')
outside=$(grep -v -e '^\./$' -e '^\./usr/' <<<"$listing" || true)
[[ -z "$outside" ]] || fail "files outside /usr: $outside"
for file in bin/lunaquill bin/lunaquill-plan share/man/man1/lunaquill-plan.1.gz \
    share/lunaquill/pixmaps/nasa-topo_1600.jpg \
    share/lunaquill/pixmaps/skynoise_1600.png share/lunaquill/pixmaps/dial.png \
    share/applications/lunaquill.desktop share/icons/hicolor/scalable/apps/lunaquill.svg \
    share/icons/hicolor/48x48/apps/lunaquill.png share/man/man1/lunaquill.1.gz \
    share/doc/lunaquill/copyright share/doc/lunaquill/changelog.gz \
    share/doc/lunaquill/examples/DxStations.txt; do
  grep -qx "\./usr/$file" <<<"$listing" || fail "missing /usr/$file"
done
grep -q '^\./usr/share/metainfo/.*\.metainfo\.xml$' <<<"$listing" || fail "no AppStream data"

# Validators on the unpacked package.
unpacked=$(mktemp -d)
trap 'rm -rf "$unpacked"' EXIT
dpkg-deb -x "$deb" "$unpacked"
echo "== desktop-file-validate"
desktop-file-validate "$unpacked/usr/share/applications/lunaquill.desktop" || fail "desktop entry"
echo "== appstreamcli validate --no-net"
appstreamcli validate --no-net "$unpacked"/usr/share/metainfo/*.metainfo.xml || fail "AppStream"
echo "== lintian"
lintian --fail-on error --display-info "$deb" || fail "lintian found errors"

echo "== $(basename "$deb"): $(du -h "$deb" | cut -f1), installed $(field Installed-Size) KiB"
echo "Depends: $(field Depends)"
exit $failed
