# Completion of latbox-convert, latbox-names and latbox-plot for bash: options, values, and the files that each takes.
# One file for all three; bash loads it by any of their names.

# _latbox_tool WORD OPTIONS VALUES ENDING...: values as "--key=first --key=second", endings of files.
_latbox_tool() {
  local word=$1 options=$2 values=$3 ending
  # The word under the cursor, whether or not "=" breaks words.
  local line=${COMP_LINE:0:COMP_POINT}
  local whole=${line##*[[:blank:]]} before=
  shift 3
  COMPREPLY=()
  case $whole in
    --*=*)
      [[ $COMP_WORDBREAKS == *=* ]] && before=${whole%%=*}=
      mapfile -t COMPREPLY < <(compgen -W "$values" -- "$whole")
      COMPREPLY=("${COMPREPLY[@]#"$before"}")
      ;;
    -*)
      mapfile -t COMPREPLY < <(compgen -W "$options" -- "$whole")
      [[ ${#COMPREPLY[@]} == 1 && ${COMPREPLY[0]} == *= ]] && compopt -o nospace 2>/dev/null
      ;;
    *)
      mapfile -t COMPREPLY < <(compgen -d -- "$word"; for ending; do compgen -f -X "!*.$ending" -- "$word"; done)
      compopt -o filenames 2>/dev/null
      ;;
  esac
}

_latbox_convert() {
  _latbox_tool "$2" '--help --version --format= --digits= --fixed --free --marker-bounds=' \
    '--format=opt --format=lp --format=mps --format=fixed-mps --format=free-mps --marker-bounds=inf --marker-bounds=1' \
    {lp,mps,opt}{,.gz,.bz2,.xz}
}

_latbox_names() {
  _latbox_tool "$2" '--help --version --json --csv --nonzero --first=' '' opt sol all
}

_latbox_plot() {
  _latbox_tool "$2" '--help --version --view --x=' '--x=time --x=iteration' log jsonl json txt
}

complete -F _latbox_convert latbox-convert
complete -F _latbox_names latbox-names
complete -F _latbox_plot latbox-plot
