#!/usr/bin/env bash
# Builds Lunaquill in Release and starts it from the folder that holds pixmaps/.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/deps.sh"
cmake -S "$root" -B "$root/build" -DCMAKE_BUILD_TYPE=Release -DLUNAQUILL_TESTS=OFF -DLUNAQUILL_BENCH=OFF -DCMAKE_RULE_MESSAGES=OFF >/dev/null
cmake --build "$root/build" --target lunaquill -j "$(nproc)" -- --no-print-directory -s
cd "$root"
exec "$root/build/app/lunaquill" "$@"
