# Completion of latbox-check for bash: options, a program, then its solutions.
_latbox_check() {
  # The word under the cursor, whether or not "=" breaks words.
  local line=${COMP_LINE:0:COMP_POINT}
  local word=${line##*[[:blank:]]} before=
  [[ $COMP_WORDBREAKS == *=* ]] || before=${word%%=*}=
  local i kind kinds=(opt) words
  read -ra words <<<"${line%"$word"}"
  for i in "${words[@]:1}"; do
    [[ $i == -* ]] || kinds=(sol all)
  done
  COMPREPLY=()
  case $word in
    --proof=* | --join=*)
      mapfile -t COMPREPLY < <(compgen -P "$before" -f -- "${word#*=}")
      compopt -o filenames 2>/dev/null
      ;;
    --*=*) ;;
    -*)
      mapfile -t COMPREPLY < <(compgen -W '--proof= --threads= --part= --join= --quiet --help --version' -- "$word")
      [[ ${COMPREPLY[0]-} != *= ]] || compopt -o nospace 2>/dev/null
      ;;
    *)
      mapfile -t COMPREPLY < <(compgen -d -- "$2"; for kind in "${kinds[@]}"; do compgen -f -X "!*.$kind" -- "$2"; done)
      compopt -o filenames 2>/dev/null
      ;;
  esac
}

complete -F _latbox_check latbox-check
