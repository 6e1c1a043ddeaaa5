#!/bin/sh
# All pieces of a folder by GNU parallel:      parallel.sh DIR [options of parallel]
#
# With --sshloginfile and --workdir on machines that see the same folder. The same command goes on where it was
# stopped: what is done is in the log of the jobs, and a piece that is done is no work.
set -eu
dir=$1
shift
sed -n 's/^piece \([0-9]*\) .*/\1/p' "$dir/manifest" |
  parallel --joblog "$dir/joblog" --resume-failed "$@" latbox-all --job={} --jobs="$dir" --threads=1 --quiet=1
