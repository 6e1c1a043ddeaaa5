#!/usr/bin/env bash
# Builds latbox if need be, and runs it:      ./latbox.sh [options] FILE.opt
# Builds latbox-all if need be, and runs it:  ./latbox.sh all [options] FILE.opt
# Builds both if need be, and solves a model: ./latbox.sh solve [options] MODEL
# The complete search on many machines:       ./latbox.sh farm [options] FILE.opt
set -u
root=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
. "$root/scripts/setup.sh"

what=latbox
case "${1-}" in
  all | solve | farm)
    what=$1
    shift
    ;;
esac
case $what in
  latbox) programs=latbox ;;
  all | farm) programs=latbox-all ;;
  solve) programs="latbox latbox-all" ;;
esac

# A tree that was configured before the libraries were there does not know latbox-all: it is configured again.
prepare() {
  install_packages $(build_packages) || return 1
  [ $what = latbox ] || install_packages $(complete_packages) || return 1
  [ $what != solve ] || has_command python3 || install_packages python3 || return 1
  [ $what != farm ] || install_packages $(farm_packages) || return 1
  if [ ! -e "$build/build.ninja" ]; then
    note "the first start builds the solver"
    configure || return 1
  elif [ $what != latbox ] && ! grep -q '^build latbox-all:' "$build/build.ninja"; then
    configure || return 1
  fi
  compile $programs
}

exclusively prepare || exit 1

# The solver takes this process's place, so that standard input, signals and the exit status are its own, and the
# working folder is the caller's.
if [ $what = farm ]; then exec "$root/python/bin/latbox-farm" "$@"; fi
if [ $what = solve ]; then exec python3 "$root/python/bin/latbox-solve" "$@"; fi
exec "$build/$programs" "$@"
