# Completion of mirel in bash. Above stand the tables, made from the program's own help:
#
#   _mirel_keys       every setting of the library
#   _mirel_options    subcommand -> its options
#   _mirel_arguments  "subcommand --option" -> what it takes: the words to choose from, or a kind such as DIR, FILE, N
_mirel() {
  local cur=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]} words
  # "--option=value" comes as three words.
  [ "$cur" = "=" ] && cur="" && previous="= $previous"
  [ "$previous" = "=" ] && previous="= ${COMP_WORDS[COMP_CWORD - 2]}"
  [[ $previous == "= "* && $previous != "= --"* ]] && return 0  # the value of a setting
  previous=${previous#= }

  COMPREPLY=()
  if [ "$COMP_CWORD" = 1 ] || [ "$command" = help ]; then
    words="${!_mirel_options[*]} help"
    [[ $cur == -* ]] && words="--config --help --version"
  elif [ -n "${_mirel_arguments["$command $previous"]:-}" ]; then
    words=${_mirel_arguments["$command $previous"]}
    case $words in
      KEY=VALUE)
        compopt -o nospace
        mapfile -t COMPREPLY < <(compgen -S = -W "$_mirel_keys" -- "$cur")
        return ;;
      DIR)
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -d -- "$cur")
        return ;;
    esac
    [[ $words == *" "* ]] || return 0  # a kind: bash offers files
  elif [[ $cur == -* ]]; then
    words=${_mirel_options[$command]:-}
  else
    return 0  # bash offers files
  fi
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$cur")
}

complete -o bashdefault -o default -F _mirel mirel
