#!/usr/bin/env bash
# Lines and branches of src/ that the tests reach, by folder and by file. Needs gcovr (Debian: gcovr).
#
#     scripts/coverage.sh [options of ctest]
#
# The table goes to standard output, build/coverage/report.html shows every line.
set -eu
root=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/..
cd "$root"
command -v gcovr >/dev/null || { echo "coverage.sh: gcovr is missing (Debian package gcovr)" >&2; exit 1; }

cmake --preset coverage >/dev/null
ninja -C build/coverage
find build/coverage -name '*.gcda' -delete
# A failure here is told, and the figures are shown all the same.
status=0
# On the full disks of that test the counters can't be written either, and say so where it expects silence.
ctest --test-dir build/coverage -E '^e2e.test_faults$' --output-on-failure -j "$(nproc)" "$@" || status=$?
gcovr --root . --filter 'src/' --exclude-throw-branches --exclude-unreachable-branches \
  --gcov-ignore-parse-errors --json-summary build/coverage/summary.json --html-details build/coverage/report.html \
  build/coverage
python3 scripts/coverage_table.py build/coverage/summary.json
exit "$status"
