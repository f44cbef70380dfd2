#!/usr/bin/env bash
# Installs the Debian 12 packages that building, running and testing need,
# and any further packages named as arguments (scripts/package.sh names its
# own). Quiet and quick when everything is already there.
set -euo pipefail

packages=(
  g++ make cmake
  qt6-base-dev qt6-base-dev-tools libqt6opengl6-dev libgl-dev qt6-charts-dev
  libqt6sql6-sqlite
  libnova-dev
  libgtest-dev libbenchmark-dev
  xvfb xauth libgl1-mesa-dri libglx-mesa0 libegl-mesa0 openbox
  fonts-dejavu-core
  tzdata
  libhamlib-utils faketime
  desktop-file-utils appstream
  "$@"
)

missing=()
for p in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] || missing+=("$p")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

echo "Installing: ${missing[*]}"
sudo=()
[[ $(id -u) -eq 0 ]] || sudo=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
