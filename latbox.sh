#!/usr/bin/env bash
# Builds latbox if need be, and runs it:  ./latbox.sh [options] FILE.opt
set -u
root=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
. "$root/scripts/setup.sh"

prepare() {
  install_packages $(build_packages) || return 1
  if [ ! -e "$build/build.ninja" ]; then
    note "the first start builds the solver"
    configure || return 1
  fi
  compile latbox
}

exclusively prepare || exit 1

# The solver takes this process's place, so that standard input, signals and the exit status are its own, and the
# working folder is the caller's.
exec "$build/latbox" "$@"
