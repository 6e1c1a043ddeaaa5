# Shared by latbox.sh, test.sh and assert_tests.sh, which set `root` (the project's folder), and `preset` if it is another
# one than what users run, and source this file.
#
# Everything here keeps standard output and standard input for the program that is started afterwards: what is done is told
# on standard error, in a line for each step and for each twentieth of the building. The tools write to logs under build/,
# and a log is shown, on standard error too, only when its tool has failed. Where nothing is to be done nothing is told.

preset=${preset:-release}
build="$root/build/$preset"

note() { printf 'latbox: %s\n' "$*" >&2; }

# What a build needs is asked for by use (a command that runs, a header that the compiler finds), not by package, so that
# a machine that has it from elsewhere is left alone.
has_command() { command -v "$1" >/dev/null 2>&1; }
has_header() { printf '#include <%s>\n' "$1" | g++ -E -x c++ - >/dev/null 2>&1; }

build_packages() {
  has_command g++ || echo g++
  has_command cmake || echo cmake
  has_command ninja || echo ninja-build
}

test_packages() {
  has_header gtest/gtest.h || echo libgtest-dev
  has_header gmp.h || echo libgmp-dev
  has_command python3 || echo python3
}

# What some tests look at where it is there: Debian's PuLP, which one of the Pythons in PATH may have.
wanted_packages() {
  python_has pulp || echo python3-pulp
}

python_has() {
  local python
  for python in $(type -ap python3); do
    "$python" -c "import $1" >/dev/null 2>&1 && return
  done
  return 1
}

# What latbox-all needs beyond that; its compiler is there by then.
complete_packages() {
  has_header gmpxx.h || echo libgmp-dev
  has_header fplll.h || echo libfplll-dev
}

# The engine of latbox-farm: its module, for a Python that is there, and the worker.
farm_packages() {
  python_has work_queue || echo python3-workqueue
  has_command work_queue_worker || echo coop-computing-tools
}

# What a folder of pieces runs under besides.
script_packages() {
  has_command parallel || echo parallel
}

as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif has_command sudo; then
    sudo "$@"
  else
    note "not root and no sudo: cannot run $*"
    return 1
  fi
}

# Runs a command with its output in build/<name>.log; shows the log if the command fails.
quietly() {
  local log="$root/build/$1.log"
  shift
  "$@" >"$log" 2>&1 && return 0
  cat "$log" >&2
  note "failed: $*"
  return 1
}

install_packages() {
  [ $# -gt 0 ] || return 0
  has_command apt-get || { note "missing and no apt-get to install it: $*"; return 1; }
  note "installing $*"
  # An update that fails (one dead mirror among several) is no reason to stop: the install decides.
  quietly apt-update as_root apt-get update || true
  quietly apt-install as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "$@"
}

# Tried once: a machine that cannot have them goes on, and the tests that miss them are skipped.
install_wanted() {
  [ $# -gt 0 ] && [ ! -e "$root/build/.wanted" ] || return 0
  : >"$root/build/.wanted"
  install_packages "$@" || note "going on without $*: the tests that need it are skipped"
}

configure() {
  note "configuring build/$preset"
  (cd "$root" && quietly configure cmake --preset "$preset" "$@")
}

# Reads what ninja prints, a line when a step is finished, and tells how far it is.
tell_progress() {
  local line finished all told=0
  while IFS= read -r line; do
    # CMake looks for new files, and configures anew if there are any, in steps with a count of their own.
    [[ $line =~ ^\[([0-9]+)/([0-9]+)\]\ (.*) && ${BASH_REMATCH[3]} != Re-* ]] || continue
    finished=${BASH_REMATCH[1]} all=${BASH_REMATCH[2]}
    [ "$told" -ne 0 ] || note "building, $all steps; what the tools say is in build/build.log"
    [ $((finished * 20 / all)) -eq $((told * 20 / all)) ] || note "built $finished of $all"
    told=$finished
  done
}

# Builds the targets that are named, or everything.
compile() {
  local log="$root/build/build.log"
  NINJA_STATUS='[%f/%t] ' ninja -C "$build" "$@" 2>&1 | tee "$log" | tell_progress
  [ "${PIPESTATUS[0]}" -ne 0 ] || return 0
  cat "$log" >&2
  note "failed: ninja -C $build $*"
  return 1
}

# One start at a time installs and builds; the others wait here and then find everything done. Who waits for longer than
# it takes to find that nothing is to be done says so. The lock belongs to the subshell alone: a solver that runs for days
# must not hold it.
exclusively() {
  mkdir -p "$root/build" || return 1
  (
    flock -w 3 9 || { note "waiting for another start that builds" && flock 9; } || exit 1
    "$@"
  ) 9>"$root/build/.lock" </dev/null
}
