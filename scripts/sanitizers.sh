#!/usr/bin/env bash
# The whole test suite under the address and undefined behaviour sanitizers, then the tests in which threads meet under
# the thread sanitizer, and a minute of console commands as fast as a run takes them.
#
#     scripts/sanitizers.sh [address] [thread]        both by default
set -eu
root=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/..
cd "$root"
[ $# -gt 0 ] || set -- address thread

# Python's own memory is no concern here; a report ends the process, so that no test overlooks it.
export ASAN_OPTIONS="detect_leaks=0:abort_on_error=0:allocator_may_return_null=1:${ASAN_OPTIONS:-}"
export UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1:${UBSAN_OPTIONS:-}"
# A run ends in the handler of a signal, with whatever threads there are.
export TSAN_OPTIONS="halt_on_error=0:report_thread_leaks=0:${TSAN_OPTIONS:-}"

# What takes seconds without them takes minutes with them.
export PROGRAMS="${PROGRAMS:-100}"

address() {
  cmake --preset asan -DLATBOX_REQUIRE_GTEST=ON >/dev/null
  ninja -C build/asan
  ctest --test-dir build/asan --output-on-failure -j "$(nproc)"
}

thread() {
  cmake --preset tsan -DLATBOX_REQUIRE_GTEST=ON >/dev/null
  ninja -C build/tsan latbox test_driver test_lib
  ctest --test-dir build/tsan --output-on-failure -j "$(nproc)" -R '^(driver\.|lib\.|e2e\.test_(console|rtime|flush)$)'
  folder=$(mktemp -d)
  trap 'rm -rf "$folder"' EXIT
  cp examples/knapsack.opt "$folder"
  python3 tests/tools/console_fire.py build/tsan/latbox 60 "$folder/knapsack.opt"
}

for sanitizer; do "$sanitizer"; done
