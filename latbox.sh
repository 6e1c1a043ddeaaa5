#!/usr/bin/env bash
# Builds latbox if need be, and runs it:      ./latbox.sh [options] FILE.opt
# Builds latbox-all if need be, and runs it:  ./latbox.sh all [options] FILE.opt
set -u
root=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
. "$root/scripts/setup.sh"

program=latbox
if [ "${1-}" = all ]; then
  program=latbox-all
  shift
fi

# A tree that was configured before the libraries were there does not know latbox-all: it is configured again.
prepare() {
  install_packages $(build_packages) || return 1
  [ $program = latbox ] || install_packages $(complete_packages) || return 1
  if [ ! -e "$build/build.ninja" ]; then
    note "the first start builds the solver"
    configure || return 1
  elif [ $program = latbox-all ] && ! grep -q '^build latbox-all:' "$build/build.ninja"; then
    configure || return 1
  fi
  compile $program
}

exclusively prepare || exit 1

# The solver takes this process's place, so that standard input, signals and the exit status are its own, and the
# working folder is the caller's.
exec "$build/$program" "$@"
