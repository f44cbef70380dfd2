#!/bin/sh
# Regenerates tracking/LunarSeriesTables.cpp from libnova's source package
# with the generator of a build folder. The source package is fetched from the
# Debian archive the machine already uses, through a private apt state, into
# tools/downloads/libnova-source/. Nothing is installed.
# Usage: tools/make_lunar_series.sh <build-folder>   (after building make_lunar_series)
set -eu

if [ $# -ne 1 ]; then
    echo "usage: $0 <build-folder>" >&2
    exit 2
fi
tools="$(cd "$(dirname "$0")" && pwd)"
bin="$(cd "$1" && pwd)/tools"
work="$tools/downloads/libnova-source"

if [ ! -f "$work/libnova-0.16/src/lunar.c" ]; then
    mkdir -p "$work/state/lists/partial" "$work/cache/archives/partial"
    echo "deb-src [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] http://deb.debian.org/debian bookworm main" \
        > "$work/sources.list"
    apt="-o Dir::Etc::SourceList=$work/sources.list -o Dir::Etc::SourceParts=/dev/null
         -o Dir::State=$work/state -o Dir::Cache=$work/cache -o APT::Sandbox::User=$(id -un)"
    apt-get $apt update -qq
    (cd "$work" && apt-get $apt source --download-only -qq libnova=0.16-5)
    mkdir -p "$work/libnova-0.16"
    tar -xJf "$work/libnova_0.16.orig.tar.xz" -C "$work/libnova-0.16" --strip-components=1
fi
"$bin/make_lunar_series" "$work/libnova-0.16" "$(dirname "$tools")/tracking/LunarSeriesTables.cpp"
