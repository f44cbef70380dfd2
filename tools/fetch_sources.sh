#!/bin/sh
# Downloads and unpacks the Debian packages the generators read, into
# tools/downloads/<package>/. Nothing is installed. Run again: it skips what it has.
# Usage: tools/fetch_sources.sh [package...]   (default: every package below)
set -eu

downloads="$(cd "$(dirname "$0")" && pwd)/downloads"
packages="${*:-xplanet-images python3-astropy kstars-data stellarium-data}"

# apt-get download needs package lists; refresh them only when they are missing.
have_lists() {
    apt-cache show $packages >/dev/null 2>&1
}
if ! have_lists; then
    if [ "$(id -u)" = 0 ]; then
        apt-get update -qq
    else
        sudo apt-get update -qq
    fi
fi

# As root apt-get drops to its _apt user, which may not write here.
sandbox=""
[ "$(id -u)" = 0 ] && sandbox="-o APT::Sandbox::User=root"

mkdir -p "$downloads"
cd "$downloads"
for package in $packages; do
    [ -d "$package" ] && continue
    apt-get download -qq $sandbox "$package" >/dev/null
    deb=$(ls "${package}"_*.deb | head -n 1)
    rm -rf "$package.partial"
    dpkg -x "$deb" "$package.partial"
    echo "$deb" > "$package.partial/.deb-name"
    mv "$package.partial" "$package"  # only a complete unpack counts as done
    rm -f "$deb"
done
