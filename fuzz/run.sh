#!/usr/bin/env bash
# Builds the fuzzers and runs them one after another:  fuzz/run.sh [seconds-per-target] [target ...]
# New inputs go to build/fuzz/corpus, those that break a target to build/fuzz/artifacts; what the engine says, to
# build/fuzz/log. A target that breaks ends early, and the next one runs.
set -u
root=$(dirname "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")")
all=(opt_reader program_load sol_reader lat_reader qq_text command_line console_line zz_arith qq_arith)

seconds=${1:-60}
shift || true
command -v clang++ >/dev/null || { echo "fuzz: clang++ is missing" >&2; exit 1; }
(cd "$root" && cmake --preset fuzz >/dev/null && nice ninja -C build/fuzz) || exit 1

work="$root/build/fuzz"
# Built where latbox-all and latbox-check are.
[ ! -x "$work/fuzz/fuzz_complete_search" ] || all+=(complete_search)
[ ! -x "$work/fuzz/fuzz_check_proof" ] || all+=(check_proof)
[ $# -gt 0 ] || set -- "${all[@]}"
mkdir -p "$work/log" "$work/artifacts"
export UBSAN_OPTIONS=print_stacktrace=1
# A refused allocation comes back as an exception, as it does in the solver; the limit on memory still holds.
export ASAN_OPTIONS=detect_leaks=1

fuzz() {
  cd "$work"
  nice -n 15 "fuzz/fuzz_$1" "corpus/$1" "$root/fuzz/corpus/$1" -max_total_time="$seconds" -rss_limit_mb=2048 \
    -timeout=60 -max_len=1024 -print_final_stats=1 -dict="$root/fuzz/tokens.dict" -artifact_prefix="artifacts/$1/"
}

# "done" or "BROKEN", the executions and the seconds of one run from the last words of its log, and its CPU seconds: on
# a machine that does other work as well, these tell how much fuzzing it was.
summary() {
  awk -v target="$1" -v verdict="$2" -v cpu="$3" '
    /stat::number_of_executed_units/ { runs = $2 }
    /^Done [0-9]+ runs in [0-9]+ second/ { seconds = $5 }
    END { printf "%-14s %-7s %12s executions %6s s %6.0f s CPU\n", target, verdict, runs, seconds, cpu }' "$work/log/$1"
}

status=0
TIMEFORMAT='%U %S'
for target in "$@"; do
  mkdir -p "$work/corpus/$target" "$work/artifacts/$target"
  verdict=done
  { time fuzz "$target" >"$work/log/$target" 2>&1; } 2>"$work/log/$target.cpu" || { verdict=BROKEN; status=1; }
  summary "$target" "$verdict" "$(awk '{ s += $1 + $2 } END { print s }' "$work/log/$target.cpu")"
done
exit $status
