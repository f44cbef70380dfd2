#!/usr/bin/env bash
# Runs one fuzz target under libFuzzer, with AddressSanitizer and UBSan:
#   scripts/fuzz.sh TARGET SECONDS [libFuzzer options...]
# TARGET is a name of fuzz/*_fuzz.cpp without "_fuzz" (dx_stations,
# favorite_list, settings, locator, station_entry, wsjtx_message). Builds with clang-14 in
# build-fuzz/ (installs clang-14 and libclang-rt-14-dev when missing). New
# inputs go to build-fuzz/corpus/TARGET (the seeds in fuzz/corpus/TARGET stay
# as they are); a failing input lands in build-fuzz/findings/TARGET/.
set -euo pipefail
if [[ $# -lt 2 ]]; then
  echo "usage: $0 TARGET SECONDS [libFuzzer options...]" >&2
  exit 2
fi
root=$(cd "$(dirname "$0")/.." && pwd)
target=${1%_fuzz}
seconds=$2
shift 2
if [[ ! -d "$root/fuzz/corpus/$target" ]]; then
  echo "no fuzz target '$target'; one of: $(ls "$root/fuzz/corpus" | tr '\n' ' ')" >&2
  exit 2
fi

"$root/scripts/deps.sh"
missing=()
for p in clang-14 libclang-rt-14-dev; do
  status=$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] || missing+=("$p")
done
if [[ ${#missing[@]} -gt 0 ]]; then
  echo "Installing: ${missing[*]}"
  sudo=()
  [[ $(id -u) -eq 0 ]] || sudo=(sudo)
  export DEBIAN_FRONTEND=noninteractive
  "${sudo[@]}" apt-get update -qq
  "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

build="$root/build-fuzz"
CC=clang-14 CXX=clang++-14 cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_RULE_MESSAGES=OFF -DLUNAQUILL_LIBFUZZER=ON -DLUNAQUILL_SANITIZE=ON \
  -DLUNAQUILL_TESTS=OFF -DLUNAQUILL_BENCH=OFF -DLUNAQUILL_TOOLS=OFF >/dev/null
cmake --build "$build" --target "${target}_fuzz" -j "$(nproc)" -- --no-print-directory -s

work="$build/corpus/$target"
findings="$build/findings/$target"
mkdir -p "$work" "$findings"
export ASAN_OPTIONS="detect_leaks=1:suppressions=$root/tests/support/asan.supp"
export LSAN_OPTIONS="suppressions=$root/tests/support/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
exec "$build/fuzz/${target}_fuzz" -max_total_time="$seconds" -print_final_stats=1 \
  -artifact_prefix="$findings/" "$@" "$work" "$root/fuzz/corpus/$target"
