#!/usr/bin/env bash
# Builds everything and runs all tests; arguments go to ctest, as in  ./test.sh -R e2e
set -u
root=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
. "$root/scripts/setup.sh"

prepare() {
  install_packages $(build_packages) || return 1
  # The headers can be looked for only now that there is a compiler.
  install_packages $(test_packages) || return 1
  install_packages $(complete_packages) || return 1
  install_wanted $(wanted_packages) $(farm_packages) $(script_packages)
  configure -DLATBOX_TESTS=ON -DLATBOX_REQUIRE_GTEST=ON || return 1
  compile
}

exclusively prepare || exit 1
note "running the tests"
exec ctest --test-dir "$build" --output-on-failure --no-tests=error -j "$(nproc)" "$@"
