#!/usr/bin/env bash
# What bash offers after the beginnings of some command lines.
#
#   completion.sh COMPLETION_FILE
set -euo pipefail
source "$1"
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
mkdir results
touch record.json
failed=0
compopt() { :; }  # works only while bash completes

# offers "EXPECTED WORDS" WORD...: the last word is the one being typed, and "=" is a word of its own, as bash has it.
offers() {
  local expected=$1
  shift
  COMP_WORDS=(mirel "$@") COMP_CWORD=$#
  COMPREPLY=()
  _mirel
  local found
  found=$(printf '%s\n' "${COMPREPLY[@]}" | sort | xargs)
  if [ "$found" != "$expected" ]; then
    echo "mirel $*: '$found' offered, '$expected' expected"
    failed=1
  fi
}

offers "texture track" t
offers "--config --help --version" --
offers "texture track" help t
offers "--max-frames --mode" track --m
offers "--max-frames" track a.png b.png --max
offers "exhaustive narrow wide" track --mode ""
offers "g m/s2" imu --accel-unit ""
offers "wide" track --mode = w
offers "FBMnCells= FBMnFeatures=" track a.png --set FBMn
offers "FBMnCells= FBMnFeatures=" track a.png --set = FBMn
offers "" track a.png --set FBMnCells = 4
offers "results" track --out ""
offers "" track rec         # none of its own: bash offers files
offers "" track --config r  # the same
offers "" track --threads ""
exit $failed
