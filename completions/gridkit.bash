# Completion of gridkit, tsx-annotation and tsx-simulate for bash. The programs themselves tell what there is:
# verbs, options and arguments by their help texts, layers and data by `gridkit info --json`.

# The verbs; a program may have none.
_gridkit_verbs() {
  "$1" --help 2>/dev/null | awk '/^Verbs:/ { on = 1; next } /^$/ { on = 0 } on && /^  [a-z]/ { print $1 }'
}

# The options of a verb, or of the program without one: name, number of values, kind of value.
_gridkit_options() {
  "$@" --help 2>/dev/null | awk '/^Options:/ { on = 1; next } /^$/ { on = 0 } on && /^  -/ {
    kind = $0
    sub(/^ +[^ ]+ ?/, "", kind)
    sub(/ ?  .*/, "", kind)
    values = split(kind, words, " ")
    count = split($1, names, ",")
    for (i = 1; i <= count; ++i) print names[i], values, kind
  }'
}

# The names of a verb's arguments, in order.
_gridkit_arguments() {
  "$@" --help 2>/dev/null | awk '/^Positionals:/ { on = 1; next } /^$/ { on = 0 } on && /^  [A-Z]/ {
    names = substr($0, 3)
    sub(/  .*/, "", names)
    gsub(/[][]/, "", names)
    count = split(names, words, " ")
    for (i = 1; i <= count; ++i) print words[i]
  }'
}

# What a product has: its layers, or the data beside them.
_gridkit_layers() {
  "$1" info --json "$2" 2>/dev/null | sed -n '/^  "layers"/,/^  \]/s/^ *"name": "\(.*\)",\{0,1\}$/\1/p'
}
_gridkit_data() {
  "$1" info --json "$2" 2>/dev/null | sed -n '/^  "data"/,/^  \]/s/^ *"\([^"]*\)",\{0,1\}$/\1/p'
}

# Offers those of the lines on standard input that begin with the current word.
_gridkit_offer() {
  local line
  while IFS= read -r line; do
    [[ $line == "$cur"* ]] && COMPREPLY+=("$line")
  done
}

_gridkit() {
  local cur words cword
  if declare -F _get_comp_words_by_ref >/dev/null; then
    _get_comp_words_by_ref -n : cur words cword # names of data begin with a colon
  else
    words=("${COMP_WORDS[@]}") cword=$COMP_CWORD cur=${COMP_WORDS[COMP_CWORD]}
  fi
  COMPREPLY=()
  local program=${words[0]} verbs verb= options name values kind awaited= kind_awaited= i
  local given=()
  verbs=$(_gridkit_verbs "$program")
  options=$(_gridkit_options "$program")
  for ((i = 1; i < cword; ++i)); do
    if ((awaited > 0)); then
      ((--awaited))
    elif [[ ${words[i]} == -* ]]; then
      while read -r name values kind; do
        [[ $name == "${words[i]}" ]] && awaited=$values kind_awaited=$kind
      done <<<"$options"
    elif [[ -n $verbs && -z $verb ]]; then
      verb=${words[i]}
      options=$(_gridkit_options "$program" "$verb")
    else
      name=${words[i]/#\~\//$HOME/}
      given+=("${name//\\/}")
    fi
  done

  local argument=
  if ((awaited > 0)); then
    argument=$kind_awaited
  elif [[ $cur == -* ]]; then
    _gridkit_offer < <(cut -d ' ' -f 1 <<<"$options")
  elif [[ -n $verbs && -z $verb ]]; then
    _gridkit_offer <<<"$verbs"
  else
    argument=$(_gridkit_arguments "$program" $verb | sed -n "$((${#given[@]} + 1))p")
  fi
  case $argument in
    LAYER) _gridkit_offer < <(_gridkit_layers "$program" "${given[0]}") ;;
    NAME) _gridkit_offer < <(_gridkit_data "$program" "${given[0]}") ;;
    *"|"*) _gridkit_offer <<<"${argument//|/$'\n'}" ;;
  esac
  if declare -F __ltrim_colon_completions >/dev/null; then
    __ltrim_colon_completions "$cur"
  fi
}

# Where nothing is offered, names of files are.
complete -o default -F _gridkit gridkit tsx-annotation tsx-simulate
