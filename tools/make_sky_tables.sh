#!/bin/sh
# Regenerates the sky tables in render/ (ConstellationTable.cpp,
# ConstellationOutlines.cpp, StarCatalogue.cpp) with the generator of a build folder.
# Usage: tools/make_sky_tables.sh <build-folder>   (after building make_sky_tables)
set -eu

if [ $# -ne 1 ]; then
    echo "usage: $0 <build-folder>" >&2
    exit 2
fi
tools="$(cd "$(dirname "$0")" && pwd)"
render="$(dirname "$tools")/render"
bin="$(cd "$1" && pwd)/tools"

"$tools/fetch_sources.sh" python3-astropy kstars-data stellarium-data
"$bin/make_sky_tables" "$tools/downloads" "$render"
