#!/usr/bin/env bash
# Builds Lunaquill and runs every test, first in Release, then once more with
# AddressSanitizer and UndefinedBehaviorSanitizer. OpenGL contexts need an X
# server, so CTest runs under xvfb-run (Mesa's llvmpipe renders there).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/deps.sh"
jobs=$(nproc)

run_suite() {
  local dir=$1; shift
  cmake -S "$root" -B "$dir" -DCMAKE_RULE_MESSAGES=OFF "$@" >/dev/null
  cmake --build "$dir" -j "$jobs" -- --no-print-directory -s
  QT_QPA_PLATFORM=offscreen xvfb-run -a -s "-screen 0 1920x1080x24" \
    ctest --test-dir "$dir" --output-on-failure -j "$jobs"
}

run_suite "$root/build-release" -DCMAKE_BUILD_TYPE=Release
ASAN_OPTIONS="detect_leaks=1:abort_on_error=1:suppressions=$root/tests/support/asan.supp" \
LSAN_OPTIONS="suppressions=$root/tests/support/lsan.supp:print_suppressions=0" \
UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1" \
  run_suite "$root/build-sanitize" -DCMAKE_BUILD_TYPE=Debug -DLUNAQUILL_SANITIZE=ON -DLUNAQUILL_BENCH=OFF -DLUNAQUILL_TOOLS=OFF
