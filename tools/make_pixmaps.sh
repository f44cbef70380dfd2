#!/bin/sh
# Regenerates every image in pixmaps/, and the application icon in
# packaging/icons/, with the generators of a build folder.
# Usage: tools/make_pixmaps.sh <build-folder>   (after building its tools)
set -eu

if [ $# -ne 1 ]; then
    echo "usage: $0 <build-folder>" >&2
    exit 2
fi
tools="$(cd "$(dirname "$0")" && pwd)"
pixmaps="$(dirname "$tools")/pixmaps"
bin="$(cd "$1" && pwd)/tools"

"$tools/fetch_sources.sh"
mkdir -p "$pixmaps"
"$bin/make_world_map" "$tools/downloads/xplanet-images" "$pixmaps/nasa-topo_1600.jpg"
"$bin/make_sky_noise" "$pixmaps/skynoise_1600.png"
"$bin/make_icons" "$pixmaps"
"$bin/make_app_icon" "$(dirname "$tools")/packaging/icons"
