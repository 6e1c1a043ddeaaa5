#!/usr/bin/env bash
# The unit tests once in a Debug build: there the invariants that the sources assert are checked, and the standard library
# checks the use of its containers. Each test program runs as a whole, so that its tests meet what those before them leave
# behind.
#
#     scripts/assert_tests.sh [options of GoogleTest, as in --gtest_filter='Lll*']
set -u
root=$(readlink -f "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/..")
preset=assert
. "$root/scripts/setup.sh"

prepare() {
  install_packages $(build_packages) || return 1
  install_packages $(test_packages) || return 1
  configure -DLATBOX_TESTS=ON -DLATBOX_REQUIRE_GTEST=ON || return 1
  compile unit_tests
}

# One program with its output in a log, which is shown if it fails.
run_program() {
  local name=${1##*/}
  quietly "assert-$name" timeout 1200 "$@" --gtest_brief=1 || return 1
  note "$name: $(grep -m 1 -oE '[0-9]+ tests? from .* ran' "$root/build/assert-$name.log")"
}

exclusively prepare || exit 1
note "running the unit tests of build/$preset"
export root
export -f run_program quietly note
find "$build/tests" -maxdepth 1 -type f -executable -name 'test_*' -print0 |
  xargs -0 -r -P "$(nproc)" -I '{}' bash -c 'run_program "$@"' bash '{}' "$@" || exit 1
note "the unit tests of build/$preset passed"
