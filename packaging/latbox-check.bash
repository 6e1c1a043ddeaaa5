# Completion of latbox-check for bash: options, a program, then its solutions.
_latbox_check() {
  local i kind kinds=(opt)
  for ((i = 1; i < COMP_CWORD; ++i)); do
    [[ ${COMP_WORDS[i]} == -* ]] || kinds=(sol all)
  done
  if [[ $2 == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W '--quiet --help --version' -- "$2")
  else
    mapfile -t COMPREPLY < <(compgen -d -- "$2"; for kind in "${kinds[@]}"; do compgen -f -X "!*.$kind" -- "$2"; done)
    compopt -o filenames 2>/dev/null
  fi
}

complete -F _latbox_check latbox-check
