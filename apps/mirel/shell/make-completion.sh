#!/usr/bin/env bash
# Prints bash's completion of mirel: tables made from the program's own help, then the function that reads them.
#
#   make-completion.sh MIREL
set -euo pipefail
mirel=$1

# Of one subcommand's help: its entries in both tables. An option that takes one of a few words says so in its text,
# either as "word: meaning; word: meaning" or as "word, word or word;".
entries() {
  "$mirel" "$1" --help | awk -v command="$1" '
    function choices(text,    parts, count, i, words) {
      if (text ~ /^[a-z]+: /) {
        count = split(text, parts, "; ")
        for (i = 1; i <= count; ++i) if (match(parts[i], /^[a-z]+: /)) words = words " " substr(parts[i], 1, RLENGTH - 2)
      } else if (match(text, /^[^ ;]+(, [^ ;]+)* or [^ ;]+;/)) {
        words = " " substr(text, 1, RLENGTH - 1)
        gsub(/,| or /, " ", words)
      }
      gsub(/ +/, " ", words)
      return substr(words, 2)
    }
    match($0, /^  (-[a-z],)?--[a-z-]+/) {
      name = substr($0, 3, RLENGTH - 2)
      sub(/^-[a-z],/, "", name)
      options = options " " name
      kind = substr($0, RLENGTH + 1)
      if (kind !~ /^ [^ ]/) next
      text = kind
      sub(/^ [^ ]+( [^ ]+)*  +/, "", text)
      words = choices(text)
      sub(/^ /, "", kind)
      sub(/  .*/, "", kind)
      sub(/ .*/, "", kind)
      if (kind != "KEY=VALUE") sub(/=.*/, "", kind)
      printf "_mirel_arguments[%c%s %s%c]=%c%s%c\n", 39, command, name, 39, 39, words ? words : kind, 39
    }
    END { printf "_mirel_options[%s]=%c%s%c\n", command, 39, substr(options, 2), 39 }'
}

echo "# Made from the help of mirel when it was built."
echo "_mirel_keys='$("$mirel" settings | awk '/^  / && $1 != "key" { print $1 }' | sort -u | tr '\n' ' ')'"
echo "declare -gA _mirel_options _mirel_arguments"
for command in $("$mirel" --help | awk '/^Subcommands:/ { list = 1; next } /^$/ { list = 0 } list { print $1 }'); do
  entries "$command"
done
echo
cat "$(dirname "$0")/complete.bash"
