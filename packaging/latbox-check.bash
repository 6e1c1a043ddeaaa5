# Completion of latbox-check for bash: options, a program, then its solutions.
_latbox_check() {
  local i kind=opt
  for ((i = 1; i < COMP_CWORD; ++i)); do
    [[ ${COMP_WORDS[i]} == -* ]] || kind=sol
  done
  if [[ $2 == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W '--quiet --help --version' -- "$2")
  else
    mapfile -t COMPREPLY < <(compgen -d -- "$2"; compgen -f -X "!*.$kind" -- "$2")
    compopt -o filenames 2>/dev/null
  fi
}

complete -F _latbox_check latbox-check
