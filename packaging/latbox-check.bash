# Completion of latbox-check for bash: a program, then its solutions.
_latbox_check() {
  local kind=opt
  [ "$COMP_CWORD" -gt 1 ] && kind=sol
  mapfile -t COMPREPLY < <(compgen -d -- "$2"; compgen -f -X "!*.$kind" -- "$2")
  compopt -o filenames 2>/dev/null
}

complete -F _latbox_check latbox-check
